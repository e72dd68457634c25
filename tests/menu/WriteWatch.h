// WriteWatch.h: a store as a session has it, with a record of every call that writes a table: what
// the store keeps differs from what it was given (empty links become NULL), and the log does not
// tell calls apart.
#ifndef ORVO_TESTS_MENU_WRITEWATCH_H
#define ORVO_TESTS_MENU_WRITEWATCH_H

#include "platform/store/Store.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

namespace orvo::test {

/// One call of Store::update as it was asked for.
struct WriteCall {
    QString table;
    /// "flag key field=value ...": the flag as "+" (insert), "~" (update) or "-" (delete), then the
    /// fields marked as set in the order of the structure; texts in quotes, NULL as NULL.
    QStringList records;
};

/// Passes everything on to the store that it owns.
class WriteWatch : public store::Store {
public:
    explicit WriteWatch(std::unique_ptr<store::Store> store);

    QVector<WriteCall> calls;
    QString refusedTable; ///< writes to this table are refused
    /// Look-ups by a link and deletions of stored forms and files, a line each: what it was, then
    /// what it was asked for.
    QStringList jobs;

    /// The calls as text, a table name and then an indented line for each record; keys that the
    /// editor made are numbered by their first mention, "#1", "#2". Forgets the calls.
    QString take();

    std::string displayName() const override;
    std::string login() const override;
    store::Status identity(std::string* identity) override;
    store::Status reopen() override { return m_store->reopen(); }
    store::Status fetch(std::string_view table, MDArray* into) override;
    store::Status fetchWhere(std::string_view table, std::string_view field, std::string_view value,
                             MDArray* into) override;
    store::Status fetchLinked(std::string_view table, std::string_view field, std::string_view key,
                              MDArray* into) override;
    store::Status fetchKeys(std::string_view table, const std::vector<std::string>& keys,
                            MDArray* into) override;
    store::Status update(std::string_view table, const MDArray* records,
                         store::UpdateGuard* guard) override;
    store::Status logPosition(int64_t* id) override;
    store::Status logEnd(store::LogCursor* cursor) override;
    store::Status readLog(const store::LogCursor& cursor, int limit,
                          std::vector<store::Change>* changes) override;
    store::Status readDesktopLog(std::string_view desktop, int limit, store::LogCursor* cursor,
                                 std::vector<store::Change>* changes, bool* more) override {
        return m_store->readDesktopLog(desktop, limit, cursor, changes, more);
    }
    void joinGroup(int64_t group) override { m_store->joinGroup(group); }
    const store::Written& lastWritten() const override;
    store::Status outcomeOf(const store::Written& written, store::Outcome* outcome) override;
    store::Status pruneLog(int64_t id) override;
    int wakeFd() const override;
    void takeWake() override;
    bool changed() override;
    store::Status formGet(std::string_view form, bool withBytes,
                          std::vector<store::StoredFile>* files) override;
    store::Status formPut(std::string_view path,
                          const std::vector<store::FileToPut>& files) override;
    store::Status formDelete(const std::vector<std::string>& forms) override;
    store::Status fileGet(std::string_view path, std::string_view name, bool withBytes,
                          std::vector<store::StoredFile>* files) override;
    store::Status filePut(const std::vector<store::FileToPut>& files) override;
    store::Status
    fileDelete(const std::vector<std::pair<std::string, std::string>>& files) override;
    store::Status fileArea(const std::function<void(const std::string& path,
                                                    const store::StoredFile& file)>& each) override;
    store::Status userAdd(const store::User& user) override;
    store::Status integrity(std::vector<std::string>* damages) override;

private:
    std::unique_ptr<store::Store> m_store;
};

} // namespace orvo::test

#endif
