// ScreenshotRows.h: puts something worth seeing into the trees of a window, for a picture of it.
#ifndef ORVO_APPS_CLIENT_SCREENSHOTROWS_H
#define ORVO_APPS_CLIENT_SCREENSHOTROWS_H

class QWidget;

namespace orvo::app {

/// Chooses a row in each shown tree below `window`, from left to right, as a user would go about
/// it: each choice fills the tree to its right. In the first tree it is the first row without rows
/// below it that brings content into the next one; in the others the first such row that has an
/// icon, with some folders opened on the way. Trees in which a choice would open an editor are
/// left alone. Needs everything loaded; changes nothing but current rows and expansion.
void prepareScreenshot(QWidget& window);

} // namespace orvo::app

#endif
