// Stored forms and files.
#include "StoreTest.h"

#include <QCryptographicHash>

#include <QElapsedTimer>

using namespace orvo::store;
using namespace orvo::store::test;

class TestFiles : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void bytesChangedByHandAreLoggedAndSeenByTheCheck() {
        ORVO_OK(m_store->filePut({{"", "x", "bytes", {}}}));
        ORVO_OK(m_store->filePut({{"", "y", "other", {}}}));
        std::vector<std::string> damages;
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        const QByteArray key =
            "(SELECT \"KeyLink\" FROM \"MenuResourceFile\" WHERE \"name_\" = 'x')";
        const bool isSqlite = m_kind.name() == "sqlite";
        const int64_t before = position();
        QVERIFY(
            m_kind.byHand((isSqlite ? "UPDATE \"MenuResourceFile\" SET \"data\" = x'4142434445' "
                                    : "UPDATE \"MenuResourceFileData\" SET \"data\" = 'ABCDE' ") +
                          QByteArray("WHERE \"KeyLink\" = ") + key + ";"));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(before, 100, &changes));
        QCOMPARE(changes.size(), size_t(1));
        QCOMPARE(changes[0].code, 602);
        QCOMPARE(changes[0].table, std::string("MenuResourceFile"));
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages.size(), size_t(1));
        QCOMPARE(QString::fromStdString(damages[0]),
                 QString("Байты содержимого файла \"x\" (ключ %1) повреждены или изменены мимо "
                         "программы: не сходятся с контрольной суммой")
                     .arg(QString::fromStdString(changes[0].key)));
        ORVO_OK(m_store->filePut({{"", "x", "again", {}}}));
        ORVO_OK(m_store->integrity(&damages)); // what was replaced is kept as it was
        QCOMPARE(damages.size(), size_t(1));
        QVERIFY2(damages[0].find("Прежнее содержимое файла \"x\"") == 0, damages[0].c_str());
        if (isSqlite)
            return;
        // However the bytes go; one event for each content and transaction.
        const int64_t then = position();
        QVERIFY(m_kind.byHand(
            "DELETE FROM \"MenuResourceFileData\";"
            "BEGIN; INSERT INTO \"MenuResourceFileData\" SELECT \"KeyLink\", 0, 'a' FROM "
            "\"MenuResourceFile\"; UPDATE \"MenuResourceFileData\" SET \"part\" = 1; COMMIT;"
            "TRUNCATE \"MenuResourceFileData\";"));
        ORVO_OK(m_store->readLog(then, 100, &changes));
        QCOMPARE(changes.size(), size_t(6));
    }

    void contentKeepsItsChecksum() {
        ORVO_OK(m_store->filePut({{"", "empty", "", {}}}));
        const std::string large(3 << 20, 'x');
        ORVO_OK(m_store->filePut({{"", "large", large, {}}}));
        QByteArray sums;
        const QByteArray query = "SELECT \"name_\", \"sha256\" FROM \"MenuResourceFile\" JOIN "
                                 "\"MenuResourceFileSum\" USING (\"KeyLink\") ORDER BY 1;";
        QVERIFY(m_kind.byHand(query, &sums));
        const auto line = [](const char* name, const std::string& bytes) {
            return QByteArray(name) + '|' +
                   QCryptographicHash::hash(QByteArray::fromStdString(bytes),
                                            QCryptographicHash::Sha256)
                       .toHex();
        };
        QCOMPARE(sums.trimmed(), line("empty", "") + '\n' + line("large", large));
        QVERIFY(m_kind.byHand(
            "UPDATE \"MenuResourceFile\" SET \"KeyLink\" = 'new' WHERE \"name_\" = 'large';"));
        ORVO_OK(m_store->fileDelete({{"", "empty"}}));
        QVERIFY(m_kind.byHand(query, &sums));
        QCOMPARE(sums.trimmed(), line("large", large));
        std::vector<std::string> damages;
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>());
        // Nobody could say any more whether the bytes are those that were put.
        QVERIFY(m_kind.byHand("DELETE FROM \"MenuResourceFileSum\";"));
        ORVO_OK(m_store->integrity(&damages));
        QCOMPARE(damages, std::vector<std::string>{
                              "Нет контрольной суммы содержимого файла \"large\" (ключ new)"});
    }

    void init() {
        StoreTest::init();
        QVERIFY(m_store);
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("modules", {{"type_", 1}, {"caption", "модули"}})
                    .insert("forms", {{"type_", 3}, {"caption", "формы отображения"}})
                    .insert("f1", {{"type_", 3}, {"ParentKey", "forms"}, {"caption", "Цех"}})
                    .insert("f2", {{"type_", 3}, {"ParentKey", "f1"}, {"caption", "Печь 1"}})
                    .insert("a", {{"type_", 4}, {"caption", "icons"}})
                    .insert("b", {{"type_", 4}, {"ParentKey", "a"}, {"caption", "16x16"}})
                    .send(*m_store));
    }

    void newFormGetsItsRecordInTheFolderOfThePath() {
        ORVO_OK(
            m_store->formPut("Цех/Печь 1", {{"", "печь_", "1", 5.0}, {"", "печь.ui", "22", {}}}));
        QCOMPARE(dump(*m_store, "MenuResource",
                      {"MenuResourceFolderKey", "name_", "type_", "caption", "UsersKey"}),
                 "f2|печь_|3|печь_|-");
        std::vector<StoredFile> found;
        ORVO_OK(m_store->formGet("печь_", false, &found));
        QCOMPARE(found.size(), size_t(2));
        QCOMPARE(found[0].name, std::string("печь.ui"));
        QCOMPARE(found[0].size, uint64_t(2));
        QVERIFY(!found[0].time);
        QCOMPARE(found[0].bytes, std::string());
        QCOMPARE(found[1].name, std::string("печь_"));
        QCOMPARE(found[1].time.value_or(0), 5.0);
        QCOMPARE(files("печь_"), "печь.ui=22 печь_=1");
        ORVO_OK(m_store->formPut("", {{"", "top", "3", {}}}));
        QVERIFY(dump(*m_store, "MenuResource", {"MenuResourceFolderKey", "name_"})
                    .split("\n")
                    .contains("forms|top"));
    }

    void aContentChangedByHandIsToldWithItsPath() {
        ORVO_OK(m_store->filePut({{"icons/16x16", "x.png", "bytes", {}}}));
        ORVO_OK(m_store->formPut("Цех/Печь 1", {{"", "печь_", "1", 5.0}}));
        const bool isSqlite = m_kind.name() == "sqlite";
        QVERIFY(m_kind.byHand(
            isSqlite ? "UPDATE \"MenuResourceFile\" SET \"data\" = x'41', \"size\" = 1;"
                     : "UPDATE \"MenuResourceFileData\" SET \"data\" = 'A'; UPDATE "
                       "\"MenuResourceFile\" SET \"size\" = 1;"));
        std::vector<std::string> damages;
        ORVO_OK(m_store->integrity(&damages));
        std::sort(damages.begin(), damages.end());
        QCOMPARE(damages.size(), size_t(2));
        QVERIFY2(damages[0].find("Байты содержимого файла \"icons/16x16/x.png\" (ключ ") == 0,
                 damages[0].c_str());
        QVERIFY2(damages[1].find("Байты содержимого файла \"печь_\" формы \"Цех/Печь 1/печь_\" "
                                 "(ключ ") == 0,
                 damages[1].c_str());
    }

    void nameOfAFormIsTheNameWithTheUnderscoreElseTheShortest() {
        ORVO_OK(m_store->formPut("", {{"", "a.ui", "1", {}}, {"", "a_long_", "2", {}}}));
        QCOMPARE(files("a_long_"), "a.ui=1 a_long_=2");
        ORVO_OK(m_store->formPut("", {{"", "b.ui.bak", "1", {}}, {"", "b.ui", "2", {}}}));
        QCOMPARE(files("b.ui"), "b.ui=2 b.ui.bak=1");
        // Letters count, not bytes.
        ORVO_OK(m_store->formPut("", {{"", "абв", "1", {}}, {"", "abcd", "2", {}}}));
        QCOMPARE(files("абв"), "abcd=2 абв=1");
    }

    void aFormIsNotNamedAfterAnotherThatBeginsLikeIt() {
        // All that begins like the chosen file goes along; the choice is what all of them begin
        // with.
        ORVO_OK(m_store->formPut("", {{"", "Pump2_", "2", {}},
                                      {"", "Pump2_.png", "p", {}},
                                      {"", "Pump.png", "p", {}},
                                      {"", "Pump", "1", {}}}));
        QCOMPARE(files("Pump"), "Pump=1 Pump.png=p Pump2_=2 Pump2_.png=p");
        QCOMPARE(files("Pump2_"), "");
        ORVO_OK(m_store->formPut(
            "", {{"", "Valve2_", "2", {}}, {"", "VALVE_", "1", {}}, {"", "Valve.png", "p", {}}}));
        QCOMPARE(files("VALVE_"), "Valve.png=p VALVE_=1 Valve2_=2");
    }

    void formPutAddsAndReplacesAndDeletesNothing() {
        ORVO_OK(m_store->formPut("", {{"", "f_", "1", {}}, {"", "f.ui", "2", {}}}));
        ORVO_OK(m_store->formPut("", {{"", "f_", "new", {}}, {"", "f.png", "3", {}}}));
        QCOMPARE(files("f_"), "f.png=3 f.ui=2 f_=new");
        QCOMPARE(files("F_"), files("f_"));
        QCOMPARE(dump(*m_store, "MenuResource", {"name_"}), "f_");
    }

    void formThatExistsElsewhereKeepsItsPlace() {
        ORVO_OK(m_store->formPut("Цех", {{"", "Форма_", "1", {}}}));
        ORVO_OK(m_store->formPut("Цех/Печь 1", {{"", "ФОРМА_", "2", {}}}));
        QCOMPARE(dump(*m_store, "MenuResource", {"MenuResourceFolderKey", "name_"}), "f1|Форма_");
        QCOMPARE(files("форма_"), "ФОРМА_=2 Форма_=1");
        ORVO_OK(
            Batch("MenuResource")
                .insert("lost", {{"type_", 3}, {"name_", "lost_"}, {"MenuResourceFolderKey", "?"}})
                .send(*m_store));
        ORVO_OK(m_store->formPut("", {{"", "lost_", "3", {}}}));
        QCOMPARE(files("lost_"), "lost_=3");
    }

    void formWithoutATopFolderIsRefused() {
        ORVO_OK(Batch("MenuResourceFolder").remove("forms").send(*m_store));
        ORVO_FAILS(m_store->formPut("", {{"", "f_", "1", {}}}), Refused);
        ORVO_FAILS(m_store->formPut("Цех", {{"", "f_", "1", {}}}), Refused);
        QCOMPARE(dump(*m_store, "MenuResource"), "");
    }

    void pathThatNamesNoFolderIsRefused() {
        ORVO_OK(m_store->formPut("", {{"", "old_", "1", {}}}));
        for (const char* path : {"Нет", "Цех/Нет", "Печь 1", "/", "Цех/", "/Цех", "Цех//Печь 1",
                                 "формы отображения", "icons"}) {
            ORVO_FAILS(m_store->formPut(path, {{"", "f_", "1", {}}}), Refused);
            ORVO_FAILS(m_store->formPut(path, {{"", "old_", "2", {}}}), Refused);
        }
        for (const char* path :
             {"Нет", "icons/", "/icons", "16x16", "icons/16x16/x", "модули", "Цех"})
            ORVO_FAILS(m_store->filePut({{path, "f", "1", {}}}), Refused);
        QCOMPARE(files("old_"), "old_=1");
        QCOMPARE(area(), "");
    }

    void foldersAreFoundByCaptionWithoutRegardToCase() {
        ORVO_OK(m_store->formPut("цЕХ/ПЕЧЬ 1", {{"", "f_", "1", {}}}));
        QCOMPARE(dump(*m_store, "MenuResource", {"MenuResourceFolderKey"}), "f2");
        ORVO_OK(m_store->filePut({{"ICONS/16X16", "x.png", "1", {}}}));
        QCOMPARE(file("Icons/16x16", "x.png"), "x.png=1");
        // A caption may hold the separator.
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("s", {{"type_", 4}, {"ParentKey", "a"}, {"caption", "16x16/old"}})
                    .send(*m_store));
        ORVO_OK(m_store->filePut({{"icons/16x16/old", "y.png", "2", {}}}));
        QCOMPARE(file("icons/16x16/old", "y.png"), "y.png=2");
        QCOMPARE(area(), "[icons/16x16] x.png 1 -\n[icons/16x16/old] y.png 1 -");
    }

    void foldersOfEqualCaptionAreTriedInTheirOrder() {
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("z1", {{"type_", 4}, {"caption", "Same"}})
                    .insert("z0", {{"type_", 4}, {"caption", "same"}})
                    .send(*m_store));
        ORVO_OK(
            Batch("MenuResource")
                .insert("r1", {{"type_", 4}, {"name_", "late"}, {"MenuResourceFolderKey", "z1"}})
                .send(*m_store));
        ORVO_OK(m_store->filePut({{"same", "new", "1", {}}, {"same", "late", "2", {}}}));
        QCOMPARE(file("same", "new"), "new=1");
        QCOMPARE(file("same", "late"), "late=2");
        QStringList places =
            dump(*m_store, "MenuResource", {"name_", "MenuResourceFolderKey"}).split("\n");
        places.sort();
        QCOMPARE(places.join("\n"), "late|z1\nnew|z0");
    }

    void filesOfTheRootHaveAnEmptyPath() {
        ORVO_OK(m_store->filePut({{"", "root.txt", "1", 7.0}}));
        QCOMPARE(file("", "root.txt"), "root.txt=1");
        QCOMPARE(file("icons", "root.txt"), "0 files");
        QCOMPARE(area(), "[] root.txt 1 7");
        QCOMPARE(
            dump(*m_store, "MenuResource", {"MenuResourceFolderKey", "name_", "type_", "caption"}),
            "-|root.txt|4|root.txt");
    }

    void folderSavedUnderTheRootRowIsAtTheTop() {
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("n", {{"type_", 4}, {"ParentKey", "FileResources"}, {"caption", "new"}})
                    .send(*m_store));
        ORVO_OK(m_store->filePut({{"new", "x", "1", {}}}));
        ORVO_OK(
            Batch("MenuResource")
                .insert("r",
                        {{"type_", 4}, {"name_", "y"}, {"MenuResourceFolderKey", "FileResources"}})
                .send(*m_store));
        ORVO_OK(m_store->filePut({{"", "y", "2", {}}}));
        QCOMPARE(area(), "[] y 1 -\n[new] x 1 -");
        QCOMPARE(dump(*m_store, "MenuResource", {"name_"}).split("\n").size(), 2);
    }

    void filePutMakesTheRecordOnceAndReplaces() {
        ORVO_OK(m_store->filePut({{"icons", "a.png", "1", {}}, {"icons/16x16", "a.png", "2", {}}}));
        ORVO_OK(m_store->filePut({{"icons", "a.png", "three", 3.0}}));
        QCOMPARE(file("icons", "a.png"), "a.png=three");
        QCOMPARE(file("icons/16x16", "a.png"), "a.png=2");
        QCOMPARE(area(), "[icons] a.png 5 3\n[icons/16x16] a.png 1 -");
        QCOMPARE(dump(*m_store, "MenuResource", {"name_"}), "a.png\na.png");
    }

    void filesThatDifferInCaseAreTwoFiles() {
        ORVO_OK(m_store->filePut({{"", "Читай", "1", {}}}));
        QCOMPARE(file("", "ЧИТАЙ"), "Читай=1");
        ORVO_OK(m_store->filePut({{"", "ЧИТАЙ", "2", {}}}));
        QCOMPARE(file("", "Читай"), "Читай=1");
        QCOMPARE(file("", "ЧИТАЙ"), "ЧИТАЙ=2");
        ORVO_OK(m_store->fileDelete({{"", "ЧИТАЙ"}}));
        QCOMPARE(area(), "[] Читай 1 -");
    }

    void renamingAndMovingLoseNoContent() {
        ORVO_OK(m_store->filePut({{"icons/16x16", "a.png", "1", {}}}));
        ORVO_OK(m_store->formPut("Цех", {{"", "f_", "2", {}}}));
        ORVO_OK(Batch("MenuResourceFolder")
                    .update("b", {{"ParentKey", ""}, {"caption", "малые"}})
                    .update("f1", {{"caption", "Цех 2"}})
                    .send(*m_store));
        QCOMPARE(file("малые", "a.png"), "a.png=1");
        QCOMPARE(file("icons/16x16", "a.png"), "0 files");
        const QStringList records =
            dump(*m_store, "MenuResource", {"KeyLink", "name_"}).split("\n");
        for (const QString& record : records) {
            ORVO_OK(Batch("MenuResource")
                        .update(record.section("|", 0, 0).toUtf8().constData(),
                                {{"name_", "новое " + record.section("|", 1)}})
                        .send(*m_store));
        }
        QCOMPARE(file("малые", "новое a.png"), "новое a.png=1");
        QCOMPARE(files("новое f_"), "f_=2");
        ORVO_OK(m_store->filePut({{"малые", "новое a.png", "3", {}}}));
        QCOMPARE(area(), "[малые] новое a.png 1 -");
        QCOMPARE(file("малые", "новое a.png"), "новое a.png=3");
    }

    void deletingTheRecordDeletesTheContent() {
        ORVO_OK(m_store->filePut({{"", "x", "1", {}}}));
        const QString key = dump(*m_store, "MenuResource", {"KeyLink"});
        ORVO_OK(Batch("MenuResource").remove(key.toUtf8().constData()).send(*m_store));
        QCOMPARE(area(), "");
        // A record of the same key does not find it again.
        ORVO_OK(Batch("MenuResource")
                    .insert(key.toUtf8().constData(), {{"type_", 4}, {"name_", "x"}})
                    .send(*m_store));
        QCOMPARE(file("", "x"), "0 files");
    }

    void deletingTheContentDeletesTheRecord() {
        ORVO_OK(m_store->formPut("", {{"", "f_", "1", {}}, {"", "f.ui", "2", {}}}));
        ORVO_OK(m_store->formPut("", {{"", "g_", "3", {}}}));
        ORVO_OK(m_store->filePut({{"", "x", "4", {}}, {"icons", "x", "5", {}}}));
        ORVO_OK(m_store->formDelete({"F_"}));
        ORVO_OK(m_store->fileDelete({{"icons", "x"}}));
        QCOMPARE(files("f_"), "");
        QCOMPARE(files("g_"), "g_=3");
        QCOMPARE(area(), "[] x 1 -");
        QCOMPARE(dump(*m_store, "MenuResource", {"name_"}).split("\n").size(), 2);
    }

    void unknownNamesArePassedOver() {
        ORVO_OK(m_store->formPut("", {{"", "g_", "3", {}}}));
        ORVO_OK(m_store->formDelete({"no", "", "../x", "g_"}));
        ORVO_OK(m_store->fileDelete({{"no", "x"}, {"", ""}, {"", ".."}}));
        QCOMPARE(files("no"), "");
        QCOMPARE(file("no", "x"), "0 files");
        QCOMPARE(dump(*m_store, "MenuResource"), "");
    }

    void badFileNamesAreRefused_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("dot") << QByteArray(".");
        QTest::newRow("dots") << QByteArray("..");
        QTest::newRow("slash") << QByteArray("a/b");
        QTest::newRow("absolute") << QByteArray("/etc/passwd");
        QTest::newRow("parent") << QByteArray("../a");
        QTest::newRow("backslash") << QByteArray("a\\b");
        QTest::newRow("zero byte") << QByteArray("a\0b", 3);
        QTest::newRow("line break") << QByteArray("a\nb");
        QTest::newRow("delete") << QByteArray("a\x7F");
        QTest::newRow("C1 control") << QByteArray("a\xC2\x85");
        QTest::newRow("outside the code page") << QByteArray("日本");
        QTest::newRow("no UTF-8") << QByteArray("a\xFF");
    }

    void badFileNamesAreRefused() {
        QFETCH(QByteArray, name);
        ORVO_FAILS(m_store->filePut({{"", "good", "1", {}}, {"", name.toStdString(), "1", {}}}),
                   Refused);
        ORVO_FAILS(m_store->formPut("", {{"", "good", "1", {}}, {"", name.toStdString(), "1", {}}}),
                   Refused);
        QCOMPARE(dump(*m_store, "MenuResource"), "");
    }

    void nameMadeBadByHandIsNotGivenOut() {
        ORVO_OK(m_store->formPut("", {{"", "f_", "1", {}}, {"", "f.ui", "2", {}}}));
        ORVO_OK(m_store->filePut({{"", "x", "4", {}}}));
        QVERIFY(
            m_kind.byHand("UPDATE \"MenuResourceFile\" SET \"name_\" = '../f.ui' WHERE \"name_\" = "
                          "'f.ui'; UPDATE \"MenuResource\" SET \"name_\" = '../x' WHERE \"name_\" "
                          "= 'x';"));
        QCOMPARE(files("f_"), "f_=1");
        QCOMPARE(area(), "");
        std::vector<StoredFile> found;
        ORVO_FAILS(m_store->fileGet("", "../x", true, &found), Refused);
        QVERIFY(found.empty());
    }

    void refusedPutChangesNothing() {
        ORVO_OK(m_store->filePut({{"", "x", "1", {}}}));
        const int64_t before = position();
        ORVO_FAILS(m_store->filePut({{"", "x", "2", {}}, {"", "y", "2", {}}, {"no", "z", "2", {}}}),
                   Refused);
        ORVO_FAILS(m_store->formPut("", {}), Refused);
        ORVO_FAILS(m_store->formPut("", {{"", "f", "1", {}}, {"", "f", "2", {}}}), Refused);
        QCOMPARE(file("", "x"), "x=1");
        QCOMPARE(area(), "[] x 1 -");
        QCOMPARE(position(), before);
    }

    void emptyFilesAndFilesWithoutTimeAreKept() {
        ORVO_OK(m_store->filePut({{"", "x", "", {}}}));
        QCOMPARE(file("", "x"), "x=");
        ORVO_OK(m_store->filePut({{"", "x", "1", 5.5}}));
        QCOMPARE(area(), "[] x 1 5.5");
        ORVO_OK(m_store->filePut({{"", "x", {}, {}}}));
        QCOMPARE(area(), "[] x 0 -");
    }

    void anyBytesComeBack() {
        std::string bytes;
        for (int i = 0; i < 100000; ++i)
            bytes += char(i * 7 + i / 256);
        ORVO_OK(m_store->filePut({{"", "x", bytes, {}}}));
        std::vector<StoredFile> found;
        ORVO_OK(m_store->fileGet("", "x", true, &found));
        QVERIFY(found.at(0).bytes == bytes);
        QCOMPARE(found.at(0).size, uint64_t(bytes.size()));
    }

    void fileAreaListsEveryFileWithItsPath() {
        ORVO_OK(m_store->filePut(
            {{"icons/16x16", "b", "22", 1.0}, {"", "c", "333", {}}, {"icons", "a", "1", {}}}));
        ORVO_OK(m_store->formPut("", {{"", "f_", "1", {}}})); // no file
        ORVO_OK(Batch("MenuResource")
                    .insert("e", {{"type_", 4}, {"name_", "no content"}})
                    .insert("o", {{"type_", 4}, {"name_", "o"}, {"MenuResourceFolderKey", "gone"}})
                    .send(*m_store));
        QCOMPARE(area(), "[] c 3 -\n[icons] a 1 -\n[icons/16x16] b 2 1");
        // The store may be used from inside the listing.
        int count = 0;
        ORVO_OK(m_store->fileArea([&](const std::string& path, const StoredFile& stored) {
            std::vector<StoredFile> found;
            count += m_store->fileGet(path, stored.name, true, &found).ok() &&
                     found.at(0).bytes.size() == stored.size;
        }));
        QCOMPARE(count, 3);
    }

    void circleOfFoldersIsNoPlace() {
        ORVO_OK(m_store->filePut({{"icons/16x16", "x", "1", {}}}));
        // The store makes none; a foreign hand may.
        QVERIFY(m_kind.byHand(
            "UPDATE \"MenuResourceFolder\" SET \"ParentKey\" = 'b' WHERE \"KeyLink\" = 'a';"
            "INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"type_\", \"ParentKey\", "
            "\"caption\") "
            "VALUES ('self', 4, 'SELF', 'self');"));
        QCOMPARE(area(), "");
        ORVO_FAILS(m_store->filePut({{"icons", "x", "1", {}}}), Refused);
        ORVO_FAILS(m_store->filePut({{"self", "x", "1", {}}}), Refused);
        ORVO_OK(Batch("MenuResourceFolder").update("a", {{"ParentKey", ""}}).send(*m_store));
        QCOMPARE(file("icons/16x16", "x"), "x=1");
    }

    void changeOfAResourceKeyByHandTakesTheContentAlong() {
        ORVO_OK(m_store->filePut({{"", "x", "1", {}}}));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResource\" SET \"KeyLink\" = 'by-hand';"));
        QCOMPARE(file("", "x"), "x=1");
    }

    void eventsTellOfContentsWithoutTheirBytes() {
        const int64_t before = position();
        ORVO_OK(m_store->filePut({{"", "x", "SECRET", 5.0}}));
        ORVO_OK(m_store->filePut({{"", "x", "secret", 5.0}}));
        ORVO_OK(m_store->filePut({{"", "x", "s", {}}}));
        ORVO_OK(m_store->fileDelete({{"", "x"}}));
        std::vector<Change> changes;
        ORVO_OK(m_store->readLog(before, 100, &changes));
        QStringList events;
        for (const Change& change : changes) {
            events += QString("%1 %2").arg(change.code).arg(change.table.c_str());
            QVERIFY(QString::fromStdString(change.after + change.before)
                        .indexOf("secret", 0, Qt::CaseInsensitive) < 0);
        }
        QCOMPARE(events.join("\n"), "601 MenuResource\n601 MenuResourceFile\n602 MenuResourceFile\n"
                                    "602 MenuResourceFile\n603 MenuResourceFile\n603 MenuResource");
        QVERIFY(changes[1].after.find("\"size\":6") != std::string::npos);
        QVERIFY(changes[1].after.find("\"MenuResourceKey\":\"" + changes[0].key + "\"") !=
                std::string::npos);
        QCOMPARE(changes[2].after, std::string("{}"));
        QCOMPARE(changes[3].after, std::string("{\"time\":null,\"size\":1}"));
    }

    void fileOf200MebibytesGoesInAndOut() {
        std::string bytes(200u << 20, '\0');
        for (size_t i = 0; i < bytes.size(); i += 4096)
            bytes[i] = char(i / 4096 % 251 + 1);
        bytes.back() = 'E';
        ORVO_OK(m_store->filePut({{"", "large", bytes, {}}}));
        std::vector<StoredFile> found;
        ORVO_OK(m_store->fileGet("", "large", true, &found));
        QVERIFY(found.at(0).bytes == bytes);
        ORVO_OK(m_store->fileDelete({{"", "large"}}));
        QCOMPARE(area(), "");
    }

