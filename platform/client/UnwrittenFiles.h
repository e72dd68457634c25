// UnwrittenFiles.h: entries of an UnwrittenList on disk, so that the end of the process in any way
// loses none.
//
// Below the given directory each process has one of its own, locked as long as it lives; a process
// takes over what it finds in unlocked ones. One file for each entry, replaced as a whole:
//
//     file   = "ORVOUNW1" sha256(32) entry
//     entry  = a CBOR map; numbers 1 to ... are the members of UnwrittenEntry
//
// Directories are 0700, files 0600. A file that belongs to somebody else, that others may write,
// whose digest does not fit, or whose request no table could take is left where it is and not read.
#ifndef ORVO_PLATFORM_CLIENT_UNWRITTENFILES_H
#define ORVO_PLATFORM_CLIENT_UNWRITTENFILES_H

#include "platform/client/UnwrittenList.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace orvo::client {

/// For the GUI thread. Everything but `open` needs an `open` that gave true.
class ORVOCLIENT_EXPORT UnwrittenFiles {
public:
    /// `owner` names store and login; entries of others are left alone.
    explicit UnwrittenFiles(QString owner) : m_owner(std::move(owner)) {}
    ~UnwrittenFiles();
    UnwrittenFiles(const UnwrittenFiles&) = delete;
    UnwrittenFiles& operator=(const UnwrittenFiles&) = delete;

    /// Makes and locks the process's own directory. False with a reason.
    bool open(const QString& directory, QString* error);
    /// Takes over the entries that ended processes left, in the order of their calls. What cannot
    /// be trusted is named in `problems`.
    std::vector<UnwrittenEntry> takeOver(QStringList* problems);
    bool save(const UnwrittenEntry& entry, QString* error);
    void remove(const QString& id);

private:
    QString pathOf(const QString& id) const;

    const QString m_owner;
    QString m_above; ///< holds the directories of all processes
    QString m_own;   ///< this process's directory
    int m_lock = -1; ///< descriptor of its lock file, owned; -1: not open
};

/// The bytes of a file, and back; false if they do not hold.
QByteArray packEntry(const UnwrittenEntry& entry, const QString& owner);
bool unpackEntry(const QByteArray& bytes, UnwrittenEntry* entry, QString* owner);

} // namespace orvo::client

#endif
