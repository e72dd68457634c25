// FileMirror.h: keeps "files/" below the work directory the same as the store's file area.
#ifndef ORVO_APPS_CLIENT_FILEMIRROR_H
#define ORVO_APPS_CLIENT_FILEMIRROR_H

#include "apps/client/MirrorWorker.h"
#include "platform/store/Store.h"

#include <QObject>
#include <QString>

#include <memory>

namespace orvo::app {

/// Files that it wrote itself, listed in "mirror.list" beside "files/", are removed when the store
/// no longer has them; whatever else lies there is left alone. A folder or file whose name is no
/// plain file name is passed over and named in `problem`, once.
///
/// The work is done in a thread of its own; no call here waits for it but the destructor, for the
/// one file that is on its way.
class FileMirror : public QObject {
    Q_OBJECT
public:
    /// `workDir` exists and ends in a separator.
    FileMirror(StoreOpener open, const QString& workDir, const MirrorPace& pace = {},
               MirrorExtent extent = MirrorExtent::All, QObject* parent = nullptr);
    ~FileMirror() override;

    /// Begins with a full comparison. False, with the reason in `error`, if the directory cannot be
    /// used; nothing is mirrored then.
    bool start(QString* error);
    /// A change of the store: looks at the record's file if it has one, and at the whole area only
    /// after a change of a folder of files, or of many records at once.
    void changed(const store::Change& change);
    /// Compares everything again, e.g. after the change log had a gap.
    void refresh();
    /// While the store does not answer nothing is asked of it; afterwards all is compared again.
    void setConnected(bool up);
    /// Whether all that was asked for is done, or cannot be done now.
    bool isIdle() const;
    /// How often the whole area was compared. It takes the longer the more files there are.
    uint64_t comparisons() const { return m_worker ? m_worker->comparisons() : 0; }

signals:
    void problem(const QString& text);
    /// Files below "files/" have changed.
    void updated();
    /// A copy that takes its time: so many of so many files. 0 of 0 when it has ended.
    void progress(int done, int all);

private:
    void ask(int milliseconds, const MirrorChanges& changes);
    void finish(uint64_t number);

    const StoreOpener m_open;
    const QString m_workDir;
    const MirrorExtent m_extent;
    const MirrorPace m_pace;
    std::unique_ptr<MirrorWorker> m_worker; ///< null: not started
    uint64_t m_asked = 0;
    uint64_t m_answered = 0;
    bool m_connected = true;
    bool m_shown = false; ///< progress was told and its end was not
};

} // namespace orvo::app

#endif
