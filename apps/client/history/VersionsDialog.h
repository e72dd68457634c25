// VersionsDialog.h: the kept versions of the files of a form or of a file: to be looked at, saved
// elsewhere, or put back.
#ifndef ORVO_APPS_CLIENT_HISTORY_VERSIONSDIALOG_H
#define ORVO_APPS_CLIENT_HISTORY_VERSIONSDIALOG_H

#include "apps/client/StoreThread.h"
#include "history/People.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace orvo::app {

class VersionsDialog : public QDialog {
    Q_OBJECT
public:
    /// `resource`: key of the form or file. The thread outlives the dialog. `mayWrite` false:
    /// nothing is put back.
    VersionsDialog(StoreThread& thread, const QString& resource, bool mayWrite, QWidget* parent);

    /// Saves the bytes of the current version below its name in a folder of the disk. No file is
    /// replaced, and none is written elsewhere, whatever the name is.
    void extractInto(const QString& folder);

signals:
    /// What the user should read; the numbers are those of COrvoCliMod::LogFile.
    void told(int level, const QString& text);
    void returned();

private:
    /// Reads the list; `said` is what the note says then.
    void load(const QString& said = {});
    void showVersions(const std::vector<store::KeptVersion>& versions);
    void openVersion();
    void extract();
    void putBack();
    const store::KeptVersion* current() const;
    /// Below the list, in place of what stood there.
    void note(const QString& text);

    StoreThread& m_thread;
    const QString m_resource;
    const bool m_mayWrite;
    std::vector<store::KeptVersion> m_versions;
    int64_t m_seen = 0; ///< the log had this newest change when they were read
    history::PersonNames m_names;
    QTreeWidget* m_list; // these: children of the dialog
    QLabel* m_note;
    QPushButton* m_open;
    QPushButton* m_extract;
    QPushButton* m_return;
};

} // namespace orvo::app

#endif
