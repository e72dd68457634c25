#include "models/TreeSearch.h"

#include "frame/Contrast.h"
#include "frame/Keys.h"
#include "models/TreeSearchBar.h"

#include <QShortcut>
#include <QTreeView>

#include <algorithm>
#include <functional>

namespace orvo {

bool TreeSearch::showFirst() {
    const int32_t first = livingHit(0, 1);
    if (!isHit(first))
        return false;
    show(first);
    m_position = first;
    return true;
}

bool TreeSearch::step(int by) {
    m_position = livingHit(m_position + by, by);
    if (!isHit(m_position))
        return false;
    show(m_position);
    return true;
}

bool TreeSearch::mayStep(int by) const {
    return isHit(livingHit(m_position + by, by));
}

int32_t TreeSearch::livingHit(int32_t from, int by) const {
    int32_t number = std::clamp(from, -1, m_hits.count());
    while (isHit(number) && !m_hits.hit(number).isValid())
        number += by;
    return number;
}

void TreeSearch::show(int32_t number) {
    const QModelIndex row = m_hits.hit(number);
    m_view.scrollTo(row);
    m_view.setCurrentIndex(row);
}

void onSearchKeys(QWidget& window, TreeSearchBar& bar) {
    const auto add = [&](const char* id, const std::function<void()>& act) {
        for (const QKeySequence& keys : keys::sequences(*keys::command(QLatin1String(id)))) {
            auto* shortcut = new QShortcut(keys, &window); // the window's child
            shortcut->setContext(Qt::WidgetWithChildrenShortcut);
            QObject::connect(shortcut, &QShortcut::activated, &bar, act);
        }
    };
    add(keys::find, [&bar] { bar.open(); });
    add(keys::nextHit, [&bar] { bar.step(1); });
    add(keys::previousHit, [&bar] { bar.step(-1); });
    add(keys::searchBy, [&bar] { bar.searchByNext(); });
}

QPalette searchColours(QPalette usual, bool found) {
    if (!found) {
        const QColor red(QLatin1String("#DC143C"));
        usual.setColor(QPalette::Text,
                       isDark(usual) ? readable(red, usual.color(QPalette::Base)) : red);
    }
    return usual;
}

} // namespace orvo
