// The search bar: finds rows while the user types, and steps through what was found. No list of
// results, and no way around from the last hit to the first.
#include "frame/Contrast.h"
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "resources/Columns.h"

#include <QComboBox>
#include <QLineEdit>
#include <QToolButton>

#include <algorithm>

using orvo::resources::ResColumn;

namespace {

constexpr char nothingFound[] = "#DC143C";
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
        const int32_t first = livingHit(0, 1);
        if (first < m_searchHits->count()) {
            showHit(first);
            m_searchPos = first;
            m_btnSearchDown->setEnabled(livingHit(first + 1, 1) < m_searchHits->count());
        }
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
    QPalette colours = palette();
    if (!m_edSearch->text().isEmpty() && m_searchHits && livingHit(0, 1) == m_searchHits->count()) {
        const QColor red{QLatin1String(nothingFound)};
        colours.setColor(QPalette::Text, orvo::isDark(colours)
                                             ? orvo::readable(red, colours.color(QPalette::Base))
                                             : red);
    }
    m_edSearch->setPalette(colours);
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
    const auto isHit = [this](int32_t number) {
        return number >= 0 && number < m_searchHits->count();
    };
    m_searchPos = livingHit(m_searchPos + step, step);
    if (!isHit(m_searchPos))
        return;
    showHit(m_searchPos);
    if (!isHit(livingHit(m_searchPos + step, step)))
        forth->setEnabled(false);
    back->setEnabled(true);
}

void OrvoResources::showHit(int32_t number) {
    const QModelIndex row = m_searchHits->hit(number);
    m_ui->tvRes->scrollTo(row);
    m_ui->tvRes->setCurrentIndex(row);
}

int32_t OrvoResources::livingHit(int32_t from, int step) const {
    const int32_t count = m_searchHits->count();
    int32_t number = std::clamp(from, -1, count);
    while (number >= 0 && number < count && !m_searchHits->hit(number).isValid())
        number += step;
    return number;
}
