// The search bar: finds rows while the user types, and steps through what was found. No list of
// results, and no way around from the last hit to the first.
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
    QPalette colours = palette();
    m_btnSearchUp->setEnabled(false);
    m_btnSearchDown->setEnabled(false);
    if (!text.isEmpty() && m_searchHits) {
        const int entry = m_cmbSearch->currentIndex();
        if (entry == 0 || entry == 1)
            m_searchHits->find(searchColumns[entry], text);
        const int32_t first = livingHit(0, 1);
        if (first == m_searchHits->count()) {
            colours.setColor(QPalette::Text, QColor(QLatin1String(nothingFound)));
        } else {
            showHit(first);
            m_searchPos = first;
            m_btnSearchDown->setEnabled(livingHit(first + 1, 1) < m_searchHits->count());
        }
    }
    m_edSearch->setPalette(colours);
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
