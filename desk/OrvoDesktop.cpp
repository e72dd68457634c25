#include "desk/OrvoDesktop.h"

#include "desk/Columns.h"
#include "desk/DeskView.h"
#include "desk/ElementList.h"
#include "frame/EscapeKey.h"
#include "frame/Launch.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/RowDelegate.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

using namespace orvo::desk;

namespace {

constexpr int logError = 5;
constexpr size_t mostHits = 100;

QString quoted(const QString& text) {
    return orvo::Text::tr("«%1»").arg(orvo::displayLine(text));
}

/// A text of any origin in a label that wraps and shows it as it stands.
QLabel* makeNotice(QWidget* parent, const char* name) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMargin(8);
    label->hide();
    return label;
}

} // namespace

OrvoDesktop::OrvoDesktop(COrvoCliApp* app)
    : COrvoCliMod(app)
    , m_records(*this)
    , m_model(std::make_unique<DeskModel>(orvo::iconsPath(*this)))
    , m_rows(std::make_unique<DeskRows>(*m_model, m_records))
    , m_search(std::make_unique<Search>(*m_model)) {
    setObjectName(QStringLiteral("OrvoDesktop"));
    makeWidgets();
}

OrvoDesktop::~OrvoDesktop() {
    delete takeCentralWidget(); // the views go before their model
}

void OrvoDesktop::makeWidgets() {
    auto* panel = new QWidget(this);
    m_notice = makeNotice(panel, "deskNotice");
    m_notice->setFrameShape(QFrame::StyledPanel);
    m_edSearch = new QLineEdit(panel);
    m_edSearch->setObjectName(QStringLiteral("deskSearch"));
    m_edSearch->setAccessibleName(orvo::Text::tr("Поиск в меню"));
    m_edSearch->setPlaceholderText(orvo::Text::tr("Поиск..."));
    m_edSearch->setMinimumHeight(DeskDelegate::rowHeight);
    m_edSearch->setMaxLength(200);
    m_edSearch->addAction(orvo::image("search1"), QLineEdit::LeadingPosition)->setText(tr("Поиск"));
    m_edSearch->installEventFilter(this);
    new orvo::EscapeKey(m_edSearch, [this] { leaveSearch(); }); // the field's child
    auto* clear = new QToolButton(panel); // the line's own is too small for a finger
    clear->setObjectName(QStringLiteral("deskSearchClear"));
    clear->setAccessibleName(orvo::Text::tr("Очистить поиск"));
    clear->setToolTip(orvo::Text::tr("Очистить (Esc)"));
    clear->setIcon(style()->standardIcon(QStyle::SP_LineEditClearButton));
    clear->setAutoRaise(true);
    clear->setFocusPolicy(Qt::NoFocus);
    clear->setFixedSize(DeskDelegate::rowHeight, DeskDelegate::rowHeight);
    clear->hide();
    connect(clear, &QToolButton::clicked, this, &OrvoDesktop::leaveSearch);
    connect(m_edSearch, &QLineEdit::textChanged, clear,
            [clear](const QString& text) { clear->setVisible(!text.isEmpty()); });
    m_view = new DeskView(panel);
    m_view->setDeskModel(m_model.get());
    m_hits = new ElementList(*m_model, QStringLiteral("deskHits"), panel);
    m_hits->setAccessibleName(orvo::Text::tr("Найдено"));
    m_nothing = makeNotice(panel, "deskNothing");
    m_nothing->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_pages = new QStackedWidget(panel);
    for (QWidget* page : {static_cast<QWidget*>(m_view), static_cast<QWidget*>(m_hits),
                          static_cast<QWidget*>(m_nothing)})
        m_pages->addWidget(page);
    m_recentTitle = new QLabel(orvo::Text::tr("Последние"), panel);
    m_recentTitle->setObjectName(QStringLiteral("deskRecentTitle"));
    m_recentTitle->hide();
    m_recentList = new ElementList(*m_model, QStringLiteral("deskRecent"), panel);
    m_recentList->setAccessibleName(orvo::Text::tr("Последние"));
    m_recentList->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_recentList->setFocusPolicy(Qt::TabFocus);

    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(4, 4, 4, 4);
    auto* search = new QHBoxLayout; // which `layout` takes
    search->addWidget(m_edSearch);
    search->addWidget(clear);
    layout->addLayout(search);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_notice); // below: rows stay under the finger when it comes
    layout->addWidget(m_recentTitle);
    layout->addWidget(m_recentList);
    setCentralWidget(panel);
    setFocusProxy(m_view);

    connect(m_edSearch, &QLineEdit::textChanged, this, &OrvoDesktop::searchChanged);
    connect(m_view, &DeskView::chosen, this, &OrvoDesktop::launch);
    connect(m_view, &DeskView::typed, this, [this](const QString& text) {
        m_edSearch->setFocus();
        m_edSearch->setText(text);
    });
    for (ElementList* list : {m_hits, m_recentList})
        connect(list, &ElementList::chosen, this, &OrvoDesktop::launch, Qt::QueuedConnection);
}

