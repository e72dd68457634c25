// MirrorWorker.h: the thread in which the file area is compared and copied. However many files
// there are, and however slow the server, the window does not wait for it.
//
// Invariants; 1 and 2 are asserted in debug builds:
// 1. There is a store while a pass runs; it is opened and closed between passes only.
// 2. Answered is what was asked for, and nothing later.
// 3. What was asked for since the pass that began last waits in one place; a pass that fails puts
//    what it was to do back there.
// 4. A file is in the manifest only after all of it was on the disk.
#ifndef ORVO_APPS_CLIENT_MIRRORWORKER_H
#define ORVO_APPS_CLIENT_MIRRORWORKER_H

#include "apps/client/MirrorChanges.h"
#include "apps/client/MirrorDirectory.h"
#include "apps/client/MirrorManifest.h"
#include "apps/client/MirrorPaths.h"
#include "platform/store/Store.h"
#include "platform/store/WaitPolicy.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace orvo::app {

/// Opens a store of its own for whoever calls it, in any thread. Null, with the reason, on failure.
using StoreOpener = std::function<std::unique_ptr<store::Store>(store::Status* status)>;

/// What of the file area is copied. An operator's desktop paints its icons from their files and
/// needs no other: those that an operator opens come from the store one by one.
enum class MirrorExtent { All, Icons };

/// When things are done that are not done at once.
struct MirrorPace {
    using Milliseconds = std::chrono::milliseconds;
    Milliseconds retry{10000};            ///< after a failure
    Milliseconds close{60000};            ///< of the store, when there is nothing to do
    Milliseconds firstProgressAfter{500}; ///< the first report of progress
    Milliseconds progressInterval{200};   ///< between the following ones
    /// A long copy shows its files, notes what it has, and turns to what has changed meanwhile.
    Milliseconds stage{3000};
};

class MirrorWorker : public QObject, private store::WaitPolicy {
    Q_OBJECT
public:
    /// `directory` is open; `workDir` ends in a separator. The store is opened when there is
    /// something to do, and closed when there has been nothing for a while.
    MirrorWorker(StoreOpener open, MirrorDirectory directory, const QString& workDir,
                 MirrorExtent extent, const MirrorPace& pace = {});
    /// Ends the work between two files, waiting for no server. What was copied is kept in mind.
    ~MirrorWorker() override;

    /// Asks for a look at what has changed, after `milliseconds` or as soon as the present one
    /// ends.
    void ask(uint64_t number, int milliseconds, const MirrorChanges& changes);
    /// While the store does not answer nothing is asked of it.
    void setConnected(bool up);
    uint64_t comparisons() const { return m_listing; }

signals:
    // Emitted in the thread of this object.

    /// Everything asked for up to that number is done, or has failed and will be tried again.
    void answered(quint64 number);
    void problem(const QString& text);
    /// Files have changed.
    void updated();
    /// A copy that takes its time: so many of so many files.
    void progress(int done, int all);

private:
    using Clock = std::chrono::steady_clock;
    struct Wanted {
        std::string folder; ///< as the store has it
        std::string name;
    };
    enum class End { Done, Failed, Restart };

    bool keepWaiting() override { return !m_stop && m_up; }
    void run();
    bool openStore();
    End pass(uint64_t number, MirrorChanges& changes);
    End copy(uint64_t number, const std::vector<Wanted>& queue, bool mayBreakOff, bool changed);
    /// Compares the whole area, as far as it is copied.
    bool list(Recopy recopy, std::vector<Wanted>* queue);
    store::Status
    listIcons(const std::function<void(const std::string&, const store::StoredFile&)>& each);
    /// Whether the files of that folder are copied.
    bool isCopied(const std::string& folder) const;
    /// Asks the store of what kind the named records are: a folder of files makes the whole area of
    /// interest, any other folder nothing.
    store::Status resolve(MirrorChanges* changes);
    /// Compares the files of these resources alone, unless the log cannot tell where they were.
    store::Status look(MirrorChanges* changes, std::vector<Wanted>* queue, bool* changed);
    store::Status learnFormerPlaces(MirrorChanges* changes);
    store::Status lookAt(const std::string& folder, const std::string& name, bool copy,
                         std::vector<Wanted>* queue, bool* changed);
    /// Whether file and folder have plain names; if not it is told.
    bool hasPlace(const std::string& folder, const std::string& name);
    void consider(const std::string& folder, const store::StoredFile& file, Recopy recopy,
                  std::vector<Wanted>* queue);
    bool removeStale();
    bool remove(const std::string& path);
    /// False if the store does not answer.
    bool fetch(const Wanted& wanted);
    void tell(const QString& text);
    void writeManifest();
    /// Emits in the thread of this object.
    template <class Signal>
    void post(Signal signal);

    const StoreOpener m_open;
    MirrorDirectory m_directory; ///< the thread's alone
    const QString m_workDir;
    const MirrorExtent m_extent;
    const MirrorPace m_pace;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_up = true;
    std::atomic<uint64_t> m_asked = 0;
    std::atomic<uint64_t> m_listing = 0; ///< number of the last comparison of the whole area

    std::mutex m_mutex; ///< over these
    std::condition_variable m_wake;
    Clock::time_point m_due{}; ///< of the comparison asked for
    MirrorChanges m_changes;   ///< since the pass that began last

    // The thread's alone.
    std::unique_ptr<store::Store> m_store;
    MirrorManifest m_manifest;   ///< named by m_listing
    MirrorPaths m_folders;       ///< as of the last listing: a change of one makes a new listing
    Clock::time_point m_begun{}; ///< of the present pass
    QSet<QString> m_told;
    bool m_full = false; ///< the disk took not all of what the comparison found

    std::thread m_thread; ///< last: it begins when everything else is there
};

} // namespace orvo::app

#endif
