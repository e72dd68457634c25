// Bytes that were replaced or deleted are kept.
#include "StoreTest.h"

#include "platform/store/Checksum.h"
#include "platform/store/Maintenance.h"

#include <QTemporaryDir>

#include <ctime>

using namespace orvo::store;
using namespace orvo::store::test;

class TestVersions : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void init() {
        StoreTest::init();
        Status status;
        m_boss = openMaintained(m_kind.url(), {"boss"}, &status);
        QVERIFY2(m_boss, status.text.c_str());
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}})
                    .insert("plans", {{"type_", 4}, {"caption", "plans"}})
                    .send(*m_store));
        ORVO_OK(m_store->formPut("", {{"", "a_", "one", 5.5}, {"", "a.ui", "two", {}}}));
    }

    void replacedBytesAreKept() {
        QCOMPARE(kept(), QStringList());
        ORVO_OK(m_store->formPut("", {{"", "a_", "first", {}}}));
        ORVO_OK(m_store->formPut("", {{"", "a_", "second", {}}}));
        QCOMPARE(kept(), QStringList({"a_: first", "a_: one"}));
        const KeptVersion version = newest();
        const Change change = event(version.event);
        QCOMPARE(change.code, 602);
        QCOMPARE(change.table, std::string("MenuResourceFile"));
        QCOMPARE(change.key, version.key);
        QCOMPARE(version.login, std::string("tester"));
        QCOMPARE(change.login, version.login);
        QCOMPARE(version.size, uint64_t(5));
        QVERIFY(std::abs(version.time - double(std::time(nullptr))) < 60);
        VersionQuery query;
        query.resource = version.resource;
        QCOMPARE(kept(query).size(), 2);
        query.resource = "another";
        QCOMPARE(kept(query), QStringList());
        query = {};
        query.contents = std::vector<std::string>{version.key};
        QCOMPARE(kept(query).size(), 2);
        query.contents->clear();
        QCOMPARE(kept(query), QStringList());
    }

    void deletedFormsAndFilesAreKept() {
        ORVO_OK(m_store->filePut({{"plans", "p.txt", "plan", {}}}));
        ORVO_OK(m_store->fileDelete({{"plans", "p.txt"}}));
        QCOMPARE(kept(), QStringList({"p.txt: plan"}));
        QCOMPARE(event(newest().event).code, 603);
        ORVO_OK(m_store->formDelete({"a_"}));
        QStringList all = kept();
        all.sort();
        QCOMPARE(all, QStringList({"a.ui: two", "a_: one", "p.txt: plan"}));
        QCOMPARE(newest().login, std::string("tester"));
        // All of an installation that is replaced, too.
        ORVO_OK(m_store->formPut("", {{"", "b_", "b", {}}}));
        ORVO_OK(m_boss->replaceAll([](Receiver&) { return Status(); }));
        QCOMPARE(kept().size(), 4);
        QCOMPARE(newest().login, std::string("boss"));
    }

    void whatChangesNoBytesKeepsNone() {
        std::vector<StoredFile> files;
        QVERIFY(m_kind.byHand("UPDATE \"MenuResourceFile\" SET \"name_\" = 'b' || \"name_\";"));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResourceFile\" SET \"KeyLink\" = 'k' || \"KeyLink\";"));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResource\" SET \"KeyLink\" = 'r' || \"KeyLink\";"));
        QVERIFY(m_kind.byHand("UPDATE " + storedName() + " SET \"data\" = \"data\";"));
        QCOMPARE(kept(), QStringList());
    }

    void bytesChangedByHandAreKept_data() {
        QTest::addColumn<QByteArray>("sql");
        QTest::addColumn<int>("count");
        const QByteArray table = storedName();
        if (isSqlite()) {
            QTest::newRow("changed")
                << QByteArray("UPDATE \"MenuResourceFile\" SET \"data\" = x'4142', "
                              "\"size\" = 2;")
                << 2;
            QTest::newRow("replaced")
                << QByteArray("INSERT OR REPLACE INTO \"MenuResourceFile\" SELECT "
                              "\"KeyLink\", \"MenuResourceKey\", \"name_\", NULL, 1, "
                              "x'41' FROM \"MenuResourceFile\";")
                << 2;
        } else {
            QTest::newRow("changed")
                << QByteArray("UPDATE " + table + " SET \"data\" = 'AB';") << 2;
            QTest::newRow("bytes deleted") << QByteArray("DELETE FROM " + table + ";") << 2;
            QTest::newRow("emptied") << QByteArray("TRUNCATE " + table + ";") << 2;
        }
        QTest::newRow("deleted") << QByteArray("DELETE FROM \"MenuResourceFile\";") << 2;
        QTest::newRow("one deleted")
            << QByteArray("DELETE FROM \"MenuResourceFile\" WHERE \"name_\" = 'a_';") << 1;
    }

    void bytesChangedByHandAreKept() {
        QFETCH(QByteArray, sql);
        QFETCH(int, count);
        const int64_t before = position();
        QByteArray words;
        QVERIFY2(m_kind.byHand(sql, &words), words);
        QStringList all = kept();
        all.sort();
        QCOMPARE(all,
                 count == 1 ? QStringList({"a_: one"}) : QStringList({"a.ui: two", "a_: one"}));
        QVERIFY(newest().event > before);
        QCOMPARE(event(newest().event).key, newest().key);
        QCOMPARE(newest().login, m_kind.handLogin().toStdString());
    }

    void aRefusedWriteKeepsNothing() {
        QVERIFY(m_store
                    ->filePut({{"plans", "p.txt", "1", {}},
                               {"plans", "p.txt", "2", {}},
                               {"nowhere", "p.txt", "3", {}}})
                    .code == Refused);
        QCOMPARE(kept(), QStringList());
    }

    void versionsKeepTheTimeOfTheirFile() {
        ORVO_OK(m_store->formPut("", {{"", "a_", "first", 7.25}}));
        QCOMPARE(newest().fileTime, std::optional<double>(5.5));
        ORVO_OK(m_store->formPut("", {{"", "a_", "again", 7.25}}));
        QCOMPARE(newest().fileTime, std::optional<double>(7.25));
        ORVO_OK(m_store->formPut("", {{"", "a_", "last", {}}, {"", "a.ui", "second", 1.0}}));
        QCOMPARE(newest().name, std::string("a.ui"));
        QCOMPARE(newest().fileTime, std::optional<double>());
        ORVO_OK(m_store->formPut("", {{"", "a_", "very last", 2.0}}));
        QCOMPARE(newest().fileTime, std::optional<double>());
    }

    void aDamagedVersionIsNamed() {
        ORVO_OK(m_store->formPut("", {{"", "a_", "first", {}}}));
        QVERIFY(m_kind.byHand(isSqlite() ? "UPDATE \"NciVersion\" SET \"data\" = x'414141';"
                                         : "UPDATE \"NciVersionData\" SET \"data\" = 'AAA';"));
        std::string bytes;
        const KeptVersion version = newest();
        const Status status = m_boss->versionBytes(version.id, into(&bytes));
        QCOMPARE(status.code, int(Failed));
        const std::string words = "Прежнее содержимое файла \"a_\" (версия " +
                                  std::to_string(version.id) +
                                  ") повреждено или изменено мимо программы: не сходится с "
                                  "контрольной суммой";
        QCOMPARE(status.text, words);
        ORVO_FAILS(m_boss->versionBytes(version.id, nullptr), Failed);
        std::vector<std::string> damages;
        ORVO_OK(m_boss->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>{words});
        ORVO_FAILS(m_boss->versionBytes(version.id + 1, into(&bytes)), UnknownName);
    }

    void oldAndManyVersionsAreForgotten() {
        for (const char* bytes : {"1", "22", "333", "4444"})
            ORVO_OK(m_store->formPut("", {{"", "a_", bytes, {}}}));
        QCOMPARE(kept(), QStringList({"a_: 333", "a_: 22", "a_: 1", "a_: one"}));
        QVERIFY(
            m_kind.byHand("UPDATE \"NciVersion\" SET \"time\" = 5 WHERE \"size\" = 3 AND \"id\" = "
                          "(SELECT min(\"id\") FROM \"NciVersion\");"));
        PrunedVersions pruned;
        ORVO_OK(m_boss->pruneVersions(6, 1000, true, &pruned));
        QCOMPARE(pruned.count, int64_t(1));
        QCOMPARE(pruned.bytes, uint64_t(3));
        QCOMPARE(kept().size(), 4);
        ORVO_OK(m_boss->pruneVersions(6, 1000, false, &pruned));
        QCOMPARE(kept(), QStringList({"a_: 333", "a_: 22", "a_: 1"}));
        ORVO_OK(m_boss->pruneVersions(6, 5, false, &pruned));
        QCOMPARE(pruned.count, int64_t(1));
        QCOMPARE(kept(), QStringList({"a_: 333", "a_: 22"}));
        ORVO_OK(m_boss->pruneVersions(6, 4, false, &pruned));
        ORVO_OK(m_boss->pruneVersions(6, 0, false, &pruned));
        QCOMPARE(kept(), QStringList());
        std::vector<StoredFile> files;
        ORVO_OK(m_store->formGet("a_", true, &files));
        QCOMPARE(files.size(), size_t(2)); // what is stored stays
    }

    void versionsGoIntoABackup() {
        ORVO_OK(m_store->formPut("", {{"", "a_", "first", {}}}));
        const QTemporaryDir directory;
        const std::string file = directory.filePath("backup").toStdString();
        QFile made(QString::fromStdString(file));
        QVERIFY(made.open(QIODevice::WriteOnly));
        made.close();
        ORVO_OK(m_boss->backup(file, {}));
        ORVO_OK(m_store->formDelete({"a_"}));
        QCOMPARE(kept().size(), 3);
        ORVO_OK(m_boss->restore(file, {}));
        QCOMPARE(kept(), QStringList({"a_: one"}));
        ORVO_OK(m_boss->formDelete({"a_"}));
        QCOMPARE(kept().size(), 3);
    }

    void aVersionIsWrittenBack() {
        ORVO_OK(m_store->formPut("", {{"", "a_", "other", {}}}));
        const KeptVersion version = newest();
        TableWrites part;
        part.table = &contentTable();
        const auto write = [&](int flag, const std::string& key) {
            part.writes = {{flag,
                            key,
                            {{contentTable().find("MenuResourceKey"), version.resource},
                             {contentTable().find("name_"), version.name},
                             {contentTable().find("time"), *version.fileTime},
                             {contentTable().find("size"), int64_t(version.size)}}}};
            part.bytes = {{version.id, {}}};
        };
        write(MDX_UPDATE, version.key);
        ORVO_OK(m_boss->writeAll({part}, position(), {}));
        std::vector<StoredFile> files;
        ORVO_OK(m_store->formGet("a_", true, &files));
        QCOMPARE(files.front().bytes + files.back().bytes, std::string("twoone"));
        QCOMPARE(kept(), QStringList({"a_: other", "a_: one"}));
        std::vector<std::string> damages;
        ORVO_OK(m_boss->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        QVERIFY(m_kind.byHand("DELETE FROM \"MenuResourceFile\" WHERE \"name_\" = 'a_';"));
        write(MDX_INSERT, version.key);
        ORVO_OK(m_boss->writeAll({part}, position(), {}));
        ORVO_OK(m_store->formGet("a_", true, &files));
        QCOMPARE(files.front().bytes + files.back().bytes, std::string("twoone"));
        ORVO_OK(m_boss->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        part.bytes = {{12345, {}}};
        ORVO_FAILS(m_boss->writeAll({part}, position(), {}), UnknownName);
    }

    void viewersSeeThemAndNobodyWritesThem() {
        if (isSqlite())
            QSKIP("a file has no logins");
        ORVO_OK(m_store->formPut("", {{"", "a_", "first", {}}}));
        for (const char* role : {"orvo_viewer", "orvo_engineer"}) {
            QByteArray words;
            const QByteArray as = QByteArray("SET ROLE ") + role + ";";
            QVERIFY2(m_kind.byHand(as + "SELECT count(*) FROM \"NciVersion\", \"NciVersionData\";",
                                   &words),
                     words);
            for (const char* sql :
                 {"DELETE FROM \"NciVersion\";", "DELETE FROM \"NciVersionData\";",
                  "UPDATE \"NciVersion\" SET \"login\" = 'x';"})
                QVERIFY(!m_kind.byHand(as + sql, &words));
        }
    }

private:
    static TakePiece into(std::string* bytes) {
        bytes->clear();
        return [bytes](std::string_view piece) -> Status {
            *bytes += piece;
            return {};
        };
    }
    bool isSqlite() const { return m_kind.name() == "sqlite"; }
    /// "name: bytes" of all versions, the newest first.
    QStringList kept(const VersionQuery& query = {}) {
        std::vector<KeptVersion> all;
        QStringList lines;
        Status status = m_boss->versions(query, &all);
        for (const KeptVersion& version : all) {
            std::string bytes;
            if (status.ok())
                status = m_boss->versionBytes(version.id, into(&bytes));
            lines << QString::fromStdString(version.name + ": " + bytes);
        }
        return status.ok() ? lines : QStringList{QString::fromStdString(status.text)};
    }
    KeptVersion newest() {
        std::vector<KeptVersion> all;
        const Status status = m_boss->versions({}, &all);
        return status.ok() && !all.empty() ? all.front() : KeptVersion();
    }
    Change event(int64_t id) {
        std::vector<Change> found;
        LogQuery query;
        query.above = id - 1;
        query.below = id + 1;
        const Status status = m_boss->history(query, 1, &found);
        return status.ok() && !found.empty() ? found.front() : Change();
    }
    QByteArray storedName() const {
        return isSqlite() ? "\"MenuResourceFile\"" : "\"MenuResourceFileData\"";
    }

    std::unique_ptr<MaintainedStore> m_boss;
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestVersions>(argc, argv);
}

#include "tst_store_versions.moc"
