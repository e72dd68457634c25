#include "apps/client/history/HistoryPane.h"

#include "apps/client/HostApp.h"
#include "apps/client/Look.h"
#include "frame/Vocabulary.h"
#include "history/BackTo.h"
#include "history/RecordWords.h"

#include <QComboBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

namespace orvo::app {

namespace {

constexpr int applyDelayMs = 300; ///< while the text is being typed
constexpr int longestScope = 60;

struct Period {
    const char* words;
    int seconds; ///< 0: without a limit
};
constexpr Period periods[] = {{"за всё время", 0},
                              {"за час", 3600},
                              {"за сутки", 86400},
                              {"за неделю", 7 * 86400},
                              {"за месяц", 30 * 86400}};

bool holdsOthers(const std::string& table) {
    return table == table::Menu || table == table::MenuFolder || table == table::MenuResourceFolder;
}

QPushButton* addButton(QHBoxLayout* row, const QString& text, const char* name) {
    auto* button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    row->addWidget(button);
    return button;
}

} // namespace

HistoryPane::HistoryPane(StoreThread& thread, const QString& login, bool mayWrite, QWidget* parent)
    : QWidget(parent)
    , m_thread(thread)
    , m_login(login)
    , m_mayWrite(mayWrite)
    , m_feed(thread)
    , m_who(new QComboBox(this))
    , m_since(new QComboBox(this))
    , m_text(new QLineEdit(this))
    , m_scopeButton(new QToolButton(this))
    , m_view(new QTreeView(this))
    , m_note(new QLabel(this))
    , m_backMenu(new QMenu(this)) {
    setObjectName(QStringLiteral("historyPane"));
    m_view->setObjectName(QStringLiteral("historyTree"));
    m_view->setAccessibleName(QStringLiteral("История изменений"));
    m_who->setAccessibleName(QStringLiteral("Кто изменил"));
    m_since->setAccessibleName(QStringLiteral("За какое время"));
    m_text->setAccessibleName(QStringLiteral("Поиск в истории"));
    m_scopeButton->setAccessibleName(QStringLiteral("О чём история"));
    m_view->setModel(&m_feed.model());
    m_view->setUniformRowHeights(true);
    m_view->setItemDelegate(new ReadableDelegate(m_view));
    m_view->setAlternatingRowColors(true);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    setFocusProxy(m_view);
    m_view->setTreePosition(HistoryModel::What);
    QHeaderView* header = m_view->header();
    header->setStretchLastSection(false);
    header->resizeSection(HistoryModel::When, 130);
    header->resizeSection(HistoryModel::Who, 130);
    header->setSectionResizeMode(HistoryModel::What, QHeaderView::Stretch);
    header->resizeSection(HistoryModel::Before, 150);
    header->resizeSection(HistoryModel::After, 150);
    header->resizeSection(HistoryModel::Where, 180);
    m_note->setObjectName(QStringLiteral("historyNote"));
    m_note->setTextFormat(Qt::PlainText);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    makeFilters();
    all->addWidget(m_view);
    makeActions();
    connect(&m_feed, &HistoryFeed::noted, m_note, &QLabel::setText);
    connect(&m_feed, &HistoryFeed::failed, this, [this](const QString& text) {
        m_note->setText(QStringLiteral("История не прочитана: %1").arg(clipped(text)));
        emit failed(text);
    });
    connect(&m_feed, &HistoryFeed::namesChanged, this, &HistoryPane::listUsers);
    connect(m_view->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &HistoryPane::readOnAtEnd);
    connect(m_view->verticalScrollBar(), &QScrollBar::rangeChanged, this,
            &HistoryPane::readOnAtEnd);
    updateActions();
}

void HistoryPane::makeFilters() {
    m_who->setObjectName(QStringLiteral("historyWho"));
    m_since->setObjectName(QStringLiteral("historySince"));
    m_text->setObjectName(QStringLiteral("historyText"));
    m_scopeButton->setObjectName(QStringLiteral("historyScope"));
    m_who->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    listUsers();
    for (const Period& period : periods)
        m_since->addItem(QString::fromUtf8(period.words), period.seconds);
    m_text->setPlaceholderText(QStringLiteral("Текст в старом или новом значении"));
    m_text->setClearButtonEnabled(true);
    m_text->setMaximumWidth(320);
    m_scopeButton->setToolTip(QStringLiteral("Показать историю всех строк"));
    m_scopeButton->setAutoRaise(true);
    m_scopeButton->hide();
    QHBoxLayout* row = addPaneRow(*qobject_cast<QVBoxLayout*>(layout()));
    for (QWidget* widget : std::initializer_list<QWidget*>{m_who, m_since, m_text, m_scopeButton})
        row->addWidget(widget);
    row->addStretch();
    m_applySoon.setSingleShot(true);
    m_applySoon.setInterval(applyDelayMs);
    connect(&m_applySoon, &QTimer::timeout, this, &HistoryPane::applyFilters);
    connect(m_who, qOverload<int>(&QComboBox::activated), this, &HistoryPane::applyFilters);
    connect(m_since, qOverload<int>(&QComboBox::activated), this, &HistoryPane::applyFilters);
    connect(m_text, &QLineEdit::textChanged, &m_applySoon, qOverload<>(&QTimer::start));
    connect(m_text, &QLineEdit::returnPressed, this, &HistoryPane::applyFilters);
    connect(m_scopeButton, &QToolButton::clicked, this, [this] { setScope({}); });
}

void HistoryPane::makeActions() {
    QHBoxLayout* row = addPaneRow(*qobject_cast<QVBoxLayout*>(layout()));
    m_show = addButton(row, QStringLiteral("Показать"), "historyShow");
    m_revert = addButton(row, QStringLiteral("Вернуть эту правку…"), "historyRevert");
    m_revertBack =
        addButton(row, QStringLiteral("Вернуть всё до этого места"), "historyRevertBack");
    m_revertBack->setMenu(m_backMenu);
    row->addWidget(m_note, 1);
    connect(m_backMenu, &QMenu::aboutToShow, this, [this] {
        m_backMenu->clear();
        fillBackMenu(*m_backMenu);
    });
    connect(m_show, &QPushButton::clicked, this, &HistoryPane::showCurrent);
    connect(m_revert, &QPushButton::clicked, this, &HistoryPane::revertCurrent);
    connect(m_view, &QTreeView::customContextMenuRequested, this, &HistoryPane::showContextMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &HistoryPane::updateActions);
    connect(&m_feed.model(), &QAbstractItemModel::modelReset, this, &HistoryPane::updateActions);
    connect(&m_feed.model(), &QAbstractItemModel::dataChanged, this, &HistoryPane::updateActions);
}

// Filters ----------------------------------------------------------------------------------------

history::Filter HistoryPane::filter() const {
    history::Filter made;
    if (const QVariant login = m_who->currentData(); login.isValid())
        made.login = login.toString().toStdString();
    if (const int seconds = m_since->currentData().toInt(); seconds > 0)
        made.since = static_cast<double>(QDateTime::currentSecsSinceEpoch() - seconds);
    made.text = m_text->text().trimmed();
    if (m_scope.record.key.empty())
        return made;
    if (m_scope.withContent) {
        made.branch = history::Branch{history::tableOf(m_scope.record.table), m_scope.record.key};
    } else {
        made.table = m_scope.record.table;
        made.key = m_scope.record.key;
    }
    return made;
}

void HistoryPane::applyFilters() {
    m_applySoon.stop();
    m_feed.setFilter(filter());
}

void HistoryPane::clearFilters() {
    m_who->setCurrentIndex(0);
    m_since->setCurrentIndex(0);
    m_text->clear();
    setScope({});
}

void HistoryPane::showRecord(const QString& table, const QString& key, bool withContent) {
    m_who->setCurrentIndex(0);
    m_since->setCurrentIndex(0);
    m_text->clear();
    setScope({{table.toStdString(), key.toStdString(), {}}, withContent});
}

void HistoryPane::showUser(const QString& login) {
    chooseUser(login, login);
    m_since->setCurrentIndex(0);
    m_text->clear();
    setScope({});
}

/// Also one whom the list does not have.
void HistoryPane::chooseUser(const QString& login, const QString& name) {
    if (m_who->findData(login) < 0)
        m_who->addItem(oneLine(name), login);
    m_who->setCurrentIndex(m_who->findData(login));
}

void HistoryPane::setScope(const Scope& scope) {
    m_scope = scope;
    m_scopeButton->setVisible(!scope.record.key.empty());
    m_scopeButton->setText(QStringLiteral("…"));
    if (!scope.record.key.empty())
        nameScope();
    applyFilters();
}

/// The record is named when the store has told its name.
void HistoryPane::nameScope() {
    auto words = std::make_shared<QString>();
    m_thread.run(
        this,
        [words, scope = m_scope](store::MaintainedStore& store) -> store::Status {
            const store::TableDef* table = history::tableOf(scope.record.table);
            history::LoggedRecords source(store);
            if (table)
                *words = history::recordWords(*table, source.valuesOf(*table, scope.record.key),
                                              scope.record.key);
            return {};
        },
        [this, words, key = m_scope.record.key](const store::Status& status) {
            if (!status.ok() || key != m_scope.record.key)
                return;
            m_scopeButton->setText(
                QStringLiteral("%1: %2  ✕")
                    .arg(m_scope.withContent ? QStringLiteral("Внутри") : QStringLiteral("Строка"),
                         clipped(oneLine(*words), longestScope))
                    .replace(QLatin1Char('&'), QLatin1String("&&")));
        });
}

void HistoryPane::listUsers() {
    const QVariant chosen = m_who->currentData();
    m_who->clear();
    m_who->addItem(QStringLiteral("все"));
    m_who->addItem(QStringLiteral("только я"), m_login);
    std::vector<std::pair<QString, QString>> users;
    for (const auto& [login, name] : m_feed.names())
        if (const QString text = QString::fromStdString(login); text != m_login)
            users.emplace_back(name == text ? text : QStringLiteral("%1 (%2)").arg(name, text),
                               text);
    std::sort(users.begin(), users.end());
    for (const auto& [name, login] : users)
        m_who->addItem(oneLine(name), login);
    if (!chosen.isValid())
        return;
    chooseUser(chosen.toString(), chosen.toString());
}

void HistoryPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_feed.setWatched(true);
}

