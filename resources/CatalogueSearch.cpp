#include "resources/CatalogueSearch.h"

#include "frame/Contrast.h"
#include "resources/Columns.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>
#include <QTreeView>

#include <cassert>

namespace orvo::resources {
namespace {

/// What the entries of the combo box search.
constexpr int searchColumns[] = {ResColumn::Caption, ResColumn::Name};

} // namespace

void CatalogueSearch::setWidgets(const Widgets& widgets) {
    m_widgets = widgets;
    colourChoice();
    m_window.installEventFilter(this);
}

void CatalogueSearch::setTree(QTreeView& view, const ResTreeModel& tree) {
    assert(m_widgets.field && m_widgets.choice);
    m_view = &view;
    m_hits = std::make_unique<RowSearch>(tree, ResColumn::KeyLink);
}

void CatalogueSearch::addBar(const ResTreeModel& tree) {
    assert(m_view && m_view->model() == &tree);
    m_bar = new TreeSearchBar(m_view, tree, ResColumn::KeyLink,
                              {{ResColumn::Caption, m_widgets.choice->itemText(0)},
                               {ResColumn::Name, m_widgets.choice->itemText(1)}});
}

bool CatalogueSearch::isInBar() const {
    return !m_widgets.field->isVisible() && m_bar;
}

bool CatalogueSearch::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &m_window && event->type() == QEvent::PaletteChange) {
        colourChoice();
        colour();
    }
    return watched == m_widgets.field && event->type() == QEvent::KeyPress &&
           takeKey(*static_cast<QKeyEvent*>(event));
}

void CatalogueSearch::find(const QString& text) {
    m_widgets.up->setEnabled(false);
    m_widgets.down->setEnabled(false);
    if (!text.isEmpty() && m_hits) {
        const int entry = m_widgets.choice->currentIndex();
        if (entry == 0 || entry == 1)
            m_hits->find(searchColumns[entry], text);
        TreeSearch hit = search();
        m_widgets.down->setEnabled(hit.showFirst() && hit.mayStep(1));
    }
    colour();
}

/// The choice is white on a light window; on a dark one the letters in it would be light, too.
void CatalogueSearch::colourChoice() {
    m_widgets.choice->setStyleSheet(isDark(m_window.palette())
                                        ? QString()
                                        : QStringLiteral("QComboBox { background-color: white }"));
}

void CatalogueSearch::colour() {
    const bool found = m_widgets.field->text().isEmpty() || !m_hits || search().hasAny();
    m_widgets.field->setPalette(searchColours(m_window.palette(), found));
}

void CatalogueSearch::step(int by) {
    QToolButton* forth = by > 0 ? m_widgets.down : m_widgets.up;
    QToolButton* back = by > 0 ? m_widgets.up : m_widgets.down;
    if (!m_hits)
        return;
    TreeSearch hit = search();
    if (!hit.step(by))
        return;
    if (!hit.mayStep(by))
        forth->setEnabled(false);
    back->setEnabled(true);
}

TreeSearch CatalogueSearch::search() {
    return {*m_view, *m_hits, m_position};
}

void CatalogueSearch::open() {
    if (isInBar()) {
        m_bar->open();
        return;
    }
    m_widgets.field->setFocus(Qt::ShortcutFocusReason);
    m_widgets.field->selectAll();
}

/// By the same keys as the search bars of other trees.
bool CatalogueSearch::takeKey(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        stepToHit(event.modifiers() & Qt::ShiftModifier ? -1 : 1);
        return true;
    case Qt::Key_Down:
    case Qt::Key_Up:
        stepToHit(event.key() == Qt::Key_Down ? 1 : -1);
        return true;
    default:
        return false;
    }
}

void CatalogueSearch::searchByNext() {
    if (isInBar())
        m_bar->searchByNext();
    else
        m_widgets.choice->setCurrentIndex((m_widgets.choice->currentIndex() + 1) %
                                          m_widgets.choice->count());
}

void CatalogueSearch::stepToHit(int by) {
    if (isInBar())
        m_bar->step(by);
    else if (m_widgets.field->text().isEmpty())
        open();
    else if (!m_hits || !search().mayStep(by))
        return;
    else
        step(by);
}

} // namespace orvo::resources
