// Look.h: style, colours and translations of the whole program.
#ifndef ORVO_APPS_CLIENT_LOOK_H
#define ORVO_APPS_CLIENT_LOOK_H

namespace orvo::app {

/// To be called once, after the QApplication is made and before the first window.
void applyLook();

} // namespace orvo::app

#endif
