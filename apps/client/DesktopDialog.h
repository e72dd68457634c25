// DesktopDialog.h: asks which desktop is to be shown.
#ifndef ORVO_APPS_CLIENT_DESKTOPDIALOG_H
#define ORVO_APPS_CLIENT_DESKTOPDIALOG_H

#include "platform/store/Store.h"

#include <QDialog>

class QDialogButtonBox;
class QLineEdit;
class QListWidget;

namespace orvo::app {

class DesktopDialog : public QDialog {
    Q_OBJECT
public:
    explicit DesktopDialog(QWidget* parent);

    /// Lists the desktops of the store, "folder / desktop", in order. The one that `current` names
    /// by its key is chosen at first. False, with one line in `error`, if they cannot be read.
    bool fill(store::Store& store, const QString& current, QString* error);

signals:
    void chosen(const QString& key);

private:
    void filter(const QString& text);
    void take();

    QLineEdit* m_search; // these: children
    QListWidget* m_list;
    QDialogButtonBox* m_buttons;
};

} // namespace orvo::app

#endif
