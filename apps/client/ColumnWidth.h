// ColumnWidth.h: the width of a column before anything is in it.
#ifndef ORVO_APPS_CLIENT_COLUMNWIDTH_H
#define ORVO_APPS_CLIENT_COLUMNWIDTH_H

#include <QStyle>
#include <QTreeView>

#include <algorithm>

namespace orvo::app {

/// `usual` pixels, or what a text like `sample` needs if the letters are larger than usual.
inline int widthFor(const QTreeView& view, const QString& sample, int usual) {
    const int margin = view.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &view) + 1;
    return std::max(usual, view.fontMetrics().horizontalAdvance(sample) + 2 * margin);
}

} // namespace orvo::app

#endif