private:
    QString files(std::string_view form) {
        std::vector<StoredFile> found;
        const Status status = m_store->formGet(form, true, &found);
        QStringList lines;
        for (const StoredFile& stored : found)
            lines += QString("%1=%2").arg(QString::fromStdString(stored.name),
                                          QString::fromStdString(stored.bytes));
        return status.ok() ? lines.join(" ") : QString::fromStdString(status.text);
    }

    QString file(std::string_view path, std::string_view name) {
        std::vector<StoredFile> found;
        const Status status = m_store->fileGet(path, name, true, &found);
        if (!status.ok())
            return QString::fromStdString(status.text);
        if (found.size() != 1)
            return QString("%1 files").arg(found.size());
        return QString("%1=%2").arg(QString::fromStdString(found[0].name),
                                    QString::fromStdString(found[0].bytes));
    }

    QString area() {
        QStringList lines;
        const Status status =
            m_store->fileArea([&](const std::string& path, const StoredFile& stored) {
                lines += QString("[%1] %2 %3 %4")
                             .arg(QString::fromStdString(path), QString::fromStdString(stored.name))
                             .arg(stored.size)
                             .arg(stored.time ? QString::number(*stored.time) : "-");
            });
        return status.ok() ? lines.join("\n") : QString::fromStdString(status.text);
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestFiles>(argc, argv);
}

#include "tst_store_files.moc"
