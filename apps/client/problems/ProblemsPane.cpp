#include "apps/client/problems/ProblemsPane.h"

#include "apps/client/ElidedLabel.h"
#include "apps/client/HostApp.h"
#include "apps/client/Look.h"
#include "apps/client/PaneKeys.h"
#include "apps/client/PlaceDelegate.h"
#include "frame/Keys.h"
#include "frame/Text.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace orvo::app {

ProblemsPane::ProblemsPane(ProblemsFeed& feed, bool mayWrite, QWidget* parent)
    : QWidget(parent)
    , m_feed(feed)
    , m_mayWrite(mayWrite)
    , m_which(new QComboBox(this))
    , m_text(new QLineEdit(this))
    , m_view(new QTreeView(this))
    , m_show(new QPushButton(Text::tr("Показать"), this))
    , m_cure(new QPushButton(Text::tr("Исправить"), this))
    , m_stop(new QPushButton(Text::tr("Прервать"), this))
    , m_note(new ElidedLabel({}, Qt::ElideRight, this)) {
    setObjectName(QStringLiteral("problemsPane"));
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    makeView();
    all->addWidget(m_view);
    makeButtons();
    connect(&feed, &ProblemsFeed::countChanged, this, &ProblemsPane::note);
    connect(&feed, &ProblemsFeed::cureChanged, this, &ProblemsPane::note);
    note();
    updateActions();
}

void ProblemsPane::makeView() {
    m_view->setObjectName(QStringLiteral("problemsTree"));
    m_view->setAccessibleName(Text::tr("Проблемы"));
    // Before the view hears of it: it would take the row above.
    connect(&m_feed.model(), &QAbstractItemModel::rowsAboutToBeRemoved, this,
            &ProblemsPane::aboutToRemove);
    m_view->setModel(&m_feed.model());
    connect(&m_feed.model(), &QAbstractItemModel::rowsRemoved, this, &ProblemsPane::removed);
    connect(&m_feed, &ProblemsFeed::countChanged, this, &ProblemsPane::continueCures);
    m_view->setItemDelegateForColumn(ProblemsModel::Where, new PlaceDelegate(m_view)); // its child
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
    onPaneKey(*this, keys::uses, [this] { showUses(); });
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ProblemsPane::updateActions);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ProblemsPane::updateActions);
    const QAbstractItemModel* model = m_view->model();
    connect(model, &QAbstractItemModel::dataChanged, this, &ProblemsPane::updateActions);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &ProblemsPane::remember);
    connect(model, &QAbstractItemModel::modelReset, this, &ProblemsPane::restore);
    connect(model, &QAbstractItemModel::modelReset, this, &ProblemsPane::note); // of what is hidden
}