void OrvoDesktop::SetParamMod(QString name, QString value) {
    if (name == QLatin1String("desktop"))
        m_wanted = std::move(value);
    else if (name == QLatin1String("preview"))
        m_isPreview = value == QLatin1String("1");
}

bool OrvoDesktop::refuseStart(const QString& why) {
    m_app->m_logModule->LogFile(logError, QStringLiteral("OrvoDesktop"), why);
    tell(why);
    return false;
}

bool OrvoDesktop::ModuleStart() {
    FoundDesktop found;
    QString error;
    if (!m_records.find(m_wanted, &found, &error))
        return refuseStart(error);
    if (found.count == 0)
        return refuseStart(orvo::Text::tr("Рабочего стола %1 нет.").arg(quoted(m_wanted)));
    if (found.count > 1)
        return refuseStart(
            orvo::Text::tr("Рабочих столов с названием %1 несколько; назовите путь или ключ.")
                .arg(quoted(m_wanted)));
    if (m_isPreview)
        m_records.setCheck([this](const orvo::LaunchRequest& wanted) {
            orvo::LaunchRequest request = wanted;
            request.refusal.clear(); // a host that cannot tell is no reason
            doCall(orvo::callCheckLaunch, &request);
            return request.refusal;
        });
    if (!open(found.key, found.caption))
        return refuseStart(
            orvo::Text::tr("Меню рабочего стола %1 не прочитано.").arg(quoted(found.caption)));
    if (!m_isPreview) // what an engineer edits may name anything
        setOnlyDesktop(found.key);
    return true;
}

bool OrvoDesktop::open(const QString& key, const QString& caption) {
    if (!m_records.open(key))
        return false;
    m_standing.clear();
    m_rows->fill();
    m_search->invalidate();
    m_recent = std::make_unique<Recent>(key);
    showRecent();
    showTitle(caption);
    return true;
}

void OrvoDesktop::showTitle(const QString& caption) {
    SetModTitle(m_isPreview ? orvo::Text::tr("Как у оператора: %1").arg(caption) : caption, {});
}

void OrvoDesktop::slot_modNotify(QString name, QVariant value) {
    if (m_records.desktop().isEmpty())
        return;
    if (name == QLatin1String("notice")) {
        tell(value.toString());
    } else if (name == QLatin1String("edit")) {
        const DeskView::Keep keep(*m_view);
        showEdit(value.toMap());
        rowsChanged();
    } else if (name == QLatin1String("desktop") && m_isPreview) {
        FoundDesktop found;
        QString error;
        tell({});
        if (!m_records.find(value.toString(), &found, &error) || found.count != 1 ||
            !open(found.key, found.caption))
            tell(orvo::Text::tr("Этот рабочий стол ещё не сохранён или не прочитан."));
    }
}

void OrvoDesktop::showEdit(const QVariantMap& edit) {
    const QString key = edit.value(QStringLiteral("key")).toString();
    const QString before = m_records.unsavedKey();
    m_records.setUnsaved(key, edit.value(QStringLiteral("isNew")).toBool(),
                         edit.value(QStringLiteral("values")).toMap());
    if (!before.isEmpty() && !orvo::sameText(before, key))
        m_rows->follow(before);
    if (!key.isEmpty())
        m_rows->follow(key);
}

/// A content has come or gone: what could not be opened perhaps can be now.
void OrvoDesktop::checkAgain() {
    m_records.forgetChecks();
    for (const QString& key : m_records.keys())
        m_rows->refresh(key);
    m_changed = true;
}

void OrvoDesktop::MessageOn() {
    const DeskView::Keep keep(*m_view);
    m_changed = false;
    COrvoCliMod::MessageOn();
    if (m_changed)
        rowsChanged();
}

bool OrvoDesktop::MessageData(MDXCliParam* prm) {
    const orvo::Notification change(prm);
    if (!change.isTableEvent() || m_records.desktop().isEmpty())
        return true;
    if (change.isFor(orvo::table::Menu)) {
        // What a deleted desktop had is its last state.
        const bool isLastState = !m_standing.isEmpty() && change.action() == OrvoEventDelete;
        if (!isLastState && m_records.take(change)) {
            m_rows->follow(change.key());
            m_changed = true;
        }
    } else if (change.isFor(orvo::table::MenuResource)) {
        resourceChanged(change.key());
    } else if (m_isPreview && change.isFor(orvo::table::MenuResourceFile)) {
        checkAgain();
    } else if (change.isFor(orvo::table::MenuFolder) &&
               orvo::sameText(change.key(), m_records.desktop())) {
        desktopChanged(change);
    }
    return true;
}

/// What the server did not answer while it was away is read now.
void OrvoDesktop::ModSesReconnect() {
    if (!m_records.hasGaps())
        return;
    const DeskView::Keep keep(*m_view);
    if (!m_records.open(m_records.desktop()))
        return;
    m_rows->fill();
    rowsChanged();
}

