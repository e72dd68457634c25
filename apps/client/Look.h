// Look.h: style, colours and translations of the whole program.
#ifndef ORVO_APPS_CLIENT_LOOK_H
#define ORVO_APPS_CLIENT_LOOK_H

#include <QString>

namespace orvo::app {

/// A text as a tooltip that shows it letter by letter, whatever it looks like: what servers say may
/// hold what reads as markup. With `hint` a line of our own below it. Empty for two empty texts.
QString plainToolTip(const QString& text, const QString& hint = {});

/// To be called once, after the QApplication is made and before the first window.
void applyLook();

} // namespace orvo::app

#endif