void ProblemsPane::makeButtons() {
    constexpr int textWidth = 170;
    m_which->setObjectName(QStringLiteral("problemsWhich"));
    m_which->setAccessibleName(Text::tr("Какие проблемы показать"));
    m_which->addItem(Text::tr("ошибки и замечания"));
    m_which->addItem(Text::tr("только ошибки"));
    m_show->setObjectName(QStringLiteral("problemsShow"));
    m_show->setToolTip(Text::tr("Открыть редактор на этой записи (Enter)"));
    m_cure->setObjectName(QStringLiteral("problemsCure"));
    m_cure->setToolTip(Text::tr(
        "Исправить выделенное там, где исправление однозначно (Ctrl+Enter); отменяет Ctrl+Z"));
    m_stop->setObjectName(QStringLiteral("problemsStop"));
    m_stop->setToolTip(Text::tr("Бросить исправление: не будет записано ничего"));
    m_text->setObjectName(QStringLiteral("problemsText"));
    m_text->setAccessibleName(Text::tr("Найти среди проблем"));
    m_text->setPlaceholderText(Text::tr("Найти среди проблем"));
    m_text->setToolTip(Text::tr("Слова из любого столбца, в любом порядке (Ctrl+F)"));
    m_text->setClearButtonEnabled(true);
    m_text->setMinimumWidth(textWidth);
    m_which->setMinimumWidth(textWidth); // else no narrower than its longest entry
    m_note->setObjectName(QStringLiteral("problemsNote"));
    m_note->setContentsMargins(8, 0, 0, 0);
    QHBoxLayout* row = addPaneRow(*qobject_cast<QVBoxLayout*>(layout()));
    row->addWidget(m_show);
    row->addWidget(m_cure);
    row->addWidget(m_stop);
    row->addWidget(m_which);
    row->addWidget(m_note, 1);
    row->addWidget(m_text);
    connect(m_show, &QPushButton::clicked, this, &ProblemsPane::showCurrent);
    connect(m_cure, &QPushButton::clicked, this, &ProblemsPane::cureSelected);
    connect(m_stop, &QPushButton::clicked, this, [this] {
        m_feed.stopCure();
        note();
    });
    connect(m_which, qOverload<int>(&QComboBox::activated), this,
            [this](int which) { m_feed.model().showOnlyErrors(which == 1); });
    connect(m_text, &QLineEdit::returnPressed, m_view,
            [this] { m_view->setFocus(Qt::ShortcutFocusReason); });
    connect(m_text, &QLineEdit::textChanged, &m_feed.model(), &ProblemsModel::showOnlyThoseWith);
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
    return index.isValid() ? &m_feed.model().row(index.row()) : nullptr;
}

/// The rows that are selected, until `take` gives false. A list of their indexes would take its
/// time when it is ten thousand.
template <class Take>
void ProblemsPane::forEachChosen(const Take& take) const {
    const QItemSelection selection = m_view->selectionModel()->selection();
    for (const QItemSelectionRange& range : selection)
        for (int row = range.top(); row <= range.bottom(); ++row)
            if (!take(m_feed.model().row(row)))
                return;
}

bool ProblemsPane::isAnyCurable() const {
    bool found = false;
    forEachChosen([&found](const ProblemRow& row) {
        found = !row.cure.isEmpty();
        return !found;
    });
    return found;
}

/// A reset takes the selection away, and what others do is no reason for that.
void ProblemsPane::remember() {
    const int count = m_feed.model().rowCount();
    if (count == 0) // between two looks at everything
        return;
    const QItemSelectionModel* selected = m_view->selectionModel();
    const ProblemRow* current = rowAt(m_view->currentIndex());
    m_current = current ? current->finding : checks::Finding();
    m_isSelected = selected->isSelected(m_view->currentIndex());
    m_next = {};
    constexpr int farthest = 1000;
    for (const int by : {1, -1})
        for (int row = m_view->currentIndex().row() + by, looked = 0;
             current && !m_next.table && row >= 0 && row < count && looked < farthest;
             row += by, ++looked)
            if (!selected->isRowSelected(row, {}))
                m_next = m_feed.model().row(row).finding;
    for (const QItemSelectionRange& range : m_view->selectionModel()->selection())
        m_feed.model().mark(range.top(), range.bottom());
}

void ProblemsPane::restore() {
    ProblemsModel& model = m_feed.model();
    QItemSelection selection;
    const int count = model.rowCount();
    for (int row = 0; row < count; ++row) {
        if (!model.isMarked(row))
            continue;
        const int first = row;
        while (row + 1 < count && model.isMarked(row + 1))
            ++row;
        selection.append(QItemSelectionRange(model.index(first, 0),
                                             model.index(row, ProblemsModel::ColumnCount - 1)));
    }
    model.unmarkAll();
    QItemSelectionModel* selected = m_view->selectionModel();
    selected->select(selection, QItemSelectionModel::ClearAndSelect);
    if (m_current.table) {
        int row = model.rowOf(m_current);
        const bool isGone = row < 0;
        if (isGone && m_next.table)
            row = model.rowOf(m_next);
        const bool selects = selection.isEmpty() && m_isSelected && (!isGone || isCured(m_current));
        selected->setCurrentIndex(model.index(row, 0), selects
                                                           ? QItemSelectionModel::ClearAndSelect |
                                                                 QItemSelectionModel::Rows
                                                           : QItemSelectionModel::NoUpdate);
    }
    updateActions();
}