void HistoryPane::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_feed.setWatched(false);
}

void HistoryPane::readOnAtEnd() {
    const QScrollBar* bar = m_view->verticalScrollBar();
    if (isVisible() && bar->value() + bar->pageStep() >= bar->maximum())
        m_feed.model().wantMore();
}

// Actions ----------------------------------------------------------------------------------------

const HistoryAction* HistoryPane::current() const {
    return m_feed.model().actionAt(m_view->currentIndex());
}

void HistoryPane::setMayWrite(bool may) {
    m_mayWrite = may;
    updateActions();
}

void HistoryPane::updateActions() {
    const HistoryAction* action = current();
    const bool known = action && !action->forgotten;
    m_show->setEnabled(action && !m_feed.model().recordAt(m_view->currentIndex()).key.empty());
    m_revert->setEnabled(known && m_mayWrite && !action->undone);
    m_revertBack->setEnabled(known && m_mayWrite);
}

void HistoryPane::showCurrent() {
    const HistoryRecord record = m_feed.model().recordAt(m_view->currentIndex());
    if (!record.key.empty())
        emit showRequested(QString::fromStdString(record.table), QString::fromStdString(record.key),
                           QString::fromStdString(record.desktop));
}

void HistoryPane::revertCurrent() {
    const HistoryAction* action = current();
    if (!action)
        return;
    Reverter::Request request;
    request.title = QStringLiteral("Вернуть эту правку: %1").arg(oneLine(action->what));
    request.done = QStringLiteral("Возвращено: %1").arg(oneLine(action->what));
    request.groups = {action->group};
    request.preview = true;
    emit revertRequested(request);
}

