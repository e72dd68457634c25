// The local copy of the file area, and that it never leaves its directory.
#include "apps/client/FileMirror.h"
#include "platform/client/NotificationPump.h"
#include "platform/store/WaitPolicy.h"
#include "tests/client/HostFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <random>

using namespace orvo;
using namespace orvo::test;
using app::FileMirror;

namespace {

struct Fixture : Host {
    Module module{&app};
    client::ModuleRegistry registry;
    client::NotificationPump pump{*session, registry, connectAgain()};
    QString work = dir.path() + "/workdir/";
    app::FileMirror mirror{opener(), work};
    QStringList problems;

    Fixture() {
        QDir().mkpath(work);
        write("MenuResourceFolder", 1,
              {{"KeyLink", "icons"}, {"type_", "4"}, {"caption", "icons"}});
        write("MenuResourceFolder", 1,
              {{"KeyLink", "sub"}, {"ParentKey", "icons"}, {"type_", "4"}, {"caption", "Цех 1"}});
        QObject::connect(&pump, &client::NotificationPump::changed, &mirror, &FileMirror::changed);
        QObject::connect(&mirror, &FileMirror::problem, &mirror,
                         [this](const QString& text) { problems << text; });
    }
    /// Of a connection of its own for each mirror.
    app::StoreOpener opener() const {
        return [url = this->url](store::Status* status) {
            return store::open(url, {"mirror", false}, status);
        };
    }
    bool start() {
        QString error;
        const bool ok = mirror.start(&error);
        pump.start();
        return ok && QTest::qWaitFor([this] { return settled(); }, 30000);
    }
    bool settled() const { return mirror.isIdle() && pump.isIdle(); }
    void put(const QString& folder, const QString& name, const QByteArray& bytes,
             double time = 1700000000.125) {
        CToolFilePut tool(&module);
        tool.AddFile(folder, name, bytes.constData(), bytes.size(), time);
        tool.Perform(false);
    }
    /// Of the first resource of that name; empty if there is none.
    std::string keyOf(const QString& name) {
        CMDArray found;
        if (!store().fetchWhere("MenuResource", "name_", name.toStdString(), found.array).ok())
            return {};
        const MDRData* record = MDARec(found.array, 0, 0);
        return record ? textOf(found.array, record, "KeyLink").toStdString() : std::string();
    }
    using Contents = QMap<QString, QByteArray>; ///< by path
    Contents area() {
        std::vector<std::pair<std::string, std::string>> files;
        const auto list = [&](const std::string& path, const store::StoredFile& file) {
            files.emplace_back(path, file.name);
        };
        if (!store().fileArea(list).ok())
            failures << "the file area was not listed";
        Contents all;
        for (const auto& [folder, name] : files) {
            std::vector<store::StoredFile> found;
            if (!store().fileGet(folder, name, true, &found).ok())
                failures << "a file was not read";
            for (const store::StoredFile& file : found)
                all[QString::fromStdString(folder.empty() ? file.name : folder + "/" + file.name)] =
                    QByteArray::fromStdString(file.bytes);
        }
        return all;
    }
    Contents copies() const {
        Contents all;
        QDirIterator each(work + "files", QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (each.hasNext()) {
            const QString path = each.next();
            QFile file(path);
            if (file.open(QIODevice::ReadOnly))
                all[path.mid(work.size() + 6)] = file.readAll();
        }
        return all;
    }
    /// The files that are not in both alike, a line each.
    QString differences() {
        const Contents has = copies(), should = area();
        QStringList paths = has.keys() + should.keys();
        QString lines;
        const auto shown = [](const Contents& all, const QString& path) {
            return all.contains(path) ? QString::fromUtf8(all[path]) : QStringLiteral("missing");
        };
        paths.removeDuplicates();
        paths.sort();
        for (const QString& path : paths)
            if (has.contains(path) != should.contains(path) ||
                has.value(path) != should.value(path))
                lines += QString("%1: copied is %2, stored is %3\n")
                             .arg(path, shown(has, path), shown(should, path));
        return lines;
    }
    QByteArray local(const QString& file) const {
        QFile copy(work + "files/" + file);
        return copy.open(QIODevice::ReadOnly) ? copy.readAll() : QByteArray("missing");
    }
};

} // namespace

class TestMirror : public QObject {
    Q_OBJECT
private slots:
    void theFileAreaIsCopiedAtStart() {
        Fixture fixture;
        fixture.put("icons", "a.png", QByteArray("\0bytes", 6));
        fixture.put("icons/Цех 1", "насос.png", "deep");
        fixture.put("", "root.txt", "");
        QVERIFY2(fixture.failures.isEmpty(), qPrintable(fixture.failures.join('\n')));
        QVERIFY(fixture.start());
        QCOMPARE(fixture.local("icons/a.png"), QByteArray("\0bytes", 6));
        QCOMPARE(fixture.local("icons/Цех 1/насос.png"), QByteArray("deep"));
        QCOMPARE(fixture.local("root.txt"), QByteArray());
        QCOMPARE(QFileInfo(fixture.work + "files/icons/a.png").lastModified().toMSecsSinceEpoch(),
                 1700000000125LL);
        QVERIFY(fixture.problems.isEmpty());
    }

