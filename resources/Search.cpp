// The search bar: finds rows while the user types, and steps through what was found. No list of
// results, and no way around from the last hit to the first.
#include "frame/Contrast.h"
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "resources/Columns.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

using orvo::resources::ResColumn;

namespace {

/// What the entries of the combo box search.
constexpr int searchColumns[] = {ResColumn::Caption, ResColumn::Name};

} // namespace

void OrvoResources::on_search_textChanged(const QString& text) {
    m_btnSearchUp->setEnabled(false);
    m_btnSearchDown->setEnabled(false);
    if (!text.isEmpty() && m_searchHits) {
        const int entry = m_cmbSearch->currentIndex();
        if (entry == 0 || entry == 1)
            m_searchHits->find(searchColumns[entry], text);
        orvo::TreeSearch search = treeSearch();
        m_btnSearchDown->setEnabled(search.showFirst() && search.mayStep(1));
    }
    colourSearch();
}

/// The choice is white on a light window; on a dark one the letters in it would be light, too.
void OrvoResources::colourSearchChoice() {
    m_cmbSearch->setStyleSheet(orvo::isDark(palette())
                                   ? QString()
                                   : QStringLiteral("QComboBox { background-color: white }"));
}

void OrvoResources::colourSearch() {
    const bool found = m_edSearch->text().isEmpty() || !m_searchHits || treeSearch().hasAny();
    m_edSearch->setPalette(orvo::searchColours(palette(), found));
}

void OrvoResources::changeEvent(QEvent* event) {
    EditorWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_cmbSearch) {
        colourSearchChoice();
        colourSearch();
    }
}

void OrvoResources::on_searchCmb_indexChanged(int) {
    on_search_textChanged(m_edSearch->text());
}

void OrvoResources::on_search_down_pressed() {
    stepSearch(1, m_btnSearchDown, m_btnSearchUp);
}

void OrvoResources::on_search_up_pressed() {
    stepSearch(-1, m_btnSearchUp, m_btnSearchDown);
}

void OrvoResources::stepSearch(int step, QToolButton* forth, QToolButton* back) {
    if (!m_searchHits)
        return;
    orvo::TreeSearch search = treeSearch();
    if (!search.step(step))
        return;
    if (!search.mayStep(step))
        forth->setEnabled(false);
    back->setEnabled(true);
}

orvo::TreeSearch OrvoResources::treeSearch() {
    return {*m_ui->tvRes, *m_searchHits, m_searchPos};
}

void OrvoResources::openSearch() {
    if (!m_edSearch->isVisible() && m_treeSearch) {
        m_treeSearch->open();
        return;
    }
    m_edSearch->setFocus(Qt::ShortcutFocusReason);
    m_edSearch->selectAll();
}

/// By the same keys as the search bars of other trees.
bool OrvoResources::searchKey(const QKeyEvent& event) {
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

bool OrvoResources::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_edSearch && event->type() == QEvent::KeyPress &&
        searchKey(*static_cast<QKeyEvent*>(event)))
        return true;
    return EditorWindow::eventFilter(watched, event);
}

void OrvoResources::searchByNext() {
    if (!m_edSearch->isVisible() && m_treeSearch)
        m_treeSearch->searchByNext();
    else
        m_cmbSearch->setCurrentIndex((m_cmbSearch->currentIndex() + 1) % m_cmbSearch->count());
}

void OrvoResources::stepToHit(int by) {
    if (!m_edSearch->isVisible() && m_treeSearch)
        m_treeSearch->step(by);
    else if (m_edSearch->text().isEmpty())
        openSearch();
    else if (!m_searchHits || !treeSearch().mayStep(by))
        return;
    else if (by > 0)
        on_search_down_pressed();
    else
        on_search_up_pressed();
}
