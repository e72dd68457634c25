#include "apps/client/history/HistoryFilters.h"

#include "apps/client/Look.h"
#include "frame/Text.h"
#include "history/RecordWords.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace orvo::app {

namespace {

constexpr int applyDelayMs = 300; ///< while a text or a moment is being typed
constexpr int longestScope = 60;
constexpr int ownMoment = -1;

struct Period {
    const char* words;
    int seconds; ///< 0: without a limit
};
constexpr Period periods[] = {{QT_TRANSLATE_NOOP("orvo", "за всё время"), 0},
                              {QT_TRANSLATE_NOOP("orvo", "за час"), 3600},
                              {QT_TRANSLATE_NOOP("orvo", "за сутки"), 86400},
                              {QT_TRANSLATE_NOOP("orvo", "за неделю"), 7 * 86400},
                              {QT_TRANSLATE_NOOP("orvo", "за месяц"), 30 * 86400},
                              {QT_TRANSLATE_NOOP("orvo", "с…"), ownMoment}};

QString byHand() {
    return Text::tr("(вручную)");
}

} // namespace

HistoryFilters::HistoryFilters(StoreThread& thread, const QString& login, QWidget* parent)
    : QWidget(parent)
    , m_thread(thread)
    , m_login(login)
    , m_who(new QComboBox(this))
    , m_since(new QComboBox(this))
    , m_from(new QDateTimeEdit(this))
    , m_text(new QLineEdit(this))
    , m_scopeButton(new QToolButton(this)) {
    m_who->setObjectName(QStringLiteral("historyWho"));
    m_since->setObjectName(QStringLiteral("historySince"));
    m_from->setObjectName(QStringLiteral("historyFrom"));
    m_text->setObjectName(QStringLiteral("historyText"));
    m_scopeButton->setObjectName(QStringLiteral("historyScope"));
    m_who->setAccessibleName(Text::tr("Кто изменил"));
    m_since->setAccessibleName(Text::tr("За какое время"));
    m_from->setAccessibleName(Text::tr("С какого времени"));
    m_text->setAccessibleName(Text::tr("Поиск в истории"));
    m_scopeButton->setAccessibleName(Text::tr("О чём история"));
    m_who->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    setNames({});
    for (const Period& period : periods)
        m_since->addItem(Text::tr(period.words), period.seconds);
    m_from->setCalendarPopup(true);
    m_from->setDisplayFormat(Text::tr("dd.MM.yyyy HH:mm"));
    m_from->hide();
    m_text->setPlaceholderText(Text::tr("Текст в названии или значении"));
    m_text->setClearButtonEnabled(true);
    m_text->setMaximumWidth(320);
    m_scopeButton->setToolTip(Text::tr("Показать историю всех строк"));
    m_scopeButton->setAutoRaise(true);
    m_scopeButton->hide();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget :
         std::initializer_list<QWidget*>{m_who, m_since, m_from, m_text, m_scopeButton})
        row->addWidget(widget);
    row->addStretch();
    m_applySoon.setSingleShot(true);
    m_applySoon.setInterval(applyDelayMs);
    connect(&m_applySoon, &QTimer::timeout, this, &HistoryFilters::apply);
    connect(m_who, qOverload<int>(&QComboBox::activated), this, &HistoryFilters::apply);
    connect(m_since, qOverload<int>(&QComboBox::activated), this, &HistoryFilters::choosePeriod);
    connect(m_from, &QDateTimeEdit::dateTimeChanged, &m_applySoon, qOverload<>(&QTimer::start));
    connect(m_text, &QLineEdit::textChanged, &m_applySoon, qOverload<>(&QTimer::start));
    connect(m_text, &QLineEdit::returnPressed, this, &HistoryFilters::apply);
    connect(m_scopeButton, &QToolButton::clicked, this, [this] {
        setScope({}, false);
        emit changed();
    });
}

