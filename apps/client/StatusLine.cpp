#include "apps/client/StatusLine.h"

#include "apps/client/ElidedLabel.h"
#include "apps/client/Look.h"
#include "frame/Contrast.h"
#include "frame/Text.h"
#include "history/RecordWords.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QHash>
#include <QLabel>
#include <QLayout>
#include <QLocale>
#include <QShortcut>
#include <QTime>
#include <QToolButton>

#include <algorithm>

namespace orvo::app {

namespace {

constexpr int leastTold = 200; ///< of what went wrong or was done
constexpr int doneMs = 8000;
constexpr int mostListed = 8; ///< failures that are shown whole at once

/// "1 правка ждёт", "3 правки ждут", "5 правок ждут"
QString heldText(int changes) {
    return history::numeralForm(static_cast<size_t>(changes), Text::tr("%1 правка ждёт"),
                                Text::tr("%1 правки ждут"), Text::tr("%1 правок ждут"))
        .arg(changes);
}

/// Of a layout in a layout, only the outer one learns by itself that a size has changed.
void invalidate(QLayoutItem& item) {
    if (const QLayout* inner = item.layout())
        for (int i = 0; i < inner->count(); ++i)
            invalidate(*inner->itemAt(i));
    item.invalidate();
}

} // namespace

StatusLine::StatusLine(const QString& store, const QString& login, QWidget* parent)
    : QStatusBar(parent)
    , m_light(new QLabel(this))
    , m_connection(new ElidedLabel({}, Qt::ElideMiddle, this))
    , m_storeLabel(new ElidedLabel(Text::tr("Хранилище: %1").arg(store), Qt::ElideMiddle, this))
    , m_userLabel(new ElidedLabel(Text::tr("Пользователь: %1").arg(login), Qt::ElideMiddle, this))
    , m_busy(new ElidedLabel({}, Qt::ElideRight, this))
    , m_copying(new ElidedLabel({}, Qt::ElideMiddle, this))
    , m_held(new ElidedLabel({}, Qt::ElideRight, this))
    , m_others(new ElidedLabel({}, Qt::ElideMiddle, this))
    , m_readOnly(new ElidedLabel(Text::tr("Только просмотр"), Qt::ElideRight, this))
    , m_problems(new QToolButton(this))
    , m_done(new ElidedLabel({}, Qt::ElideRight, this))
    , m_failure(new QToolButton(this))
    , m_store(store) {
    m_light->setFixedSize(10, 10);
    m_light->setAccessibleName(Text::tr("Связь с хранилищем"));
    m_storeLabel->setObjectName(QStringLiteral("storeLabel"));
    m_storeLabel->setToolTip(plainToolTip(m_storeLabel->text()));
    m_userLabel->setObjectName(QStringLiteral("userLabel"));
    m_userLabel->setToolTip(plainToolTip(m_userLabel->text()));
    m_connection->setObjectName(QStringLiteral("connectionLabel"));
    setContentsMargins(8, 0, 4, 0);
    addWidget(m_light);
    addWidget(m_connection);
    addWidget(m_storeLabel);
    addWidget(m_userLabel);
    m_readOnly->setObjectName(QStringLiteral("readOnlyLabel"));
    addWidget(m_readOnly);
    m_readOnly->hide();
    m_others->setObjectName(QStringLiteral("othersLabel"));
    addWidget(m_others);
    m_others->hide();
    m_problems->setObjectName(QStringLiteral("problemsButton"));
    m_problems->setAutoRaise(true);
    m_problems->setCursor(Qt::PointingHandCursor);
    m_problems->setToolTip(Text::tr("Показать, что не так с установкой (F8)"));
    addWidget(m_problems);
    m_problems->hide();
    connect(m_problems, &QToolButton::clicked, this, &StatusLine::problemsRequested);
    m_copying->setObjectName(QStringLiteral("copyingLabel"));
    m_busy->setObjectName(QStringLiteral("busyLabel"));
    addWidget(m_busy);
    m_busy->hide();
    addWidget(m_copying);
    m_copying->hide();
    m_held->setObjectName(QStringLiteral("heldLabel"));
    addWidget(m_held);
    m_held->hide();
    m_done->setObjectName(QStringLiteral("doneLabel"));
    addWidget(m_done);
    m_done->hide();
    m_doneTime.setSingleShot(true);
    m_doneTime.setInterval(doneMs);
    connect(&m_doneTime, &QTimer::timeout, this, [this] {
        m_done->hide();
        share();
    });

    m_failure->setObjectName(QStringLiteral("failureButton"));
    m_failure->setCursor(Qt::PointingHandCursor);
    m_failure->setMinimumWidth(leastTold); // its text never makes the window wider
    m_failure->hide();
    addPermanentWidget(m_failure);
    connect(m_failure, &QToolButton::clicked, this, &StatusLine::acknowledge);
    setConnected(true, {});
}

void StatusLine::setProblems(size_t errors, size_t warnings) {
    m_problems->setText(
        errors > 0 ? Text::tr("Проблемы: %1, из них ошибок %2").arg(errors + warnings).arg(errors)
                   : Text::tr("Проблемы: %1").arg(warnings));
    m_hasErrors = errors > 0;
    colour();
    m_problems->setVisible(errors + warnings > 0);
    share();
}

QString StatusLine::problems() const {
    return m_problems->isHidden() ? QString() : m_problems->text();
}

void StatusLine::setConnected(bool up, const QString& reason) {
    m_isUp = up;
    if (up)
        m_since.clear();
    else if (m_since.isEmpty())
        m_since = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    m_connection->setText(up ? Text::tr("Подключено")
                             : Text::tr("Нет связи с %1 с %2").arg(m_store, m_since));
    colour();
    m_storeLabel->setVisible(up); // the other label names it then
    m_connection->setToolTip(plainToolTip(reason));
    share();
}

void StatusLine::colour() {
    const auto text = [this](const char* name) {
        return readable(QColor(QLatin1String(name)), palette().color(QPalette::Window)).name();
    };
    const auto behind = [this](const char* name) {
        return ground(QColor(QLatin1String(name)), palette());
    };
    m_light->setStyleSheet(
        QStringLiteral("background:%1;border-radius:5px")
            .arg(m_isUp ? QStringLiteral("#3f9b5c") : QStringLiteral("#c9372c")));
    m_connection->setStyleSheet(m_isUp ? QString() : QStringLiteral("color:") + text("#9c2a20"));
    m_problems->setStyleSheet(m_hasErrors ? QStringLiteral("color:") + text("#9c2a20") : QString());
    m_readOnly->setStyleSheet(QStringLiteral("color:") + text("#8a5a00"));
    const QColor box = behind("#fbe9e7");
    m_failure->setStyleSheet(
        QStringLiteral("QToolButton{background:%1;color:%2;border:1px solid #e0a49d;"
                       "border-radius:4px;padding:2px 10px}"
                       "QToolButton:hover{background:%3}")
            .arg(box.name(), readable(QColor(0x9c, 0x2a, 0x20), box).name(),
                 behind("#f6d9d5").name()));
}

void StatusLine::changeEvent(QEvent* event) {
    QStatusBar::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colour();
}

QString StatusLine::connection() const {
    return m_connection->text();
}

void StatusLine::setBusy(const QString& text) {
    m_busy->setText(text);
    m_busy->setToolTip(plainToolTip(text));
    m_busy->setVisible(!text.isEmpty());
    share();
}

void StatusLine::setCopying(int done, int all) {
    const QLocale numbers;
    m_copying->setText(Text::tr("Копирование файлов: %1 из %2")
                           .arg(numbers.toString(done), numbers.toString(all)));
    m_copying->setVisible(all > 0);
    share();
}

void StatusLine::setHeld(int changes, const QString& why) {
    m_held->setText(changes > 0 ? heldText(changes) : QString());
    m_held->setToolTip(plainToolTip(why));
    m_held->setVisible(changes > 0);
    share();
}

QString StatusLine::held() const {
    return m_held->text();
}

void StatusLine::setOthers(const QString& names, const QString& details) {
    m_others->setText(names.isEmpty() ? QString() : Text::tr("Ещё здесь: %1").arg(names));
    m_others->setToolTip(plainToolTip(details));
    m_others->setVisible(!names.isEmpty());
    share();
}

QString StatusLine::others() const {
    return m_others->text();
}

void StatusLine::setReadOnly(const QString& why) {
    m_readOnly->setToolTip(plainToolTip(why));
    m_readOnly->setVisible(!why.isEmpty());
    share();
}

void StatusLine::setDone(const QString& text) {
    m_doneText = text;
    m_done->setText(oneLine(text));
    m_done->setToolTip(plainToolTip(clipped(text)));
    m_done->show();
    m_doneTime.start();
    share();
}

void StatusLine::dropDone(const QString& text) {
    if (m_done->isHidden() || m_doneText != text)
        return;
    m_doneTime.stop();
    m_done->hide();
    share();
}

void StatusLine::setFailure(const QString& text) {
    ++m_count;
    m_text = clipped(text.simplified());
    m_failures.prepend(text);
    m_failures = m_failures.mid(0, mostListed);
    m_failure->setToolTip(plainToolTip(
        QTime::currentTime().toString(QStringLiteral("HH:mm:ss")) + QStringLiteral("  ") + text,
        m_hasLog ? Text::tr("Щёлкните или F12, чтобы прочесть и убрать. Все сообщения — в журнале.")
                 : Text::tr("Щёлкните или F12, чтобы прочесть и убрать.")));
    m_failure->show();
    share();
}

QString StatusLine::failureText(int room) const {
    const QString count = m_count > 1 ? Text::tr(" (всего %1)").arg(m_count) : QString();
    const QFontMetrics metrics = m_failure->fontMetrics();
    const QString text =
        room < 0
            ? m_text
            // What was wanted is at its beginning, why it was not done at its end.
            : metrics.elidedText(m_text, Qt::ElideMiddle, room - metrics.horizontalAdvance(count));
    return QString(text).replace(QLatin1Char('&'), QLatin1String("&&")) + count;
}

/// What names things gives way before what tells of events; each is left something.
void StatusLine::share() {
    constexpr int much = 420;
    const struct {
        QWidget* part;
        int least;
    } steps[] = {{m_failure, much},
                 {m_done, much},
                 {m_storeLabel, 240},
                 {m_others, 140},
                 {m_userLabel, 140},
                 {m_storeLabel, 90},
                 {m_connection, m_isUp ? 1 : 200}, // the light tells it, too
                 {m_busy, 140},
                 {m_copying, 140},
                 {m_failure, leastTold},
                 {m_done, leastTold},
                 {m_others, 60},
                 {m_userLabel, 60},
                 {m_storeLabel, 60},
                 {m_readOnly, 50},
                 {m_held, 50},
                 {m_connection, 60},
                 {m_busy, 50},
                 {m_copying, 50}};
    const std::initializer_list<ElidedLabel*> labels = {m_connection, m_storeLabel, m_userLabel,
                                                        m_readOnly,   m_others,     m_busy,
                                                        m_copying,    m_held,       m_done};
    for (ElidedLabel* label : labels)
        label->setRoom(-1);
    m_failure->setText(failureText(-1));
    invalidate(*layout());
    int excess = layout()->totalSizeHint().width() - width();
    QHash<QWidget*, int> room;
    for (const auto& [part, least] : steps) {
        if (excess <= 0)
            break;
        if (part->isHidden())
            continue;
        const int now = room.value(part, part->sizeHint().width());
        const int given = std::max(0, std::min(excess, now - least));
        room[part] = now - given;
        excess -= given;
    }
    for (ElidedLabel* label : labels)
        label->setRoom(room.value(label, -1));
    if (!room.contains(m_failure))
        return;
    const int frame =
        m_failure->sizeHint().width() -
        m_failure->fontMetrics().size(Qt::TextShowMnemonic, m_failure->text()).width();
    m_failure->setText(failureText(room[m_failure] - frame));
}

void StatusLine::resizeEvent(QResizeEvent* event) {
    QStatusBar::resizeEvent(event);
    share();
}

bool StatusLine::isCut() const {
    const QString shown = QString(m_text).replace(QLatin1Char('&'), QLatin1String("&&"));
    return m_text != m_failures.value(0) || !m_failure->text().startsWith(shown);
}

QString StatusLine::allFailures() const {
    QStringList all = m_failures;
    if (m_count > all.size())
        all << Text::tr("Ещё %1 — в журнале.").arg(m_count - all.size());
    return all.join(QStringLiteral("\n\n"));
}

void StatusLine::acknowledge() {
    take(m_count > 1 || isCut() ? allFailures() : QString());
}

void StatusLine::readFailure() {
    if (m_whole && m_whole->isVisible())
        m_whole->hide();
    else if (m_count > 0)
        take(allFailures());
}

/// The line goes first: it may have the focus.
void StatusLine::take(const QString& whole) {
    m_failure->hide();
    m_text.clear();
    m_failures.clear();
    m_count = 0;
    share();
    if (!whole.isEmpty())
        showWhole(whole);
}

void StatusLine::showWhole(const QString& text) {
    if (!m_whole) {
        m_whole = new QLabel(window());
        m_whole->setObjectName(QStringLiteral("wholeFailure"));
        m_whole->setAccessibleName(Text::tr("Сообщение о сбое"));
        m_whole->setTextFormat(Qt::PlainText);
        m_whole->setWordWrap(true);
        m_whole->setCursor(Qt::PointingHandCursor);
        m_whole->setToolTip(Text::tr("Esc, F12 или щелчок — убрать"));
        m_whole->setStyleSheet(QStringLiteral("background:#fbe9e7;color:#9c2a20;padding:8px;"
                                              "border:1px solid #e0a49d;border-radius:4px"));
        m_whole->installEventFilter(this);
        window()->installEventFilter(this);
        // Fields and open edits take Esc before it is this one.
        auto* away = new QShortcut(Qt::Key_Escape, m_whole); // its child, and off when it is hidden
        connect(away, &QShortcut::activated, m_whole, &QLabel::hide);
        connect(qApp, &QApplication::focusChanged, m_whole, [this](QWidget*, const QWidget* now) {
            if (now && now->window() == window())
                m_whole->hide();
        });
    }
    m_whole->setText(text);
    placeWhole();
    m_whole->show();
    m_whole->raise();
    QAccessibleEvent told(m_whole, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void StatusLine::placeWhole() {
    constexpr int widest = 700, gap = 8;
    const int width = std::min(widest, window()->width() - 2 * gap);
    const QPoint corner = mapTo(window(), QPoint(this->width() - gap, -gap));
    const int height = std::min(m_whole->heightForWidth(width), corner.y());
    m_whole->setGeometry(corner.x() - width, corner.y() - height, width, height);
}

bool StatusLine::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window() && event->type() == QEvent::Resize && m_whole && m_whole->isVisible())
        QTimer::singleShot(0, this, &StatusLine::placeWhole); // once this line is at its place
    if (watched != m_whole || event->type() != QEvent::MouseButtonPress)
        return QStatusBar::eventFilter(watched, event);
    m_whole->hide();
    return true;
}

} // namespace orvo::app
