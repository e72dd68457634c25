// SqlitePlace.h: whether the files of an open store are still the ones at its path.
//
// Nothing keeps anybody from removing, moving or overwriting them under a program that has them
// open. That program would write into a file without a name, or mix two stores into one.
#ifndef ORVO_PLATFORM_STORE_SQLITEPLACE_H
#define ORVO_PLATFORM_STORE_SQLITEPLACE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace orvo::store::sqlite {

class Connection;

///  1. m_file, m_log and m_index are the files that the connection has open; they never change.
///  2. Once m_last is JournalGone or Overwritten it stays so: what the connection holds is not what
///     is at the path, and nothing that happens there makes it so again.
///  3. m_isOurs stays true once it is: a sound log may stand for what is damaged in the file, but
///     then it has done so from the beginning.
///  4. m_newest never falls: a lower number in the file is another store's, or an older copy.
///  5. m_known tells what the file held while nothing was being carried over from the log into it,
///     and how far that had come then. Until more is carried over the file stays so: nothing else
///     that belongs there changes it.
class Place {
public:
    enum State {
        There,
        Gone,        ///< no file at the path any more
        Replaced,    ///< another file is there
        JournalGone, ///< its log, or the index of that, is not the one of then
        Overwritten, ///< the same file, with the content of another
    };

    /// What is at the path now. A connection has read from it, so that all files are there.
    /// It outlives the place.
    Place(std::string path, const Connection& connection);

    /// Cheap: for every write. What was Gone or Replaced may come back, the rest stays as found.
    State look();
    /// The state in words, for the end of a sentence.
    static std::string words(State state);

    /// Whether nobody can have opened the store with another log than the one of then.
    bool hasNoOtherLog() const;
    /// Once the place has been Replaced and before the other file is opened: puts the log of the
    /// former one, if it is still there, under another name, so that it is not taken for the new
    /// file's. 0 or errno.
    int putLogAside() const;

private:
    struct File {
        dev_t device = 0;
        ino_t number = 0;
        bool operator==(const File&) const = default;
    };
    /// What every write to a file changes.
    struct Stamp {
        off_t size = 0;
        int64_t seconds = 0, nanoseconds = 0;
        bool operator==(const Stamp&) const = default;
    };
    /// How far the present log has been carried over into the file. After a failure, and in the
    /// midst of it, more has been begun than is done.
    struct Carried {
        uint32_t salts[2] = {}; ///< name the log: another one begins when all is carried over
        uint32_t done = 0, begun = 0;
        bool operator==(const Carried&) const = default;
    };
    /// What tells the content of a file from another one.
    struct Content {
        off_t size = 0;
        std::array<unsigned char, 100> header{}; ///< SQLite's own, with a counter of its changes
        std::optional<int64_t> newest;           ///< the highest number of a change
        bool operator==(const Content&) const = default;
    };
    struct Known {
        Carried carried;
        Content content;
    };
    static std::optional<File> fileAt(const std::string& path, Stamp* stamp = nullptr);
    /// Nothing in the midst of a checkpoint, after one that failed, and where it cannot be read.
    std::optional<Carried> carriedAtRest() const;
    /// `rest` was found before the file's stamp.
    bool isOverwritten(const std::optional<Carried>& rest, const Stamp& stamp);
    /// Whether the file by itself, without log, bears the mark of a store; nothing if nobody can
    /// tell now.
    static std::optional<bool> isOurs(Connection& file);

    const std::string m_path;
    const Connection& m_connection;
    std::optional<Known> m_known;
    std::string m_identity; ///< as last seen in the file itself
    Stamp m_stamp;
    std::optional<File> m_file, m_log, m_index;
    bool m_isOurs = false; ///< the file by itself, without log, was once seen to be a store
    int64_t m_newest = 0;  ///< the highest number of a change seen in the file itself, without log
    State m_last = There;
};

} // namespace orvo::store::sqlite

#endif
