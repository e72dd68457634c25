// FocusMark.h: shows which list, tree or text has the keyboard, or which of the large buttons: a
// frame around it.
#ifndef ORVO_APPS_CLIENT_FOCUSMARK_H
#define ORVO_APPS_CLIENT_FOCUSMARK_H

#include <QPointer>
#include <QWidget>

namespace orvo::app {

/// The selected row has one colour with and without the focus, so the frame alone tells of it.
/// Lives as a child of the part that has the focus, and is made again when it goes with that.
class FocusMark : public QWidget {
public:
    /// Follows the focus of the application from now on; to be called once.
    static void follow();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit FocusMark(QWidget* part);
};

} // namespace orvo::app

#endif
