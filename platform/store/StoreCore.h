// StoreCore.h: what every kind of store does alike, over what its database provides.
//
// The subjects: records and updates (StoreCore.cpp, GuardedUpdate.h), several tables in one
// transaction (StoreWriteAll.cpp), the change log (StoreLog.cpp), users (StoreUsers.cpp), stored
// forms and files (StoredFiles.h) and their former contents (StoreVersions.cpp), the whole content
// on its way out and in (StoreTransfer.cpp). All checks of arguments are made here, before a
// database is asked.
#ifndef ORVO_PLATFORM_STORE_STORECORE_H
#define ORVO_PLATFORM_STORE_STORECORE_H

#include "frame/StdText.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Guarded.h"
#include "platform/store/Maintenance.h"
#include "platform/store/StoreBackend.h"
#include "platform/store/StoredFiles.h"

#include <functional>
#include <map>
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
    Status fetchKeys(std::string_view table, const std::vector<std::string>& keys,
                     MDArray* into) final;
    Status update(std::string_view table, const MDArray* records,
                  UpdateGuard* guard = nullptr) final;

    Status logEnd(LogCursor* cursor) final;
    /// All changes: for a database that cannot tell cheaply which concern a desktop.
    Status readDesktopLog(std::string_view desktop, int limit, LogCursor* cursor,
                          std::vector<Change>* changes, bool* more) override;
    void joinGroup(int64_t group) final { m_origin.group = group; }
    const Written& lastWritten() const final { return m_written; }
    Status outcomeOf(const Written& written, Outcome* outcome) final;
    Status history(const LogQuery& query, int limit, std::vector<Change>* changes) final;
    Status changesSince(const TableDef& table, const std::vector<std::string>& keys, int64_t since,
                        std::vector<Change>* changes) final;
    Status storedValues(const TableDef& table, const std::vector<std::string>& keys,
                        std::map<std::string, std::vector<Value>>* values) final;
    Status keysNaming(const TableDef& table, int field, const std::vector<std::string>& keys,
                      std::vector<std::pair<std::string, std::string>>* found) final;
    Status namePlaces(
        const TableDef& table,
        const std::function<void(const std::string& key, const std::string& place)>& each) final;
    Status writeAll(const std::vector<TableWrites>& parts, int64_t seen,
                    const std::vector<int64_t>& undoes) final;

    Status versions(const VersionQuery& query, std::vector<KeptVersion>* versions) final;
    Status versionBytes(int64_t id, const TakePiece& take) final;
    Status hasBytesOf(const std::string& content, int64_t version, bool* has) final;
    Status versionsForgotten(int64_t* change) final;
    Status pruneVersions(double before, uint64_t mostBytes, bool onlyLook,
                         PrunedVersions* pruned) final;

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
    bool givesRights() const final { return hasLogins(); }
    Status missingLogins(std::vector<std::string>* logins) override;

    Status writeOut(Receiver& into) final;
    Status replaceAll(const std::function<Status(Receiver& store)>& work) final;

protected:
    /// The login is the one to write under, whatever the options say.
    StoreCore(std::string login, const OpenOptions& options);

    /// What the log is to know of the present write beside its login. Texts are short and without
    /// control characters.
    struct Origin {
        std::string client, place;
        int64_t group = 0;           ///< to be joined; 0: none
        std::vector<int64_t> undoes; ///< of a new group
    };
    const Origin& origin() const { return m_origin; }
    /// The form in which the log keeps Change::undoes: numbers with commas between.
    static std::string listText(const std::vector<int64_t>& groups);
    static std::vector<int64_t> groupsIn(std::string_view list);

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
    /// Whether its proof is proofOfHead.
    static bool isOfHead(const LogCursor& cursor);
    /// Checks the bytes of a version, a piece at a time; outside inWrite. What is asked for besides
    /// may be null.
    Status readVersion(const KeptVersion& version, const TakePiece& take,
                       std::string* sha256 = nullptr);
    /// What integrity finds of a content that is stored.
    enum class ContentFault { OtherSize, OtherBytes, NoChecksum };
    using ContentFaults = std::vector<std::pair<ContentFault, std::string>>; ///< with the keys
    /// Adds a line for each. Inside inRead.
    void tellFaults(const ContentFaults& faults, std::vector<std::string>* lines);
    /// Names a write in messages.
    static std::string placeOf(const TableDef& table, const Write& write);

    /// Of the last inWrite.
    Written m_written;

private:
    Status findVersion(int64_t id, KeptVersion* version);
    /// The versions from which the part takes bytes, one for each write.
    Status findVersions(const TableWrites& part, std::vector<KeptVersion>* versions);
    Status writeContents(const TableWrites& part, const std::vector<KeptVersion>& versions);
    Status findUser(const std::string& login, std::string* key, std::string* exact);
    /// Outdated if a group was taken back after `seen`; inside inWrite.
    Status checkUndoing(int64_t seen);
    /// Outdated if any of these writes meets a record that was changed after `seen`; inside
    /// inWrite.
    Status checkUnchanged(const TableWrites& part, int64_t seen);
    Status fetchField(std::string_view table, std::string_view field, TextMatch match,
                      std::string_view value, MDArray* into);

    StoredFiles m_files;
    const std::string m_login;
    Origin m_origin;
};

/// How messages name the change log and a stored file's bytes.
inline std::string logName() {
    return StdText::tr("Журнал изменений");
}
inline std::string contentName() {
    return StdText::tr("Содержимое файла");
}

} // namespace orvo::store

#endif
