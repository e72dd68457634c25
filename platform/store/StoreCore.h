// StoreCore.h: what every kind of store does alike, over what its database provides.
//
// The subjects: records and updates (StoreCore.cpp, GuardedUpdate.h), the change log
// (StoreLog.cpp), users (StoreUsers.cpp), stored forms and files (StoredFiles.h), the whole content
// on its way out and in (StoreTransfer.cpp). All checks of arguments are made here, before a
// database is asked.
#ifndef ORVO_PLATFORM_STORE_STORECORE_H
#define ORVO_PLATFORM_STORE_STORECORE_H

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Guarded.h"
#include "platform/store/Maintenance.h"
#include "platform/store/StoreBackend.h"
#include "platform/store/StoredFiles.h"

#include <functional>
#include <string>
#include <vector>

namespace orvo::store {

class StoreCore : public MaintainedStore, protected StoreBackend {
public:
    std::string login() const final { return m_login; }

    Status fetch(std::string_view table, MDArray* into) final;
    Status fetchWhere(std::string_view table, std::string_view field, std::string_view value,
                      MDArray* into) final;
    Status fetchLinked(std::string_view table, std::string_view field, std::string_view key,
                       MDArray* into) final;
    Status update(std::string_view table, const MDArray* records,
                  UpdateGuard* guard = nullptr) final;

    Status logEnd(LogCursor* cursor) final;
    const Written& lastWritten() const final { return m_written; }
    Status outcomeOf(const Written& written, Outcome* outcome) final;
    Status history(const LogQuery& query, int limit, std::vector<Change>* changes) final;

    Status formGet(std::string_view form, bool withBytes, std::vector<StoredFile>* files) final;
    Status formPut(std::string_view path, const std::vector<FileToPut>& files) final;
    Status formDelete(const std::vector<std::string>& forms) final;
    Status fileGet(std::string_view path, std::string_view name, bool withBytes,
                   std::vector<StoredFile>* files) final;
    Status filePut(const std::vector<FileToPut>& files) final;
    Status fileDelete(const std::vector<std::pair<std::string, std::string>>& files) final;
    Status fileArea(
        const std::function<void(const std::string& path, const StoredFile& file)>& each) final;

    Status userAdd(const User& user) final;
    Status userChange(const std::string& login, const UserChange& change) final;
    Status userRemove(const std::string& login, int* unlocked) final;
    Status loginAdd(const User& user) final;
    Status missingLogins(std::vector<std::string>* logins) override;

    Status writeOut(Receiver& into) final;
    Status replaceAll(const std::function<Status(Receiver& store)>& work) final;

protected:
    explicit StoreCore(std::string login) : m_files(*this), m_login(std::move(login)) {}

    /// Nothing that was read before says anything about the store that is open now.
    void forgetWhatWasRead() { m_files.forget(); }

    /// Gives an empty array the table's structure, key 0 and what `write` writes. After a failure
    /// the array is empty again.
    static Status records(const TableDef& table, MDArray* into,
                          const std::function<Status(mdx::RecordWriter& writer)>& write);
    /// Checks a cursor against the ends of the log and the changes read from the cursor's own on,
    /// which is taken away.
    static Status checkCursor(const LogCursor& cursor, int64_t pruned, int64_t newest,
                              std::vector<Change>* changes);
    /// Names a write in messages.
    static std::string placeOf(const TableDef& table, const Write& write);

    /// Of the last inWrite.
    Written m_written;

private:
    Status findUser(const std::string& login, std::string* key, std::string* exact);
    Status fetchField(std::string_view table, std::string_view field, TextMatch match,
                      std::string_view value, MDArray* into);

    StoredFiles m_files;
    const std::string m_login;
};

/// How messages name the change log and a stored file's bytes.
inline constexpr char logName[] = "Журнал изменений";
inline constexpr char contentName[] = "Содержимое файла";

} // namespace orvo::store

#endif
