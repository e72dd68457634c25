// RevertDialog.h: shows what taking actions back would write and what would be left, and asks what
// only the user can know: where to put what has no folder any more, how to call what has lost its
// name to another, and whether to delete what others have built on.
#ifndef ORVO_APPS_CLIENT_HISTORY_REVERTDIALOG_H
#define ORVO_APPS_CLIENT_HISTORY_REVERTDIALOG_H

#include "apps/client/history/RevertPlan.h"

#include <QDialog>

#include <map>

class QCheckBox;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTreeWidget;
class QVBoxLayout;

namespace orvo::app {

class RevertDialog : public QDialog {
    Q_OBJECT
public:
    /// `note`: why it is shown, if that is not plain; may be empty.
    RevertDialog(const QString& title, const QString& note, QWidget* parent);

    /// Shows a plan that was made with choices(). What was asked once stays to be chosen.
    void setPlan(const RevertPlan& plan);
    /// As the user has decided by now.
    history::Choices choices() const;

signals:
    /// The plan on show is outdated.
    void choicesChanged();

private:
    void addPlace(const RevertPlan::Place& place);
    void changed();
    void showWrites(const RevertPlan& plan);

    QLabel* m_head; // these: children of the dialog
    QTreeWidget* m_writes;
    QLabel* m_leftHead;
    QListWidget* m_left;
    QVBoxLayout* m_questions;
    QCheckBox* m_otherNames;
    QCheckBox* m_others;
    QPushButton* m_ok;
    std::map<std::string, QComboBox*> m_places; ///< by the folded key of the missing folder
};

} // namespace orvo::app

#endif
