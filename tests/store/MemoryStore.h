// MemoryStore.h: a kind of database that holds everything in memory and can be made to fail. It is
// all that a third kind has to write, and shows that StoreCore needs nothing else of a database.
#ifndef ORVO_TESTS_STORE_MEMORYSTORE_H
#define ORVO_TESTS_STORE_MEMORYSTORE_H

#include "platform/store/StoreCore.h"

#include <map>
#include <string>
#include <vector>

namespace orvo::store::test {

class MemoryStore final : public StoreCore {
public:
    MemoryStore();

    /// The call of the database after so many more fails, once; -1: none.
    void failAfter(int calls) { m_failAfter = calls; }
    /// Whether that call was reached.
    bool hasFailed() const { return m_failed; }
    struct Content {
        std::map<std::string, std::map<std::string, Row>> tables; ///< rows by folded key
        std::map<std::string, std::string> bytes;                 ///< of contents, by folded key
        std::vector<Change> log;
        int64_t pruned = 0;
        /// Without regard to the values in the log, which only grows.
        bool operator==(const Content& other) const {
            return tables == other.tables && bytes == other.bytes &&
                   log.size() == other.log.size() && pruned == other.pruned;
        }
    };
    const Content& content() const { return m_content; }

    std::string displayName() const override { return "memory:"; }
    Status identity(std::string* identity) override;
    Status logPosition(int64_t* id) override;
    Status readLog(const LogCursor& cursor, int limit, std::vector<Change>* changes) override;
    Status pruneLog(int64_t id) override;
    int wakeFd() const override { return -1; }
    void takeWake() override {}
    bool changed() override { return true; }
    Status integrity(std::vector<std::string>* damages) override;
    /// No triggers write its log.
    Status remakeTriggers(std::vector<std::string>* differences) override {
        differences->clear();
        return {};
    }
    Status countChanges(int64_t group, std::vector<ChangeCount>* counts) override;
    Status logBefore(double time, int64_t* id, int64_t* count) override;
    bool livesIn(const std::string& /*file*/) const override { return false; }
    Status backup(const std::string& file, const Progress& progress) override;
    Status restore(const std::string& file, const Progress& progress) override;

protected:
    Status inRead(const Work& work) override;
    Status inWrite(const Work& work) override;
    Status fetchAll(const TableDef& table, MDArray* into) override;
    Status fetchMatching(const TableDef& table, const FieldDef& field, TextMatch match,
                         std::string_view value, MDArray* into) override;
    Status select(const TableDef& table, const std::vector<int>& fields,
                  const EachRow& each) override;
    Status selectWhere(const TableDef& table, const std::vector<int>& fields, int where,
                       const Value& value, const EachRow& each) override;
    Status selectInOrder(const TableDef& table,
                         const std::function<Status(const Row& row)>& each) override;
    Status selectNaming(const TableDef& table, int field, const std::vector<std::string>& keys,
                        const EachRow& each) override;
    Status selectKeys(const TableDef& table, const std::vector<int>& fields,
                      const std::vector<std::string>& keys, const EachRow& each) override;
    Status apply(const TableDef& table, const Write& write) override;
    Status clearAll() override;
    Status selectStored(int type, std::string_view folded, const std::optional<Value>& folder,
                        const EachRow& each) override;
    Status applyContent(const Write& write, std::string_view bytes) override;
    Status contentBytes(const std::string& key, std::string* bytes) override;
    Status contentPieces(const std::string& key, const EachPiece& each) override;
    Status beginContent(const Write& write, uint64_t size) override;
    Status contentPiece(std::string_view piece) override;
    Status endContent() override;
    Status measure(Amount* amount) override;
    Status changedSince(const TableDef& table, int64_t since, int64_t* newest,
                        bool* changed) override;
    Status changesOf(const TableDef& table, const std::vector<std::string>& keys, int64_t since,
                     std::vector<Change>* changes) override;
    Status selectChanges(const ChangeQuery& query, std::vector<Change>* changes) override;

private:
    /// Failed, if it is the turn of the call that fails.
    Status called();
    int64_t newest() const {
        return m_content.log.empty() ? m_content.pruned : m_content.log.back().id;
    }
    void logChange(const TableDef& table, int code, const std::string& key, const Row& after,
                   const Row& before);
    Status fetchRows(const TableDef& table, MDArray* into,
                     const std::function<bool(const Row& row)>& wanted);

    Content m_content;
    std::string m_open; ///< key of the content between beginContent and endContent
    int m_failAfter = -1;
    bool m_failed = false;
};

} // namespace orvo::store::test

#endif