    void anUnfinishedCopyGoesOnWhereItStopped() {
        Fixture fixture;
        for (int i = 0; i < 200; ++i)
            fixture.put("icons", QString("%1.png").arg(i), "bytes");
        const auto listed = [&] {
            QFile list(fixture.work + "mirror.list");
            return list.open(QIODevice::ReadOnly) ? list.readAll().count('\n') : 0;
        };
        {
            FileMirror first(fixture.opener(), fixture.work);
            QString error;
            QVERIFY(first.start(&error));
            QTRY_VERIFY(!QDir(fixture.work + "files/icons").isEmpty());
            if (first.isIdle())
                QSKIP("the copy was too quick to be interrupted");
        }
        const int part = listed();
        QVERIFY(part > 0);
        QCOMPARE(part, QDir(fixture.work + "files/icons").entryList(QDir::Files).size());
        QVERIFY(fixture.start());
        QCOMPARE(listed(), 200);
    }

    // Comparing takes its time where there are many files.
    void changesOfOtherRecordsAreNoReasonToCompare() {
        Fixture fixture;
        fixture.write("MenuResource", 1, {{"KeyLink", "m"}, {"type_", "1"}, {"name_", "Module"}});
        fixture.put("icons", "a.png", "bytes");
        QVERIFY(fixture.start());
        std::vector<store::Change> seen;
        QVERIFY(fixture.store().readLog(0, 1000, &seen).ok());
        const int64_t past = seen.back().id;
        const auto compares = [&](const store::Change& change) {
            fixture.mirror.changed(change);
            const bool idle = fixture.mirror.isIdle();
            return !idle && QTest::qWaitFor([&] { return fixture.settled(); }, 30000);
        };
        fixture.write("MenuResource", 2, {{"KeyLink", "m"}, {"caption", "Модуль"}});
        fixture.write("MenuResource", 1, {{"KeyLink", "n"}, {"type_", "3"}, {"name_", "Form"}});
        fixture.write("MenuResource", 4, {{"KeyLink", "n"}});
        fixture.write("MenuResourceFolder", 1,
                      {{"KeyLink", "f"}, {"type_", "2"}, {"caption", "x"}});
        fixture.write("MenuFolder", 1, {{"KeyLink", "d"}, {"caption", "x"}});
        fixture.write("MenuResource", 2, {{"KeyLink", "m"}, {"name_", "Other"}}); // may be a file
        fixture.write("MenuResourceFolder", 2, {{"KeyLink", "sub"}, {"caption", "Цех 2"}});
        fixture.write("MenuResource", 1, {{"KeyLink", "z"}, {"type_", "4"}, {"name_", "z.txt"}});
        fixture.write("MenuResource", 4, {{"KeyLink", "z"}});
        QTRY_VERIFY(fixture.settled());
        std::vector<store::Change> changes;
        QVERIFY(fixture.store().readLog(past, 1000, &changes).ok());
        QCOMPARE(changes.size(), size_t(9));
        for (size_t i = 0; i < changes.size(); ++i)
            QVERIFY2(compares(changes[i]) == (i >= 5), qPrintable(QString::number(i)));
    }

