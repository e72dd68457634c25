// WidgetReport.h: what stands in the windows of this program, as JSON. Reads only. The form of the
// answers is told in Inspector.h.
#ifndef ORVO_APPS_CLIENT_WIDGETREPORT_H
#define ORVO_APPS_CLIENT_WIDGETREPORT_H

#include <QJsonObject>

namespace orvo::app::report {

/// {"windows": [{class, name, title, popup, active, rect}], "focus": {class, name, rect}}
QJsonObject windows();
/// {"columns": [title], "rows": [{depth, cells: [text], expanded, current, selected, rects}],
/// "rect", "focus"}. `rects` is there for rows on the screen: one per column, null for a hidden
/// one. Of several trees of that name the visible one. Empty if there is none.
QJsonObject tree(const QString& name);
/// {"controls": [{class, name, text, enabled, visible, checked, rect}]}: actions and buttons of
/// that name or text, labels of that name; one entry per place at which the control is shown, or
/// one without `rect` for a control that is nowhere on the screen.
QJsonObject controls(const QString& nameOrText);

} // namespace orvo::app::report

#endif