history::Filter HistoryFilters::filter() const {
    history::Filter made;
    if (const QVariant login = m_who->currentData(); login.isValid())
        made.login = login.toString().toStdString();
    const int seconds = m_since->currentData().toInt();
    if (seconds == ownMoment)
        made.since = static_cast<double>(m_from->dateTime().toSecsSinceEpoch());
    else if (seconds > 0)
        made.since = static_cast<double>(QDateTime::currentSecsSinceEpoch() - seconds);
    made.text = m_text->text().trimmed();
    if (m_record.key.empty())
        return made;
    if (m_withContent) {
        made.branch = history::Branch{history::tableOf(m_record.table), m_record.key};
    } else {
        made.table = m_record.table;
        made.key = m_record.key;
    }
    return made;
}

void HistoryFilters::apply() {
    m_applySoon.stop();
    emit changed();
}

void HistoryFilters::clear() {
    m_who->setCurrentIndex(0);
    m_since->setCurrentIndex(0);
    m_from->hide();
    m_text->clear();
    m_applySoon.stop();
    setScope({}, false);
}

/// A moment of one's own begins with the present day, and the keyboard goes there.
void HistoryFilters::choosePeriod() {
    const bool own = m_since->currentData().toInt() == ownMoment;
    if (own && !m_from->isVisibleTo(this)) {
        m_from->setDateTime(QDate::currentDate().startOfDay());
        m_from->show();
        m_from->setFocus(Qt::TabFocusReason);
    }
    m_from->setVisible(own);
    apply();
}

void HistoryFilters::setScope(const HistoryRecord& record, bool withContent) {
    m_record = record;
    m_withContent = withContent;
    m_scopeButton->setVisible(!record.key.empty());
    m_scopeButton->setText(QStringLiteral("…"));
    if (!record.key.empty())
        nameScope();
}

/// The record is named when the store has told its name.
void HistoryFilters::nameScope() {
    auto words = std::make_shared<QString>();
    m_thread.run(
        this,
        [words, record = m_record](store::MaintainedStore& store) -> store::Status {
            const store::TableDef* table = history::tableOf(record.table);
            history::LoggedRecords source(store);
            if (table)
                *words =
                    history::recordWords(*table, source.valuesOf(*table, record.key), record.key);
            return {};
        },
        [this, words, key = m_record.key](const store::Status& status) {
            if (!status.ok() || key != m_record.key)
                return;
            m_scopeButton->setText(QStringLiteral("%1: %2  ✕")
                                       .arg(m_withContent ? Text::tr("Внутри") : Text::tr("Строка"),
                                            clipped(oneLine(*words), longestScope))
                                       .replace(QLatin1Char('&'), QLatin1String("&&")));
        });
}

void HistoryFilters::chooseUser(const QString& login, const QString& name) {
    const auto find = [&] {
        for (int i = 1; i < m_who->count(); ++i)
            if (m_who->itemData(i).toString() == login)
                return i;
        return -1;
    };
    if (find() < 0)
        m_who->addItem(oneLine(name), login);
    m_who->setCurrentIndex(find());
}

void HistoryFilters::setNames(const history::PersonNames& names) {
    const QVariant chosen = m_who->currentData();
    m_who->clear();
    m_who->addItem(Text::tr("все"));
    m_who->addItem(Text::tr("только я"), m_login);
    std::vector<std::pair<QString, QString>> users;
    for (const auto& [login, name] : names)
        if (const QString text = QString::fromStdString(login); text != m_login)
            users.emplace_back(name == text ? text : QStringLiteral("%1 (%2)").arg(name, text),
                               text);
    std::sort(users.begin(), users.end());
    for (const auto& [name, login] : users)
        m_who->addItem(oneLine(name), login);
    m_who->addItem(byHand(), QString(QLatin1String("")));
    if (chosen.isValid())
        chooseUser(chosen.toString(), chosen.toString());
}

} // namespace orvo::app