void OrvoDesktop::resourceChanged(const QString& key) {
    if (!m_records.knowsResource(key))
        return;
    m_records.forgetResource(key);
    for (const QString& element : m_records.elementsOf(key))
        m_rows->refresh(element);
    m_changed = true;
}

void OrvoDesktop::desktopChanged(const orvo::Notification& change) {
    if (change.action() == OrvoEventDelete) {
        m_standing = orvo::Text::tr("Этот рабочий стол удалён. Показано его последнее состояние.");
        tell({});
        return;
    }
    FoundDesktop found;
    QString error;
    if (!m_records.find(m_records.desktop(), &found, &error) || found.count != 1)
        return;
    showTitle(found.caption);
    if (!m_standing.isEmpty() && m_records.open(m_records.desktop())) { // it is there again
        m_standing.clear();
        m_rows->fill();
        m_changed = true;
    }
    const bool isRenamed = change.hasValueFor(orvo::field::caption);
    if (change.action() != OrvoEventUpdate)
        tell({});
    else if (isRenamed)
        tell(orvo::Text::tr("Рабочий стол теперь называется %1.").arg(quoted(found.caption)));
    else if (change.hasValueFor(orvo::field::ParentKey))
        tell(orvo::Text::tr("Рабочий стол теперь в другой папке."));
}

void OrvoDesktop::rowsChanged() {
    m_search->invalidate();
    if (!m_edSearch->text().isEmpty())
        searchChanged(m_edSearch->text());
    showRecent();
}

void OrvoDesktop::tell(const QString& text) {
    const QString& shown = text.isEmpty() ? m_standing : text;
    m_notice->setText(shown);
    m_notice->setVisible(!shown.isEmpty());
}

void OrvoDesktop::showRecent() {
    std::vector<Hit> hits;
    for (const QString& key : m_recent ? m_recent->keys() : QStringList())
        if (const QModelIndex row = m_model->findIndexByKey(key); row.isValid())
            hits.push_back({key, row.data().toString(), {}});
    m_recentList->show(hits, false);
    m_recentTitle->setVisible(!hits.empty());
    m_recentList->setVisible(!hits.empty());
}

void OrvoDesktop::searchChanged(const QString& text) {
    if (text.trimmed().isEmpty()) {
        m_pages->setCurrentWidget(m_view);
        return;
    }
    const std::vector<Hit> hits = m_search->find(text, mostHits);
    m_hits->show(hits, true);
    if (hits.empty())
        m_nothing->setText(orvo::Text::tr("Ничего не найдено."));
    m_pages->setCurrentWidget(hits.empty() ? static_cast<QWidget*>(m_nothing) : m_hits);
}

void OrvoDesktop::leaveSearch() {
    m_edSearch->clear();
    m_view->setFocus();
}

bool OrvoDesktop::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_edSearch || event->type() != QEvent::KeyPress)
        return COrvoCliMod::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    switch (key->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        QWidget* page = m_pages->currentWidget();
        if (page == m_nothing)
            return true;
        if (page == m_view)
            m_view->setFocus();
        QCoreApplication::sendEvent(page, event);
        return true;
    }
    default:
        return COrvoCliMod::eventFilter(watched, event);
    }
}

void OrvoDesktop::launch(const QString& key) {
    const QModelIndex row = m_model->findIndexByKey(key);
    if (!row.isValid()) {
        tell(orvo::Text::tr("Этого элемента в меню больше нет."));
        return;
    }
    if (DeskModel::isFolder(row)) {
        m_edSearch->clear();
        m_view->showElement(key);
        m_view->expand(row);
        return;
    }
    orvo::LaunchRequest request;
    request.key = key;
    request.caption = DeskModel::value(row, DeskColumn::Caption).toString();
    request.kind = DeskModel::value(row, DeskColumn::Kind).toInt();
    request.resource = DeskModel::value(row, DeskColumn::Resource).toString();
    request.name = DeskModel::value(row, DeskColumn::Name).toString();
    request.params = DeskModel::value(row, DeskColumn::Params).toString();
    request.oneCopy = DeskModel::value(row, DeskColumn::OneCopy).toBool();
    if (request.kind == missingResource) {
        request.refusal = DeskModel::value(row, DeskColumn::Note).toString();
    } else {
        if (request.kind == orvo::Kind::File)
            request.path = m_records.pathOf(DeskModel::value(row, DeskColumn::Resource).toString());
        doCall(orvo::callLaunch, &request);
    }
    if (!request.refusal.isEmpty()) {
        const QString text =
            QStringLiteral("%1: %2").arg(orvo::displayLine(request.caption), request.refusal);
        LogFile(logError, QStringLiteral("OrvoDesktop"), text);
        tell(text);
        return;
    }
    tell({});
    m_edSearch->clear();
    m_recent->use(key);
    showRecent();
}