    void onlyAFolderOfFilesMakesTheWholeAreaCompared() {
        Fixture fixture;
        fixture.write("MenuResource", 1, {{"KeyLink", "m"}, {"type_", "1"}, {"name_", "Module"}});
        fixture.write("MenuResourceFolder", 1,
                      {{"KeyLink", "f"}, {"type_", "1"}, {"caption", "x"}});
        fixture.put("icons", "a.png", "bytes");
        QVERIFY(fixture.start());
        const uint64_t before = fixture.mirror.comparisons();
        fixture.write("MenuResource", 2, {{"KeyLink", "m"}, {"name_", "Other"}});
        fixture.write("MenuResource", 2, {{"KeyLink", "m"}, {"MenuResourceFolderKey", "f"}});
        fixture.write("MenuResourceFolder", 2, {{"KeyLink", "f"}, {"caption", "y"}});
        fixture.put("icons", "b.png", "new");
        fixture.write("MenuResource", 2, {{"KeyLink", fixture.keyOf("b.png")}, {"name_", "c.png"}});
        QTRY_VERIFY(fixture.settled());
        QCOMPARE(fixture.local("icons/c.png"), QByteArray("new"));
        QCOMPARE(fixture.local("icons/b.png"), QByteArray("missing"));
        QCOMPARE(fixture.mirror.comparisons(), before);
        fixture.write("MenuResourceFolder", 2, {{"KeyLink", "icons"}, {"caption", "pictures"}});
        QTRY_COMPARE(fixture.local("pictures/a.png"), QByteArray("bytes"));
        QVERIFY(fixture.mirror.comparisons() > before);
    }

