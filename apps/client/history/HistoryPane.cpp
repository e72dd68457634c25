#include "apps/client/history/HistoryPane.h"

#include "apps/client/ColumnWidth.h"
#include "apps/client/HostApp.h"
#include "apps/client/Look.h"
#include "apps/client/PaneKeys.h"
#include "apps/client/PlaceDelegate.h"
#include "apps/client/history/HistoryFilters.h"
#include "frame/Keys.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/BackTo.h"
#include "history/RecordWords.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTreeView>

#include <memory>

namespace orvo::app {

namespace {

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
    , m_mayWrite(mayWrite)
    , m_feed(thread)
    , m_filters(new HistoryFilters(thread, login, this))
    , m_view(new QTreeView(this))
    , m_note(new QLabel(this))
    , m_backMenu(new QMenu(this)) {
    setObjectName(QStringLiteral("historyPane"));
    m_view->setObjectName(QStringLiteral("historyTree"));
    m_view->setAccessibleName(Text::tr("История изменений"));
    m_view->setModel(&m_feed.model());
    m_view->setUniformRowHeights(true);
    m_view->setItemDelegate(new ReadableDelegate(m_view));
    m_view->setItemDelegateForColumn(HistoryModel::Where, new PlaceDelegate(m_view));
    m_view->setAlternatingRowColors(true);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    setFocusProxy(m_view);
    m_view->setTreePosition(HistoryModel::What);
    QHeaderView* header = m_view->header();
    header->setStretchLastSection(false);
    header->resizeSection(HistoryModel::When, widthFor(*m_view, QStringLiteral("00:00:00"), 130));
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
    addPaneRow(*all)->addWidget(m_filters, 1);
    all->addWidget(m_view);
    makeActions();
    connect(&m_feed, &HistoryFeed::noted, m_note, &QLabel::setText);
    connect(&m_feed, &HistoryFeed::failed, this, [this](const QString& text) {
        m_note->setText(Text::tr("История не прочитана: %1").arg(clipped(text)));
        emit failed(text);
    });
    connect(&m_feed, &HistoryFeed::namesChanged, this,
            [this] { m_filters->setNames(m_feed.names()); });
    connect(m_filters, &HistoryFilters::changed, this, &HistoryPane::applyFilters);
    connect(m_view->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &HistoryPane::readOnAtEnd);
    connect(m_view->verticalScrollBar(), &QScrollBar::rangeChanged, this,
            &HistoryPane::readOnAtEnd);
    onPaneKey(*this, keys::uses, [this] { showUses(); });
    keepPlace();
    updateActions();
}

/// What is read stays where it is while newer actions come in above it; at the top those show.
void HistoryPane::keepPlace() {
    const QAbstractItemModel* model = m_view->model();
    auto top = std::make_shared<QPersistentModelIndex>();
    connect(model, &QAbstractItemModel::rowsAboutToBeInserted, this,
            [this, top](const QModelIndex& parent, int first) {
                const bool above = !parent.isValid() && first == 0;
                *top = above && m_view->verticalScrollBar()->value() > 0 ? m_view->indexAt({1, 1})
                                                                         : QModelIndex();
            });
    connect(model, &QAbstractItemModel::rowsInserted, this, [this, top] {
        if (top->isValid())
            m_view->scrollTo(*top, QAbstractItemView::PositionAtTop);
        *top = QModelIndex();
    });
}

void HistoryPane::makeActions() {
    QHBoxLayout* row = addPaneRow(*qobject_cast<QVBoxLayout*>(layout()));
    m_show = addButton(row, Text::tr("Показать"), "historyShow");
    m_show->setToolTip(Text::tr("Открыть редактор на этой записи (Enter)"));
    m_revert = addButton(row, Text::tr("Вернуть эту правку…"), "historyRevert");
    m_revertBack = addButton(row, Text::tr("Вернуть всё до этого места"), "historyRevertBack");
    m_revertBack->setMenu(m_backMenu);
    row->addWidget(m_note, 1);
    connect(m_backMenu, &QMenu::aboutToShow, this, [this] {
        m_backMenu->clear();
        fillBackMenu(*m_backMenu);
    });
    connect(m_show, &QPushButton::clicked, this, &HistoryPane::showCurrent);
    // Not by a double click, which opens an action.
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* show = new QShortcut(QKeySequence(key), m_view);
        show->setContext(Qt::WidgetShortcut);
        connect(show, &QShortcut::activated, this, &HistoryPane::showCurrent);
    }
    connect(m_revert, &QPushButton::clicked, this, &HistoryPane::revertCurrent);
    connect(m_view, &QTreeView::customContextMenuRequested, this, &HistoryPane::showContextMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &HistoryPane::updateActions);
    connect(&m_feed.model(), &QAbstractItemModel::modelReset, this, &HistoryPane::updateActions);
    connect(&m_feed.model(), &QAbstractItemModel::dataChanged, this, &HistoryPane::updateActions);
}

// Filters ----------------------------------------------------------------------------------------

void HistoryPane::applyFilters() {
    m_feed.setFilter(m_filters->filter());
}

void HistoryPane::clearFilters() {
    m_filters->clear();
    applyFilters();
}

void HistoryPane::showRecord(const QString& table, const QString& key, bool withContent) {
    m_filters->clear();
    narrowTo({table.toStdString(), key.toStdString(), {}}, withContent);
}

void HistoryPane::showUser(const QString& login) {
    m_filters->clear();
    m_filters->chooseUser(login, login);
    applyFilters();
}

void HistoryPane::narrowTo(const HistoryRecord& record, bool withContent) {
    m_filters->setScope(record, withContent);
    applyFilters();
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
    request.title = Text::tr("Вернуть эту правку: %1").arg(oneLine(action->what));
    request.done = Text::tr("Возвращено: %1").arg(oneLine(action->what));
    request.selection = {action->group};
    request.preview = true;
    emit revertRequested(request);
}

void HistoryPane::revertBackTo(const history::Filter& scope, const QString& whose) {
    const HistoryAction* action = current();
    if (!action)
        return;
    const QString time = QDateTime::fromMSecsSinceEpoch(qRound64(action->time * 1000.0))
                             .toString(Text::tr("dd.MM.yyyy HH:mm:ss"));
    Reverter::Request request;
    request.title = Text::tr("Вернуть всё с %1, %2").arg(time, whose);
    request.done = Text::tr("Возвращено всё с %1, %2").arg(time, whose);
    request.collect = [scope, group = action->group](store::MaintainedStore& store,
                                                     history::Selection* selection) {
        return history::collectBackTo(store, scope, group, selection);
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
        add(Text::tr("этой строки"), scope);
        scope = {};
        if (holdsOthers(record.table)) {
            scope.branch = history::Branch{history::tableOf(record.table), record.key};
            add(Text::tr("этой строки и всего внутри неё"), scope);
        }
    }
    if (!record.desktop.empty() && record.table == table::Menu) {
        scope = {};
        scope.branch = history::Branch{store::findTable(table::MenuFolder), record.desktop};
        add(Text::tr("всего рабочего стола"), scope);
    }
    scope = {};
    scope.login = action->login;
    add(Text::tr("того же человека: %1")
            .arg(oneLine(action->who).replace(QLatin1Char('&'), QLatin1String("&&"))),
        scope);
    add(Text::tr("по нынешнему отбору"), m_feed.filter());
}

void HistoryPane::showUses() {
    const HistoryRecord record = m_feed.model().recordAt(m_view->currentIndex());
    const QString table = QString::fromStdString(record.table);
    if (!record.key.empty() && !usesEntry(table).isEmpty())
        emit usesRequested(table, QString::fromStdString(record.key), {});
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
    menu.actions().constLast()->setShortcut(QKeySequence(Qt::Key_Enter));
    add(m_revert->text(), m_revert->isEnabled(), [this] { revertCurrent(); });
    QMenu* back = menu.addMenu(m_revertBack->text());
    back->setEnabled(m_revertBack->isEnabled());
    fillBackMenu(*back);
    menu.addSeparator();
    const HistoryRecord record = m_feed.model().recordAt(index);
    add(Text::tr("История этой строки"), !record.key.empty(),
        [this, record] { narrowTo(record, false); });
    add(Text::tr("История этого рабочего стола"), !record.desktop.empty(), [this, record] {
        narrowTo({table::MenuFolder, record.desktop, record.desktop}, true);
    });
    if (const QString uses = usesEntry(QString::fromStdString(record.table));
        !uses.isEmpty() && !record.key.empty()) {
        add(uses, true, [this] { showUses(); });
        menu.actions().constLast()->setShortcut(
            keys::sequences(*keys::command(QLatin1String(keys::uses))).first());
    }
    add(Text::tr("Что заблокировано автором правки (%1)").arg(action->who), true,
        [this, login = QString::fromStdString(action->login)] {
            emit usesRequested(QLatin1String(table::Users), {}, login);
        });
    add(Text::tr("Только этот человек"), true,
        [this, login = QString::fromStdString(action->login), who = action->who] {
            m_filters->chooseUser(login, who);
            applyFilters();
        });
    menu.exec(m_view->viewport()->mapToGlobal(point));
}

} // namespace orvo::app
