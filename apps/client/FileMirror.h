// FileMirror.h: keeps "files/" below the work directory the same as the store's file area.
#ifndef ORVO_APPS_CLIENT_FILEMIRROR_H
#define ORVO_APPS_CLIENT_FILEMIRROR_H

#include "apps/client/MirrorDirectory.h"
#include "platform/store/Store.h"

#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <deque>
#include <map>

namespace orvo::app {

/// Files that it wrote itself, listed in "mirror.list" beside "files/", are removed when the store
/// no longer has them; whatever else lies there is left alone. A folder or file whose name is no
/// plain file name is passed over and named in `problem`, once.
class FileMirror : public QObject {
    Q_OBJECT
public:
    /// The store outlives the mirror. `workDir` exists and ends in a separator.
    FileMirror(store::Store& store, const QString& workDir, QObject* parent = nullptr);
    ~FileMirror() override;

    /// Begins with a full comparison. False, with the reason in `error`, if the directory cannot be
    /// used; nothing is mirrored then.
    bool start(QString* error);
    /// A change of the store: looks again if it can concern the file area.
    void changed(const store::Change& change);
    /// Compares anew, e.g. after the change log had a gap.
    void refresh();
    /// While the store does not answer nothing is asked of it; afterwards all is compared anew.
    void setConnected(bool up);
    bool isIdle() const { return m_idle; }

signals:
    void problem(const QString& text);
    /// Files below "files/" have changed.
    void updated();

private:
    struct Wanted {
        PathParts parts;
        std::string path; ///< of the folder, as the store has it
        std::string name;
        double time;
    };
    void compare();
    void step();
    void finish();
    void removeStale(const std::map<std::string, Wanted>& wanted);
    /// False if the store does not answer.
    bool fetch(const Wanted& wanted);
    void tryLater();
    void tell(const QString& text);
    void readManifest();
    void writeManifest();

    store::Store& m_store;
    QString m_workDir;
    MirrorDirectory m_directory;
    QTimer m_compare;
    QTimer m_step;
    std::deque<Wanted> m_queue;
    std::map<std::string, PathParts> m_manifest; ///< relative path: its parts
    QSet<QString> m_told;
    bool m_contentChanged = false; ///< since the last comparison
    bool m_running = false;
    bool m_connected = true;
    bool m_idle = true;
    bool m_touched = false;
};

} // namespace orvo::app

#endif