bool ProblemsPane::isCured(const checks::Finding& finding) const {
    return std::find(m_cured.begin(), m_cured.end(), finding) != m_cured.end();
}

void ProblemsPane::aboutToRemove(const QModelIndex& /*parent*/, int first, int last) {
    const QModelIndex current = m_view->currentIndex();
    const bool isTaken = current.isValid() && current.row() >= first && current.row() <= last;
    m_place = isTaken ? first : -1;
    m_goesOn = m_goesOn || (isTaken && isCured(rowAt(current)->finding));
}

void ProblemsPane::removed() {
    const int count = m_feed.model().rowCount();
    if (m_place < 0 || count == 0)
        return;
    m_view->selectionModel()->setCurrentIndex(m_feed.model().index(std::min(m_place, count - 1), 0),
                                              QItemSelectionModel::NoUpdate);
    m_place = -1;
}

/// One who puts right one after the other goes on where he is. What another has put right moves the
/// focus, but no selection: nothing is cured by a key that was meant for another row.
void ProblemsPane::continueCures() {
    QItemSelectionModel* selected = m_view->selectionModel();
    if (m_goesOn && !selected->hasSelection() && m_view->currentIndex().isValid())
        selected->select(m_view->currentIndex(),
                         QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_goesOn = false;
}

void ProblemsPane::updateActions() {
    const ProblemRow* row = rowAt(m_view->currentIndex());
    m_show->setEnabled(row && !row->finding.key.empty());
    m_cure->setEnabled(m_mayWrite && !m_feed.isCuring() && isAnyCurable());
    m_stop->setVisible(m_feed.isCuring());
}

void ProblemsPane::note() {
    if (m_feed.isCuring())
        m_note->setText(m_feed.cureProgress());
    else if (!m_feed.isKnown())
        m_note->setText(Text::tr("Установка проверяется…"));
    else if (m_feed.errors() + m_feed.warnings() == 0)
        m_note->setText(Text::tr("Проблем нет."));
    else
        m_note->setText(Text::tr("%1Ошибок: %2, замечаний: %3")
                            .arg(m_feed.model().rowCount() == 0 ? Text::tr("Не показано ни одной. ")
                                                                : QString())
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
    if (!m_cure->isEnabled())
        return;
    std::vector<checks::Finding> findings;
    forEachChosen([&findings](const ProblemRow& row) {
        if (!row.cure.isEmpty())
            findings.push_back(row.finding);
        return true;
    });
    m_cured = findings;
    m_feed.cure(std::move(findings));
}

void ProblemsPane::showUses() {
    const ProblemRow* row = rowAt(m_view->currentIndex());
    if (!row || row->finding.key.empty())
        return;
    const QString table = QLatin1String(row->finding.table->name);
    if (!usesEntry(table).isEmpty())
        emit usesRequested(table, QString::fromStdString(row->finding.key));
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
    add(m_show, QKeySequence(Qt::Key_Enter), &ProblemsPane::showCurrent);
    add(m_cure, QKeySequence(int(Qt::CTRL) + Qt::Key_Enter), &ProblemsPane::cureSelected);
    const QString table = QLatin1String(row->finding.table->name);
    if (const QString uses = usesEntry(table); !uses.isEmpty() && !row->finding.key.empty()) {
        QAction* action = menu.addAction(uses);
        action->setShortcut(keys::sequences(*keys::command(QLatin1String(keys::uses))).first());
        connect(action, &QAction::triggered, this, &ProblemsPane::showUses, Qt::QueuedConnection);
    }
    menu.exec(m_view->viewport()->mapToGlobal(point));
}

} // namespace orvo::app
