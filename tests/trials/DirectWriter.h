// DirectWriter.h: sessions that write past the program, in every way that a database offers.
#ifndef ORVO_TESTS_TRIALS_DIRECTWRITER_H
#define ORVO_TESTS_TRIALS_DIRECTWRITER_H

#include "tests/store/StoreKinds.h"

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace orvo::test {

/// A session of the database's own.
class DirectSession {
public:
    virtual ~DirectSession() = default;
    /// Null, with a warning, if there is none to be had. The URL is that of a store.
    static std::unique_ptr<DirectSession> open(const std::string& url);

    enum Result { Done, Busy, Failed }; ///< Busy: another was in the way; once more may help
    virtual Result run(const std::string& sql) = 0;
    /// Records of Menu in the way that the database has for many at once.
    virtual Result load(const std::vector<std::string>& columns,
                        const std::vector<std::vector<std::string>>& rows) = 0;
    /// A statement that adds such a record or changes the one there, whichever is right.
    virtual std::string merge(const std::vector<std::string>& columns,
                              const std::vector<std::string>& row) const = 0;
    virtual bool isPostgres() const = 0;
};

/// Writes the records "wN-0", "wN-1", ... of writer N into Menu, some of them at a time in one
/// transaction, which also raises order_ of the record "counter" by 1. A transaction that another
/// was in the way of is made again.
class DirectWriter {
public:
    enum Way { Statements, Savepoints, Load, Merge, Definitions, Truncation, ways };
    DirectWriter(const std::string& url, int writer, int writers, Way way);
    bool write(int count);

private:
    using Row = std::vector<std::string>; ///< of columns(), as SQL literals
    static const std::vector<std::string>& columns();
    Row row(int number);
    DirectSession::Result transaction(int first, int end);
    DirectSession::Result records(int first, int end);
    DirectSession::Result definitions();
    DirectSession::Result run(const std::string& sql) { return m_session->run(sql); }
    unsigned below(unsigned most) { return unsigned(m_random() % most); }

    std::unique_ptr<DirectSession> m_session;
    const int m_writer, m_writers;
    const Way m_way;
    std::minstd_rand m_random;
    int m_extra = 0; ///< of records in MenuFileExt
};

} // namespace orvo::test

#endif
