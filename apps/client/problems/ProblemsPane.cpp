#include "apps/client/problems/ProblemsPane.h"
#include "apps/client/HostApp.h"

#include "apps/client/Look.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace orvo::app {

ProblemsPane::ProblemsPane(ProblemsFeed& feed, bool mayWrite, QWidget* parent)
    : QWidget(parent)
    , m_feed(feed)
    , m_mayWrite(mayWrite)
    , m_sorted(new QSortFilterProxyModel(this))
    , m_which(new QComboBox(this))
    , m_view(new QTreeView(this))
    , m_show(new QPushButton(QStringLiteral("Показать"), this))
    , m_cure(new QPushButton(QStringLiteral("Исправить"), this))
    , m_note(new QLabel(this)) {
    setObjectName(QStringLiteral("problemsPane"));
    m_sorted->setSourceModel(&feed.model());
    m_sorted->setSortRole(ProblemsModel::SortRole);
    m_sorted->setFilterRole(ProblemsModel::IsErrorRole);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    makeView();
    all->addWidget(m_view);
    makeButtons();
    connect(&feed, &ProblemsFeed::countChanged, this, &ProblemsPane::note);
    note();
    updateActions();
}

void ProblemsPane::makeView() {
    m_view->setObjectName(QStringLiteral("problemsTree"));
    m_view->setAccessibleName(QStringLiteral("Проблемы"));
    m_view->setModel(m_sorted);
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setAlternatingRowColors(true);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setSortingEnabled(true);
    m_view->sortByColumn(ProblemsModel::Where, Qt::AscendingOrder);
    setFocusProxy(m_view);
    QHeaderView* header = m_view->header();
    header->setStretchLastSection(false);
    header->resizeSection(ProblemsModel::What, 260);
    header->resizeSection(ProblemsModel::Where, 240);
    header->setSectionResizeMode(ProblemsModel::Problem, QHeaderView::Stretch);
    header->resizeSection(ProblemsModel::Cure, 260);
    connect(m_view, &QTreeView::activated, this, &ProblemsPane::showCurrent);
    connect(m_view, &QTreeView::customContextMenuRequested, this, &ProblemsPane::showContextMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ProblemsPane::updateActions);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ProblemsPane::updateActions);
    connect(m_sorted, &QAbstractItemModel::dataChanged, this, &ProblemsPane::updateActions);
    connect(m_sorted, &QAbstractItemModel::modelReset, this, &ProblemsPane::updateActions);
}

void ProblemsPane::makeButtons() {
    m_which->setObjectName(QStringLiteral("problemsWhich"));
    m_which->setAccessibleName(QStringLiteral("Какие проблемы показать"));
    m_which->addItem(QStringLiteral("ошибки и замечания"));
    m_which->addItem(QStringLiteral("только ошибки"));
    m_show->setObjectName(QStringLiteral("problemsShow"));
    m_show->setToolTip(QStringLiteral("Открыть редактор на этой записи (Enter)"));
    m_cure->setObjectName(QStringLiteral("problemsCure"));
    m_cure->setToolTip(QStringLiteral(
        "Исправить выделенное там, где исправление однозначно (Ctrl+Enter); отменяет Ctrl+Z"));
    m_note->setObjectName(QStringLiteral("problemsNote"));
    m_note->setContentsMargins(8, 0, 0, 0);
    QHBoxLayout* row = addPaneRow(*qobject_cast<QVBoxLayout*>(layout()));
    row->addWidget(m_show);
    row->addWidget(m_cure);
    row->addWidget(m_which);
    row->addWidget(m_note, 1);
    connect(m_show, &QPushButton::clicked, this, &ProblemsPane::showCurrent);
    connect(m_cure, &QPushButton::clicked, this, &ProblemsPane::cureSelected);
    connect(m_which, qOverload<int>(&QComboBox::activated), this, [this](int which) {
        m_sorted->setFilterFixedString(which == 1 ? QStringLiteral("true") : QString());
    });
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* cure = new QShortcut(QKeySequence(int(Qt::CTRL) + key), m_view);
        cure->setContext(Qt::WidgetShortcut);
        connect(cure, &QShortcut::activated, this, &ProblemsPane::cureSelected);
    }
}

void ProblemsPane::setMayWrite(bool may) {
    m_mayWrite = may;
    updateActions();
}

const ProblemRow* ProblemsPane::rowAt(const QModelIndex& index) const {
    const QModelIndex source = m_sorted->mapToSource(index);
    return source.isValid() ? &m_feed.model().row(source.row()) : nullptr;
}

std::vector<checks::Finding> ProblemsPane::curable() const {
    std::vector<checks::Finding> findings;
    QModelIndexList rows = m_view->selectionModel()->selectedRows();
    if (rows.isEmpty()) // the one with the focus
        rows << m_view->currentIndex();
    for (const QModelIndex& index : qAsConst(rows))
        if (const ProblemRow* row = rowAt(index); row && !row->cure.isEmpty())
            findings.push_back(row->finding);
    return findings;
}

void ProblemsPane::updateActions() {
    const ProblemRow* row = rowAt(m_view->currentIndex());
    m_show->setEnabled(row && !row->finding.key.empty());
    m_cure->setEnabled(m_mayWrite && !curable().empty());
}

void ProblemsPane::note() {
    if (!m_feed.isKnown())
        m_note->setText(QStringLiteral("Установка проверяется…"));
    else if (m_feed.errors() + m_feed.warnings() == 0)
        m_note->setText(QStringLiteral("Проблем нет."));
    else
        m_note->setText(QStringLiteral("Ошибок: %1, замечаний: %2")
                            .arg(m_feed.errors())
                            .arg(m_feed.warnings()));
    updateActions();
}

void ProblemsPane::showCurrent() {
    const ProblemRow* row = rowAt(m_view->currentIndex());
    if (row && !row->finding.key.empty())
        emit showRequested(QLatin1String(row->finding.table->name),
                           QString::fromStdString(row->finding.key), row->desktop);
}

void ProblemsPane::cureSelected() {
    if (m_cure->isEnabled())
        m_feed.cure(curable());
}

void ProblemsPane::showContextMenu(const QPoint& point) {
    const ProblemRow* row = rowAt(m_view->currentIndex());
    if (!row)
        return;
    QMenu menu;
    const auto add = [&](const QPushButton* button, const QKeySequence& key,
                         void (ProblemsPane::*run)()) {
        QAction* action = menu.addAction(button->text());
        action->setShortcut(key);
        action->setEnabled(button->isEnabled());
        // Queued: the menu is closed before anything else comes up.
        connect(action, &QAction::triggered, this, run, Qt::QueuedConnection);
    };
    add(m_show, QKeySequence(Qt::Key_Return), &ProblemsPane::showCurrent);
    add(m_cure, QKeySequence(int(Qt::CTRL) + Qt::Key_Return), &ProblemsPane::cureSelected);
    const QString table = QLatin1String(row->finding.table->name);
    if (const QString uses = usesEntry(table); !uses.isEmpty() && !row->finding.key.empty())
        connect(
            menu.addAction(uses), &QAction::triggered, this,
            [this, table, key = QString::fromStdString(row->finding.key)] {
                emit usesRequested(table, key);
            },
            Qt::QueuedConnection);
    menu.exec(m_view->viewport()->mapToGlobal(point));
}

} // namespace orvo::app