void HistoryPane::revertBackTo(const history::Filter& scope, const QString& whose) {
    const HistoryAction* action = current();
    if (!action)
        return;
    const QString time = QDateTime::fromMSecsSinceEpoch(qRound64(action->time * 1000.0))
                             .toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    Reverter::Request request;
    request.title = QStringLiteral("Вернуть всё с %1, %2").arg(time, whose);
    request.done = QStringLiteral("Возвращено всё с %1, %2").arg(time, whose);
    request.collect = [scope, group = action->group](store::MaintainedStore& store,
                                                     std::vector<int64_t>* groups) {
        return history::collectBackTo(store, scope, group, groups);
    };
    request.preview = true;
    emit revertRequested(request);
}

void HistoryPane::fillBackMenu(QMenu& menu) {
    const HistoryAction* action = current();
    if (!action)
        return;
    const auto add = [&](const QString& text, const history::Filter& scope) {
        // Queued: the menu is closed before the dialog comes up.
        connect(
            menu.addAction(text), &QAction::triggered, this,
            [this, scope, text] { revertBackTo(scope, text); }, Qt::QueuedConnection);
    };
    const HistoryRecord record = m_feed.model().recordAt(m_view->currentIndex());
    history::Filter scope;
    if (!record.key.empty()) {
        scope.table = record.table;
        scope.key = record.key;
        add(QStringLiteral("этой строки"), scope);
        scope = {};
        if (holdsOthers(record.table)) {
            scope.branch = history::Branch{history::tableOf(record.table), record.key};
            add(QStringLiteral("этой строки и всего внутри неё"), scope);
        }
    }
    if (!record.desktop.empty() && record.table == table::Menu) {
        scope = {};
        scope.branch = history::Branch{store::findTable(table::MenuFolder), record.desktop};
        add(QStringLiteral("всего рабочего стола"), scope);
    }
    scope = {};
    scope.login = action->login;
    add(QStringLiteral("того же человека: %1")
            .arg(oneLine(action->who).replace(QLatin1Char('&'), QLatin1String("&&"))),
        scope);
    add(QStringLiteral("по нынешнему отбору"), m_feed.filter());
}

