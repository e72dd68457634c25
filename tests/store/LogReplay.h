// LogReplay.h: the change log carried out, for comparison with the tables. Whatever happened to a
// store, the two must be alike.
#ifndef ORVO_TESTS_STORE_LOGREPLAY_H
#define ORVO_TESTS_STORE_LOGREPLAY_H

#include "platform/store/Maintenance.h"

#include <QString>
#include <QStringList>

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo::store::test {

/// Begins as a new store does: with nothing, before the first change. The operations give what does
/// not fit in words, the first of it only; nothing if all does.
class LogReplay {
public:
    /// The next change. It must be later than those before, insert no record that is there, update
    /// and delete none that is missing, and know the values before it.
    QString apply(const Change& change);
    /// All changes since the last one applied.
    QStringList follow(Store& store);
    /// What the tables hold otherwise than the changes have made it. Nobody may write meanwhile.
    /// Contents are compared without their bytes, which the log does not hold.
    QStringList compare(MaintainedStore& store) const;
    /// Both.
    QStringList check(MaintainedStore& store);

    int64_t position() const { return m_position; }
    size_t changes() const { return m_changes; }

private:
    friend class StoreSnapshot;
    using Row = std::vector<Value>;                    ///< by the numbers of the fields
    using Rows = std::unordered_map<std::string, Row>; ///< by folded key
    using Tables = std::map<std::string, Rows>;
    Tables m_tables;
    int64_t m_position = 0;
    size_t m_changes = 0;
};

/// What a store is not, compared with its log carried out from the first change on. The log must
/// not have been pruned.
QStringList replayDifferences(MaintainedStore& store);
/// The same of the store behind a URL.
QStringList replayDifferences(const std::string& url);
/// The same of all that the history tells, whatever a reader may still ask for: a restored store
/// has the changes of its backup, and no reader gets them.
QStringList historyDifferences(MaintainedStore& store);

} // namespace orvo::store::test

#endif