    void namesThatFilesExchangeAreFollowed() {
        Fixture fixture;
        fixture.put("icons", "a.png", "one");
        fixture.put("icons", "b.png", "other");
        QVERIFY(fixture.start());
        const std::string a = fixture.keyOf("a.png"), b = fixture.keyOf("b.png");
        for (const auto& [key, name] :
             {std::pair(a, "c.png"), std::pair(b, "a.png"), std::pair(a, "b.png")})
            fixture.write("MenuResource", 2, {{"KeyLink", key}, {"name_", name}});
        QTRY_COMPARE(fixture.local("icons/b.png"), QByteArray("one"));
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("other"));
        fixture.write("MenuResource", 2, {{"KeyLink", a}, {"name_", "B.png"}}); // no other name
        QTRY_COMPARE(fixture.local("icons/B.png"), QByteArray("one"));
        QTRY_COMPARE(fixture.local("icons/b.png"), QByteArray("missing"));
        fixture.write("MenuResource", 2, {{"KeyLink", b}, {"type_", "1"}}); // no file any more
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("missing"));
    }

    // A comparison of everything finds a file where it is, before the notifications come by which
    // it came there; and these come together with those by which it went on.
    void noCopyStaysWhereAFileWasOnItsWay_data() {
        QTest::addColumn<QString>("then");
        for (const char* then : {"it goes on", "it is deleted", "it is a file no more"})
            QTest::newRow(then) << then;
    }
    void noCopyStaysWhereAFileWasOnItsWay() {
        QFETCH(QString, then);
        Fixture fixture;
        fixture.put("icons", "a.png", "bytes");
        fixture.put("icons", "other.png", "others");
        QVERIFY(fixture.start());
        QVERIFY(fixture.pump.disconnect(&fixture.mirror));
        const std::string key = fixture.keyOf("a.png"), other = fixture.keyOf("other.png");
        int64_t past = 0;
        QVERIFY(fixture.store().logPosition(&past).ok());
        const auto set = [&](const char* field, const char* value) {
            fixture.write("MenuResource", 2, {{"KeyLink", key}, {field, value}});
        };
        set("name_", "b.png");
        set("MenuResourceFolderKey", "sub");
        fixture.mirror.refresh();
        QTRY_COMPARE(fixture.local("icons/Цех 1/b.png"), QByteArray("bytes"));
        QTRY_VERIFY(fixture.mirror.isIdle());
        if (then == "it goes on") {
            set("name_", "c.png");
            set("MenuResourceFolderKey", "");
            set("name_", "a.png");
            set("MenuResourceFolderKey", "icons");
        } else {
            if (then == "it is a file no more") // so that its deletion is that of no file
                set("type_", "1");
            fixture.write("MenuResource", 4, {{"KeyLink", key}});
        }
        fixture.write("MenuResource", 2, {{"KeyLink", other}, {"name_", "another.png"}});
        std::vector<store::Change> changes;
        QVERIFY(fixture.store().readLog(past, 1000, &changes).ok());
        const uint64_t comparisons = fixture.mirror.comparisons();
        for (const store::Change& change : changes)
            fixture.mirror.changed(change);
        QTRY_VERIFY(fixture.mirror.isIdle());
        QCOMPARE(fixture.differences(), QString());
        QCOMPARE(fixture.mirror.comparisons(), comparisons);
    }

    void whateverChangesTheCopyIsTheArea() {
        Fixture fixture;
        fixture.put("icons", "0.png", "first");
        QVERIFY(fixture.start());
        const int given = qEnvironmentVariableIntValue("ORVO_SEED");
        const uint32_t seed = given != 0 ? uint32_t(given) : QRandomGenerator::global()->generate();
        std::mt19937 random(seed);
        int step = 0;
        const auto follows = [&] {
            return QTest::qWaitFor(
                [&] { return fixture.settled() && fixture.differences().isEmpty(); },
                longestWaitMs);
        };
        const auto words = [&] {
            return QString("ORVO_SEED=%1, step %2, mirror %3, pump %4:\n%5%6")
                .arg(seed)
                .arg(step)
                .arg(fixture.mirror.isIdle() ? "idle" : "busy",
                     fixture.pump.isIdle() ? "idle" : "busy", fixture.differences(),
                     fixture.problems.join('\n'));
        };
        const auto below = [&random](int most) { return int(random() % unsigned(most)); };
        const auto name = [&] { return QString("%1.png").arg(below(6)); };
        const QStringList folders{"icons", "icons/Цех 1", ""};
        const char* const links[] = {"icons", "sub", ""};
        for (; step < 150; ++step) {
            const std::string key = fixture.keyOf(name());
            switch (below(6)) {
            case 0:
            case 1:
                fixture.put(folders[below(3)], name(), QByteArray::number(step), 1700000000 + step);
                break;
            case 2:
                if (!key.empty())
                    fixture.write("MenuResource", 2,
                                  {{"KeyLink", key}, {"name_", name().toStdString()}});
                break;
            case 3:
                if (!key.empty())
                    fixture.write("MenuResource", 2,
                                  {{"KeyLink", key}, {"MenuResourceFolderKey", links[below(3)]}});
                break;
            case 4:
                if (!key.empty())
                    fixture.write("MenuResource", below(2) == 0 ? 4 : 2,
                                  {{"KeyLink", key}, {"type_", below(2) == 0 ? "1" : "4"}});
                break;
            default:
                if (below(5) == 0)
                    fixture.write("MenuResourceFolder", 2,
                                  {{"KeyLink", "sub"},
                                   {"caption", below(2) == 0 ? "Цех 1" : "Цех 2"},
                                   {"ParentKey", below(2) == 0 ? "icons" : ""}});
            }
            if (below(3) != 0)
                continue; // several come together
            QVERIFY2(follows(), qPrintable(words()));
        }
        QVERIFY2(follows(), qPrintable(words()));
        QVERIFY2(fixture.problems.isEmpty(), qPrintable(fixture.problems.join('\n')));
    }

    void changesFollowByNotification() {
        Fixture fixture;
        fixture.put("icons", "a.png", "old");
        QVERIFY(fixture.start());
        fixture.put("icons", "a.png", "newer", 1700000001);
        fixture.put("icons", "b.png", "second");
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("newer"));
        QTRY_COMPARE(fixture.local("icons/b.png"), QByteArray("second"));
        CToolFileDel del(&fixture.module);
        del.files = {{"icons", "a.png"}};
        del.Perform(false);
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("missing"));
        fixture.write("MenuResourceFolder", 2, {{"KeyLink", "icons"}, {"caption", "pictures"}});
        QTRY_COMPARE(fixture.local("pictures/b.png"), QByteArray("second"));
        QTRY_COMPARE(fixture.local("icons/b.png"), QByteArray("missing"));
        QVERIFY(!QFileInfo::exists(fixture.work + "files/icons")); // empty folders go too
    }

    void bytesChangedByHandAreFollowed() {
        Fixture fixture;
        fixture.put("icons", "a.png", "one");
        fixture.put("icons", "b.png", "other");
        QVERIFY(fixture.start());
        const bool lite = fixture.kind->name() == "sqlite";
        const auto set = [&](const QString& bytes) { // of the file whose size is 3
            return fixture.byHand(
                lite ? QString("UPDATE \"MenuResourceFile\" SET \"data\" = "
                               "CAST('%1' AS BLOB), \"size\" = length('%1') WHERE \"size\" = 3")
                           .arg(bytes)
                     : QString("UPDATE \"MenuResourceFileData\" SET \"data\" = '%1' "
                               "WHERE \"KeyLink\" IN (SELECT \"KeyLink\" FROM "
                               "\"MenuResourceFile\" WHERE \"size\" = 3)")
                           .arg(bytes));
        };
        QVERIFY(set("two")); // of the same length and time
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("two"));
        QVERIFY(set("longer"));
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("longer"));
        QCOMPARE(fixture.local("icons/b.png"), QByteArray("other"));
        QVERIFY2(fixture.problems.isEmpty(), qPrintable(fixture.problems.join('\n')));
    }

    void aFileWithoutATimeIsFollowedAsWell() {
        Fixture fixture;
        fixture.put("icons", "a.png", "one", qQNaN());
        QVERIFY(fixture.start());
        fixture.put("icons", "a.png", "two", qQNaN());
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("two"));
    }

    void aTimeThatTheDiskCannotHoldIsCopiedOnce_data() {
        QTest::addColumn<double>("time");
        for (const double time : {1e300, -1e300, 4294967296.0 * 8, -5e9, -0.5})
            QTest::newRow(QByteArray::number(time)) << time;
    }
    void aTimeThatTheDiskCannotHoldIsCopiedOnce() {
        QFETCH(double, time);
        Fixture fixture;
        fixture.put("icons", "a.png", "one", time);
        QVERIFY2(fixture.failures.isEmpty(), qPrintable(fixture.failures.join('\n')));
        QVERIFY(fixture.start());
        QCOMPARE(fixture.local("icons/a.png"), QByteArray("one"));
        FileMirror again(fixture.opener(), fixture.work);
        QSignalSpy updated(&again, &FileMirror::updated);
        QString error;
        QVERIFY(again.start(&error));
        QTRY_VERIFY(again.isIdle());
        QCOMPARE(updated.count(), 0);
        fixture.put("icons", "a.png", "two", time); // told by its notification alone
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("two"));
    }

    void aFolderWithTheKeyOfTheTopRowKeepsNobodyWaiting_data() {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("parent");
        for (const char* key : {"FileResources", "menuresources"})
            for (const char* parent : {"", "FileResources", "MenuResources", "icons"})
                QTest::newRow(QByteArray(key) + " in " + parent)
                    << QByteArray(key) << QByteArray(parent);
    }
    void aFolderWithTheKeyOfTheTopRowKeepsNobodyWaiting() {
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, parent);
        Fixture fixture;
        fixture.put("icons", "a.png", "x");
        fixture.write("MenuResourceFolder", 1,
                      {{"KeyLink", key.toStdString()}, {"type_", "4"}, {"caption", "top"}});
        QVERIFY2(fixture.failures.isEmpty(), qPrintable(fixture.failures.join('\n')));
        // By hand: the store refuses to put a folder below itself.
        const QString table = fixture.kind->name() == "sqlite" ? "\"MenuResourceFolder\""
                                                               : "public.\"MenuResourceFolder\"";
        QVERIFY(parent.isEmpty() || fixture.byHand("UPDATE " + table + " SET \"ParentKey\" = '" +
                                                   parent + "' WHERE \"KeyLink\" = '" + key + "'"));
        QVERIFY(fixture.start());
        QCOMPARE(fixture.local("icons/a.png"), QByteArray("x"));
    }

    void whatIsUpToDateIsNotWrittenAgain() {
        Fixture fixture;
        fixture.put("icons", "a.png", "same");
        QVERIFY(fixture.start());
        QFile::remove(fixture.work + "files/icons/a.png");
        FileMirror again(fixture.opener(), fixture.work);
        QSignalSpy updated(&again, &FileMirror::updated);
        QString error;
        QVERIFY(again.start(&error));
        QTRY_VERIFY(again.isIdle());
        QCOMPARE(fixture.local("icons/a.png"), QByteArray("same")); // damage is repaired
        QCOMPARE(updated.count(), 1);
        FileMirror third(fixture.opener(), fixture.work);
        QSignalSpy untouched(&third, &FileMirror::updated);
        QVERIFY(third.start(&error));
        QTRY_VERIFY(third.isIdle());
        QCOMPARE(untouched.count(), 0);
    }

    void filesGoneWhileTheClientWasAwayAreRemovedAndOthersAreNot() {
        Fixture fixture;
        fixture.put("icons", "a.png", "x");
        QVERIFY(fixture.start());
        QFile own(fixture.work + "files/icons/own.txt");
        QVERIFY(own.open(QIODevice::WriteOnly));
        own.write("mine");
        own.close();
        CToolFileDel del(&fixture.module);
        del.files = {{"icons", "a.png"}};
        del.Perform(false);
        FileMirror later(fixture.opener(), fixture.work);
        QString error;
        QVERIFY(later.start(&error));
        QTRY_VERIFY(later.isIdle());
        QCOMPARE(fixture.local("icons/a.png"), QByteArray("missing"));
        QCOMPARE(fixture.local("icons/own.txt"), QByteArray("mine"));
    }

    void captionsThatAreNoPlainNamesAreSkippedAndNamed_data() {
        QTest::addColumn<QString>("caption");
        for (const char* caption : {"..", ".", "a/../../b", "/etc", "a/b", "tab\tname"})
            QTest::newRow(caption) << QString(caption);
    }
    void captionsThatAreNoPlainNamesAreSkippedAndNamed() {
        QFETCH(QString, caption);
        Fixture fixture;
        fixture.put("icons", "good.png", "good");
        fixture.put("icons/Цех 1", "bad.png", "bad");
        QVERIFY(fixture.write("MenuResourceFolder", 2,
                              {{"KeyLink", "sub"}, {"caption", caption.toStdString()}}));
        QVERIFY(fixture.start());
        QCOMPARE(fixture.local("icons/good.png"), QByteArray("good"));
        QCOMPARE(fixture.problems.size(), 1);
        QVERIFY(fixture.problems[0].contains("bad.png"));
        QVERIFY(!QFileInfo::exists(fixture.work + "bad.png"));
        QVERIFY(!QFileInfo::exists(fixture.work + "files/bad.png"));
        QVERIFY(!QFileInfo::exists(fixture.work + "b/bad.png"));
        QVERIFY(!QFileInfo::exists(fixture.work + "files/icons/a"));
        QVERIFY(!QFileInfo::exists("/etc/bad.png"));
        fixture.put("icons", "another.png", "x"); // told once, not at every look
        QTRY_COMPARE(fixture.local("icons/another.png"), QByteArray("x"));
        QCOMPARE(fixture.problems.size(), 1);
    }

    void symbolicLinksAreNotFollowed() {
        Fixture fixture;
        const QString outside = fixture.dir.path() + "/outside";
        QDir().mkpath(outside);
        QFile victim(outside + "/victim.txt");
        QVERIFY(victim.open(QIODevice::WriteOnly));
        victim.write("untouched");
        victim.close();
        QDir().mkpath(fixture.work + "files");
        QVERIFY(QFile::link(outside, fixture.work + "files/icons"));
        QVERIFY(QFile::link(outside + "/victim.txt", fixture.work + "files/root.txt"));
        fixture.put("icons", "victim.txt", "overwritten");
        fixture.put("", "root.txt", "new content");
        QVERIFY(fixture.start());
        QVERIFY(victim.open(QIODevice::ReadOnly));
        QCOMPARE(victim.readAll(), QByteArray("untouched"));
        QCOMPARE(fixture.problems.size(), 1);                           // the folder that is a link
        QCOMPARE(fixture.local("root.txt"), QByteArray("new content")); // the link was replaced
        QVERIFY(!QFileInfo(fixture.work + "files/root.txt").isSymLink());
    }

    void aManifestFromOtherHandsRemovesNothingOutside() {
        Fixture fixture;
        QFile victim(fixture.work + "victim.txt");
        QVERIFY(victim.open(QIODevice::WriteOnly));
        victim.write("x");
        victim.close();
        QFile list(fixture.work + "mirror.list");
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write("../victim.txt\n/etc/hostname\n\n..\n");
        list.close();
        QVERIFY(fixture.start());
        QVERIFY(victim.exists());
    }

    void aDirectoryThatCannotBeUsedIsAnError() {
        Fixture fixture;
        QFile file(fixture.work + "files");
        QVERIFY(file.open(QIODevice::WriteOnly));
        QString error;
        QVERIFY(!fixture.mirror.start(&error));
        QVERIFY(error.contains("files"));
        QVERIFY(fixture.mirror.isIdle());
    }

    void aThousandFilesDoNotHoldUpTheWindow() {
        Fixture fixture;
        for (int i = 0; i < 1000; ++i)
            fixture.put("icons", QStringLiteral("f%1").arg(i), QByteArray(1000, 'x'));
        QElapsedTimer clock;
        qint64 longest = 0;
        QTimer beat;
        QElapsedTimer since;
        connect(&beat, &QTimer::timeout, this, [&] { longest = qMax(longest, since.restart()); });
        since.start();
        clock.start();
        beat.start(1);
        QVERIFY(fixture.start());
        qInfo("1000 files in %lld ms, longest wait %lld ms", clock.elapsed(), longest);
        QCOMPARE(QDir(fixture.work + "files/icons").entryList(QDir::Files).size(), 1000);
        QVERIFY(longest < 200);
    }

    void aLongCopyTellsHowFarItIs() {
        Fixture fixture;
        for (int i = 0; i < 50; ++i)
            fixture.put("icons", QStringLiteral("f%1").arg(i), "x");
        app::MirrorPace pace;
        pace.firstProgressAfter = pace.progressInterval = app::MirrorPace::Milliseconds(0);
        FileMirror mirror(fixture.opener(), fixture.work, pace);
        QSignalSpy progress(&mirror, &FileMirror::progress);
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_VERIFY(mirror.isIdle());
        QCOMPARE(progress.size(), 51);
        for (int i = 0; i < 50; ++i)
            QCOMPARE(progress[i], (QVariantList{i + 1, 50}));
        QCOMPARE(progress.last(), (QVariantList{0, 0}));
        mirror.refresh(); // nothing to copy, nothing to tell
        QTRY_VERIFY(mirror.isIdle());
        QCOMPARE(progress.size(), 51);
    }

    void anOperatorsDesktopCopiesTheIconsAlone() {
        Fixture fixture;
        fixture.put({}, "plan.txt", "plan");
        fixture.put("icons", "pump.png", "p");
        fixture.put("icons/Цех 1", "valve.png", "v");
        QVERIFY(fixture.start()); // an engineer's client with the same directory
        FileMirror mirror(fixture.opener(), fixture.work, {}, app::MirrorExtent::Icons);
        QObject::connect(&fixture.pump, &client::NotificationPump::changed, &mirror,
                         &FileMirror::changed);
        const QString other = fixture.dir.path() + "/other/";
        QDir().mkpath(other);
        FileMirror alone(fixture.opener(), other, {}, app::MirrorExtent::Icons);
        QObject::connect(&fixture.pump, &client::NotificationPump::changed, &alone,
                         &FileMirror::changed);
        QString error;
        QVERIFY(mirror.start(&error) && alone.start(&error));
        QTRY_VERIFY(mirror.isIdle() && alone.isIdle());
        QVERIFY(QFile::exists(fixture.work + "files/plan.txt"));
        QVERIFY(!QFile::exists(other + "files/plan.txt"));
        QVERIFY(QFile::exists(other + "files/icons/pump.png"));
        QVERIFY(QFile::exists(other + "files/icons/Цех 1/valve.png"));
        fixture.put({}, "plan.txt", "plan 2");
        fixture.put("icons", "fan.png", "f");
        QTRY_VERIFY(QFile::exists(other + "files/icons/fan.png"));
        QTRY_VERIFY(alone.isIdle());
        QVERIFY(!QFile::exists(other + "files/plan.txt"));
    }

    void aLongCopyShowsAndNotesItsFilesInStages() {
        Fixture fixture;
        for (int i = 0; i < 20; ++i)
            fixture.put("icons/Цех 1", QStringLiteral("f%1").arg(i), "x");
        app::MirrorPace pace;
        pace.stage = app::MirrorPace::Milliseconds(0);
        pace.firstProgressAfter = pace.progressInterval = app::MirrorPace::Milliseconds(0);
        FileMirror mirror(fixture.opener(), fixture.work, pace);
        QSignalSpy updated(&mirror, &FileMirror::updated);
        QSignalSpy progress(&mirror, &FileMirror::progress);
        QString error;
        QVERIFY(mirror.start(&error));
        mirror.refresh(); // what is asked for meanwhile is not left to the end
        QTRY_VERIFY(mirror.isIdle());
        QVERIFY(updated.size() >= 20);
        // Each listing asks for what is missing only.
        QVERIFY(progress.size() >= 20);
        QCOMPARE(QDir(fixture.work + "files/icons/Цех 1").entryList(QDir::Files).size(), 20);
        QFile list(fixture.work + "mirror.list");
        QVERIFY(list.open(QIODevice::ReadOnly));
        QCOMPARE(list.readAll().count('\n'), 20);
    }

    void foldersTakenAwayAndMovedAreMadeAgain() {
        Fixture fixture;
        fixture.put("icons/Цех 1", "a.png", "x");
        fixture.put("icons/Цех 1", "b.png", "y");
        QVERIFY(fixture.start());
        const QString folder = fixture.work + "files/icons/Цех 1";
        QVERIFY(QDir(folder).removeRecursively());
        fixture.mirror.refresh();
        QTRY_COMPARE(fixture.local("icons/Цех 1/b.png"), QByteArray("y"));
        QTRY_VERIFY(fixture.settled());
        QCOMPARE(fixture.local("icons/Цех 1/a.png"), QByteArray("x"));
        QVERIFY(QDir().rename(folder, fixture.work + "files/elsewhere"));
        fixture.mirror.refresh();
        QTRY_COMPARE(fixture.local("icons/Цех 1/b.png"), QByteArray("y"));
        QCOMPARE(fixture.local("icons/Цех 1/a.png"), QByteArray("x"));
        QVERIFY(fixture.problems.isEmpty());
    }

    void iconsComeFirst() {
        Fixture fixture;
        fixture.write("MenuResourceFolder", 1,
                      {{"KeyLink", "d"}, {"type_", "4"}, {"caption", "docs"}});
        fixture.put("", "a.txt", "x");
        fixture.put("docs", "b.txt", "x");
        fixture.put("icons", "z.png", "x");
        app::MirrorPace pace;
        pace.stage = app::MirrorPace::Milliseconds(0);
        FileMirror mirror(fixture.opener(), fixture.work, pace);
        QStringList listed;
        connect(&mirror, &FileMirror::updated, this, [&] {
            if (!listed.isEmpty())
                return;
            for (const char* file : {"a.txt", "docs/b.txt", "icons/z.png"})
                if (QFileInfo::exists(fixture.work + "files/" + file))
                    listed << file;
        });
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_VERIFY(mirror.isIdle());
        QVERIFY(listed.contains("icons/z.png"));
    }

    void aStoreThatDoesNotOpenIsTriedAgain() {
        Fixture fixture;
        fixture.put("icons", "a.png", "x");
        std::atomic<int> attempts = 0;
        app::MirrorPace pace;
        pace.retry = app::MirrorPace::Milliseconds(20);
        FileMirror mirror(
            [&attempts, open = fixture.opener()](store::Status* status) {
                if (++attempts > 3)
                    return open(status);
                *status = {store::CannotConnect, "нет ответа"};
                return std::unique_ptr<store::Store>();
            },
            fixture.work, pace);
        QSignalSpy problems(&mirror, &FileMirror::problem);
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("x"));
        QCOMPARE(int(attempts), 4);
        QTRY_VERIFY(mirror.isIdle());
        QCOMPARE(problems.size(), 1); // and not each time
        QVERIFY(problems[0][0].toString().contains("нет ответа"));
    }

    void aMirrorAtRestHoldsNoConnection() {
        Fixture fixture;
        std::atomic<int> opened = 0;
        app::MirrorPace pace;
        pace.close = app::MirrorPace::Milliseconds(20);
        FileMirror mirror(
            [&opened, open = fixture.opener()](store::Status* status) {
                ++opened;
                return open(status);
            },
            fixture.work, pace);
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_VERIFY(mirror.isIdle());
        QCOMPARE(int(opened), 1);
        const auto opensAgain = [&] {
            mirror.refresh();
            return QTest::qWaitFor([&] { return mirror.isIdle(); }) && opened > 1;
        };
        QTRY_VERIFY(opensAgain());
    }

    void closingWaitsForNoServer() {
        Fixture fixture;
        std::atomic<bool> waits = false;
        QElapsedTimer clock;
        {
            FileMirror mirror(
                [&waits](store::Status* status) {
                    waits = true;
                    while (store::keepWaiting()) // as a store does that gets no answer
                        QThread::msleep(5);
                    *status = {store::Timeout, "нет ответа"};
                    return std::unique_ptr<store::Store>();
                },
                fixture.work);
            QString error;
            QVERIFY(mirror.start(&error));
            QTRY_VERIFY(bool(waits));
            QVERIFY(!mirror.isIdle());
            clock.start();
        }
        QVERIFY(clock.elapsed() < 2000);
    }

    void nothingIsAskedOfAStoreThatIsAway() {
        Fixture fixture;
        std::atomic<int> opened = 0;
        FileMirror mirror(
            [&opened, open = fixture.opener()](store::Status* status) {
                ++opened;
                return open(status);
            },
            fixture.work);
        mirror.setConnected(false);
        QString error;
        QVERIFY(mirror.start(&error));
        fixture.put("icons", "a.png", "x");
        mirror.refresh();
        QVERIFY(mirror.isIdle());
        QTest::qWait(100);
        QCOMPARE(int(opened), 0);
        mirror.setConnected(true);
        QVERIFY(!mirror.isIdle());
        QTRY_COMPARE(fixture.local("icons/a.png"), QByteArray("x"));
    }
};

QTEST_MAIN(TestMirror)
#include "tst_mirror.moc"
