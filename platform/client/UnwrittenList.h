// UnwrittenList.h: the writes of a session that are not in the store: refused, failed, lost with a
// server, or met by what another wrote. Nothing typed goes without a word: an entry stays until it
// is repeated or given up, also over the end of the process (UnwrittenFiles.h).
//
// Invariants; 4 and 5 are asserted in debug builds after each change:
//  1. Entries stand in the order in which their calls were made; repeatAll keeps it.
//  2. A call that needs what an entry would have written (its record, or the folder above it) is
//     not made before that entry is: it waits behind it as an entry of its own.
//  3. An entry leaves the list only by success, by giveUp, by takeTheirs, because the store turned
//     out to have it, or because a later call of the user wrote the same fields.
//  4. Each entry has an id, by which it is found.
//  5. The changes that an entry knows for its module's own rise, without overlaps.
#ifndef ORVO_PLATFORM_CLIENT_UNWRITTENLIST_H
#define ORVO_PLATFORM_CLIENT_UNWRITTENLIST_H

#include "platform/client/WriteRequest.h"
#include "platform/client/WriteWords.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace orvo::client {

class UnwrittenFiles;

/// What another wrote into the field of an entry.
struct Theirs {
    std::string key;
    int field = 0;
    QString value;
    QString login;
    QDateTime time;
};

struct UnwrittenEntry {
    enum State {
        Refused = 1,  ///< the store refused it, or it failed: nothing of it was written
        Unknown = 2,  ///< the connection was lost at the commit; asked for when it is back
        Gone = 3,     ///< the record is not in the store; repeating makes it again
        Conflict = 4, ///< another has changed the same fields; they have not been written
        Lost = 5,     ///< was written, but the store no longer has it
        Waiting = 6,  ///< needs an entry before it
    };
    QString id; ///< unique
    State state = Refused;
    WriteRequest request;
    QDateTime when;
    QString module; ///< where: name of the module
    WriteWords words;
    QString why;
    std::vector<Theirs> theirs; ///< Conflict
    int64_t seen = -1;          ///< the writer had seen the log up to here; -1: unknown
    /// Changes after `seen` that the same module made before this one. Not kept in files: after
    /// the end of the process they count as another's, and mine has to be chosen.
    std::vector<store::IdRange> own;
    store::Written written;       ///< Unknown, Lost
    std::string deletedRecord;    ///< Gone: values of the record before its deletion, as JSON
    std::string deletedParent;    ///< ...and of the folder that it was to be placed in,
    std::string deletedParentKey; ///< ...with its key
    std::string deletedParentTable;
};

/// Lives on the GUI thread.
class ORVOCLIENT_EXPORT UnwrittenList : public QObject {
    Q_OBJECT
public:
    /// The store outlives the list. Its calls are made on it.
    explicit UnwrittenList(store::Store& store, QObject* parent = nullptr);
    ~UnwrittenList() override;

    /// Keeps the entries in that directory from now on, and takes over what is left there by
    /// processes of this store and login that have ended. False, with one line in `error`, if
    /// nothing can be kept there: the list then lives in memory alone.
    bool keepIn(const QString& directory, QString* error);

    const std::vector<UnwrittenEntry>& entries() const { return m_entries; }
    const UnwrittenEntry* find(const QString& id) const;
    bool isEmpty() const { return m_entries.empty(); }
    /// One line for a question before closing: what is not written. Empty if nothing.
    QString summary() const;

    // For the session.
    /// The entry that has to be written before this request can be; null: none.
    const UnwrittenEntry* neededBy(const WriteRequest& request) const;
    /// Adds an entry; words are found if it has none. `canAsk`: the store answers.
    void add(UnwrittenEntry entry, bool canAsk);
    /// A call of the user succeeded: what earlier entries wanted of the same fields is outdated.
    void superseded(const WriteRequest& request);
    /// Takes the deletion of records that only entries know; what is left of the request then.
    WriteRequest withoutUnwritten(const WriteRequest& request);
    /// The changes that repeating made for that module since this was last asked.
    std::vector<store::IdRange> takeRepeated(const QString& module);

    /// Repeats an entry. Conflicts: mine is written over theirs. False if it is still in the list;
    /// `why` tells the reason again.
    bool repeat(const QString& id);
    /// All but conflicts, in order; the number that is left of them.
    int repeatAll();
    /// Removes an entry for good, and with it what waits for what it would have made.
    void giveUp(const QString& id);
    /// Puts another text in the place of mine.
    void setMine(const QString& id, const std::string& key, int field, const QString& text);
    /// The connection is back: asks what became of the unknown ones, and finds words.
    void connectionReturned();

signals:
    void changed();
    /// An entry was added.
    void added(const QString& id);
    /// These records of a module will not be written any more, and its rows may still show them:
    /// what to tell it (Corrections.h).
    void dropped(const QString& module, const std::vector<orvo::store::Change>& corrections);
    /// Something that the user should read: a repeated write succeeded or turned out to be saved.
    void told(const QString& text);
    /// The store was written: notifications wait.
    void written();

private:
    UnwrittenEntry* entry(const QString& id);
    void save(const UnwrittenEntry& entry);
    void saveRest();
    void remove(QString id);
    store::Status write(UnwrittenEntry& entry, store::UpdateGuard* guard, bool* unknown);
    store::Status restoreParent(UnwrittenEntry& entry, int depth);
    void free();
    void check() const;
    void tellDropped(const QString& module, const WriteRequest& request);

    store::Store& m_store;
    std::vector<UnwrittenEntry> m_entries;
    std::map<QString, std::vector<store::IdRange>> m_repeated; ///< by module
    std::unique_ptr<UnwrittenFiles> m_files;                   ///< null: in memory only
    std::set<QString> m_unsaved; ///< ids of the entries that the disk did not take,
    QTimer m_retry;              ///< which are tried again while there are any
    bool m_busy = false;
};

/// The conflicts of an update as entries, one for each record.
std::vector<UnwrittenEntry> conflictEntries(const store::TableDef& table,
                                            const store::UpdateGuard& guard, store::Store& store);
/// The updates of missing records as entries, one for each record.
std::vector<UnwrittenEntry> missingEntries(const WriteRequest& request,
                                           const store::UpdateGuard& guard);

} // namespace orvo::client

#endif