void HistoryPane::showContextMenu(const QPoint& point) {
    const QModelIndex index = m_view->indexAt(point);
    const HistoryAction* action = m_feed.model().actionAt(index);
    if (!action)
        return;
    m_view->setCurrentIndex(index);
    QMenu menu;
    const auto add = [&](const QString& text, bool enabled, const std::function<void()>& run) {
        QAction* made = menu.addAction(text);
        made->setEnabled(enabled);
        connect(made, &QAction::triggered, this, run, Qt::QueuedConnection);
    };
    add(m_show->text(), m_show->isEnabled(), [this] { showCurrent(); });
    add(m_revert->text(), m_revert->isEnabled(), [this] { revertCurrent(); });
    QMenu* back = menu.addMenu(m_revertBack->text());
    back->setEnabled(m_revertBack->isEnabled());
    fillBackMenu(*back);
    menu.addSeparator();
    const HistoryRecord record = m_feed.model().recordAt(index);
    add(QStringLiteral("История этой строки"), !record.key.empty(), [this, record] {
        setScope({record, false});
    });
    add(QStringLiteral("История этого рабочего стола"), !record.desktop.empty(), [this, record] {
        setScope({{table::MenuFolder, record.desktop, record.desktop}, true});
    });
    const QString table = QString::fromStdString(record.table);
    if (const QString uses = usesEntry(table); !uses.isEmpty() && !record.key.empty())
        add(uses, true, [this, table, key = QString::fromStdString(record.key)] {
            emit usesRequested(table, key, {});
        });
    add(QStringLiteral("Что заблокировано этим человеком"), true,
        [this, login = QString::fromStdString(action->login)] {
            emit usesRequested(QLatin1String(table::Users), {}, login);
        });
    add(QStringLiteral("Только этот человек"), true,
        [this, login = QString::fromStdString(action->login), who = action->who] {
            chooseUser(login, who);
            applyFilters();
        });
    menu.exec(m_view->viewport()->mapToGlobal(point));
}

} // namespace orvo::app
