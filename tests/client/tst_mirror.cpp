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

struct Bench : Host {
    Module module{&app};
    client::ModuleRegistry registry;
    client::NotificationPump pump{*session, registry, connectAgain()};
    QString work = dir.path() + "/workdir/";
    app::FileMirror mirror{opener(), work};
    QStringList problems;

    Bench() {
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
        Bench bench;
        bench.put("icons", "a.png", QByteArray("\0bytes", 6));
        bench.put("icons/Цех 1", "насос.png", "deep");
        bench.put("", "root.txt", "");
        QVERIFY2(bench.failures.isEmpty(), qPrintable(bench.failures.join('\n')));
        QVERIFY(bench.start());
        QCOMPARE(bench.local("icons/a.png"), QByteArray("\0bytes", 6));
        QCOMPARE(bench.local("icons/Цех 1/насос.png"), QByteArray("deep"));
        QCOMPARE(bench.local("root.txt"), QByteArray());
        QCOMPARE(QFileInfo(bench.work + "files/icons/a.png").lastModified().toMSecsSinceEpoch(),
                 1700000000125LL);
        QVERIFY(bench.problems.isEmpty());
    }

    void anUnfinishedCopyGoesOnWhereItStopped() {
        Bench bench;
        for (int i = 0; i < 200; ++i)
            bench.put("icons", QString("%1.png").arg(i), "bytes");
        const auto listed = [&] {
            QFile list(bench.work + "mirror.list");
            return list.open(QIODevice::ReadOnly) ? list.readAll().count('\n') : 0;
        };
        {
            FileMirror first(bench.opener(), bench.work);
            QString error;
            QVERIFY(first.start(&error));
            QTRY_VERIFY(!QDir(bench.work + "files/icons").isEmpty());
            if (first.isIdle())
                QSKIP("the copy was too quick to be interrupted");
        }
        const int part = listed();
        QVERIFY(part > 0);
        QCOMPARE(part, QDir(bench.work + "files/icons").entryList(QDir::Files).size());
        QVERIFY(bench.start());
        QCOMPARE(listed(), 200);
    }

    // Comparing takes its time where there are many files.
    void changesOfOtherRecordsAreNoReasonToCompare() {
        Bench bench;
        bench.write("MenuResource", 1, {{"KeyLink", "m"}, {"type_", "1"}, {"name_", "Module"}});
        bench.put("icons", "a.png", "bytes");
        QVERIFY(bench.start());
        std::vector<store::Change> seen;
        QVERIFY(bench.store().readLog(0, 1000, &seen).ok());
        const int64_t past = seen.back().id;
        const auto compares = [&](const store::Change& change) {
            bench.mirror.changed(change);
            const bool idle = bench.mirror.isIdle();
            return !idle && QTest::qWaitFor([&] { return bench.settled(); }, 30000);
        };
        bench.write("MenuResource", 2, {{"KeyLink", "m"}, {"caption", "Модуль"}});
        bench.write("MenuResource", 1, {{"KeyLink", "n"}, {"type_", "3"}, {"name_", "Form"}});
        bench.write("MenuResource", 4, {{"KeyLink", "n"}});
        bench.write("MenuResourceFolder", 1, {{"KeyLink", "f"}, {"type_", "2"}, {"caption", "x"}});
        bench.write("MenuFolder", 1, {{"KeyLink", "d"}, {"caption", "x"}});
        bench.write("MenuResource", 2, {{"KeyLink", "m"}, {"name_", "Other"}}); // may be a file
        bench.write("MenuResourceFolder", 2, {{"KeyLink", "sub"}, {"caption", "Цех 2"}});
        bench.write("MenuResource", 1, {{"KeyLink", "z"}, {"type_", "4"}, {"name_", "z.txt"}});
        bench.write("MenuResource", 4, {{"KeyLink", "z"}});
        QTRY_VERIFY(bench.settled());
        std::vector<store::Change> changes;
        QVERIFY(bench.store().readLog(past, 1000, &changes).ok());
        QCOMPARE(changes.size(), size_t(9));
        for (size_t i = 0; i < changes.size(); ++i)
            QVERIFY2(compares(changes[i]) == (i >= 5), qPrintable(QString::number(i)));
    }

    void onlyAFolderOfFilesMakesTheWholeAreaCompared() {
        Bench bench;
        bench.write("MenuResource", 1, {{"KeyLink", "m"}, {"type_", "1"}, {"name_", "Module"}});
        bench.write("MenuResourceFolder", 1, {{"KeyLink", "f"}, {"type_", "1"}, {"caption", "x"}});
        bench.put("icons", "a.png", "bytes");
        QVERIFY(bench.start());
        const uint64_t before = bench.mirror.comparisons();
        bench.write("MenuResource", 2, {{"KeyLink", "m"}, {"name_", "Other"}});
        bench.write("MenuResource", 2, {{"KeyLink", "m"}, {"MenuResourceFolderKey", "f"}});
        bench.write("MenuResourceFolder", 2, {{"KeyLink", "f"}, {"caption", "y"}});
        bench.put("icons", "b.png", "new");
        bench.write("MenuResource", 2, {{"KeyLink", bench.keyOf("b.png")}, {"name_", "c.png"}});
        QTRY_VERIFY(bench.settled());
        QCOMPARE(bench.local("icons/c.png"), QByteArray("new"));
        QCOMPARE(bench.local("icons/b.png"), QByteArray("missing"));
        QCOMPARE(bench.mirror.comparisons(), before);
        bench.write("MenuResourceFolder", 2, {{"KeyLink", "icons"}, {"caption", "pictures"}});
        QTRY_COMPARE(bench.local("pictures/a.png"), QByteArray("bytes"));
        QVERIFY(bench.mirror.comparisons() > before);
    }

    void namesThatFilesExchangeAreFollowed() {
        Bench bench;
        bench.put("icons", "a.png", "one");
        bench.put("icons", "b.png", "other");
        QVERIFY(bench.start());
        const std::string a = bench.keyOf("a.png"), b = bench.keyOf("b.png");
        for (const auto& [key, name] :
             {std::pair(a, "c.png"), std::pair(b, "a.png"), std::pair(a, "b.png")})
            bench.write("MenuResource", 2, {{"KeyLink", key}, {"name_", name}});
        QTRY_COMPARE(bench.local("icons/b.png"), QByteArray("one"));
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("other"));
        bench.write("MenuResource", 2, {{"KeyLink", a}, {"name_", "B.png"}}); // no other name
        QTRY_COMPARE(bench.local("icons/B.png"), QByteArray("one"));
        QTRY_COMPARE(bench.local("icons/b.png"), QByteArray("missing"));
        bench.write("MenuResource", 2, {{"KeyLink", b}, {"type_", "1"}}); // no file any more
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("missing"));
    }

    void whateverChangesTheCopyIsTheArea() {
        Bench bench;
        bench.put("icons", "0.png", "first");
        QVERIFY(bench.start());
        std::mt19937 random(QRandomGenerator::global()->generate());
        const auto below = [&random](int most) { return int(random() % unsigned(most)); };
        const auto name = [&] { return QString("%1.png").arg(below(6)); };
        const QStringList folders{"icons", "icons/Цех 1", ""};
        const char* const links[] = {"icons", "sub", ""};
        for (int step = 0; step < 150; ++step) {
            const std::string key = bench.keyOf(name());
            switch (below(6)) {
            case 0:
            case 1:
                bench.put(folders[below(3)], name(), QByteArray::number(step), 1700000000 + step);
                break;
            case 2:
                if (!key.empty())
                    bench.write("MenuResource", 2,
                                {{"KeyLink", key}, {"name_", name().toStdString()}});
                break;
            case 3:
                if (!key.empty())
                    bench.write("MenuResource", 2,
                                {{"KeyLink", key}, {"MenuResourceFolderKey", links[below(3)]}});
                break;
            case 4:
                if (!key.empty())
                    bench.write("MenuResource", below(2) == 0 ? 4 : 2,
                                {{"KeyLink", key}, {"type_", below(2) == 0 ? "1" : "4"}});
                break;
            default:
                if (below(5) == 0)
                    bench.write("MenuResourceFolder", 2,
                                {{"KeyLink", "sub"},
                                 {"caption", below(2) == 0 ? "Цех 1" : "Цех 2"},
                                 {"ParentKey", below(2) == 0 ? "icons" : ""}});
            }
            if (below(3) != 0)
                continue; // several come together
            QTRY_VERIFY(bench.settled());
            QTRY_COMPARE_WITH_TIMEOUT(bench.copies(), bench.area(), 10000);
        }
        QTRY_COMPARE(bench.copies(), bench.area());
        QVERIFY2(bench.problems.isEmpty(), qPrintable(bench.problems.join('\n')));
    }

    void changesFollowByNotification() {
        Bench bench;
        bench.put("icons", "a.png", "old");
        QVERIFY(bench.start());
        bench.put("icons", "a.png", "newer", 1700000001);
        bench.put("icons", "b.png", "second");
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("newer"));
        QTRY_COMPARE(bench.local("icons/b.png"), QByteArray("second"));
        CToolFileDel del(&bench.module);
        del.files = {{"icons", "a.png"}};
        del.Perform(false);
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("missing"));
        bench.write("MenuResourceFolder", 2, {{"KeyLink", "icons"}, {"caption", "pictures"}});
        QTRY_COMPARE(bench.local("pictures/b.png"), QByteArray("second"));
        QTRY_COMPARE(bench.local("icons/b.png"), QByteArray("missing"));
        QVERIFY(!QFileInfo::exists(bench.work + "files/icons")); // empty folders go too
    }

    void bytesChangedByHandAreFollowed() {
        Bench bench;
        bench.put("icons", "a.png", "one");
        bench.put("icons", "b.png", "other");
        QVERIFY(bench.start());
        const bool lite = bench.kind->name() == "sqlite";
        const auto set = [&](const QString& bytes) { // of the file whose size is 3
            return bench.byHand(
                lite ? QString("UPDATE \"MenuResourceFile\" SET \"data\" = "
                               "CAST('%1' AS BLOB), \"size\" = length('%1') WHERE \"size\" = 3")
                           .arg(bytes)
                     : QString("UPDATE \"MenuResourceFileData\" SET \"data\" = '%1' "
                               "WHERE \"KeyLink\" IN (SELECT \"KeyLink\" FROM "
                               "\"MenuResourceFile\" WHERE \"size\" = 3)")
                           .arg(bytes));
        };
        QVERIFY(set("two")); // of the same length and time
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("two"));
        QVERIFY(set("longer"));
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("longer"));
        QCOMPARE(bench.local("icons/b.png"), QByteArray("other"));
        QVERIFY2(bench.problems.isEmpty(), qPrintable(bench.problems.join('\n')));
    }

    void aFileWithoutATimeIsFollowedAsWell() {
        Bench bench;
        bench.put("icons", "a.png", "one", qQNaN());
        QVERIFY(bench.start());
        bench.put("icons", "a.png", "two", qQNaN());
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("two"));
    }

    void aTimeThatTheDiskCannotHoldIsCopiedOnce_data() {
        QTest::addColumn<double>("time");
        for (const double time : {1e300, -1e300, 4294967296.0 * 8, -5e9, -0.5})
            QTest::newRow(QByteArray::number(time)) << time;
    }
    void aTimeThatTheDiskCannotHoldIsCopiedOnce() {
        QFETCH(double, time);
        Bench bench;
        bench.put("icons", "a.png", "one", time);
        QVERIFY2(bench.failures.isEmpty(), qPrintable(bench.failures.join('\n')));
        QVERIFY(bench.start());
        QCOMPARE(bench.local("icons/a.png"), QByteArray("one"));
        FileMirror again(bench.opener(), bench.work);
        QSignalSpy updated(&again, &FileMirror::updated);
        QString error;
        QVERIFY(again.start(&error));
        QTRY_VERIFY(again.isIdle());
        QCOMPARE(updated.count(), 0);
        bench.put("icons", "a.png", "two", time); // told by its notification alone
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("two"));
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
        Bench bench;
        bench.put("icons", "a.png", "x");
        bench.write("MenuResourceFolder", 1,
                    {{"KeyLink", key.toStdString()}, {"type_", "4"}, {"caption", "top"}});
        QVERIFY2(bench.failures.isEmpty(), qPrintable(bench.failures.join('\n')));
        // By hand: the store refuses to put a folder below itself.
        const QString table = bench.kind->name() == "sqlite" ? "\"MenuResourceFolder\""
                                                             : "public.\"MenuResourceFolder\"";
        QVERIFY(parent.isEmpty() || bench.byHand("UPDATE " + table + " SET \"ParentKey\" = '" +
                                                 parent + "' WHERE \"KeyLink\" = '" + key + "'"));
        QVERIFY(bench.start());
        QCOMPARE(bench.local("icons/a.png"), QByteArray("x"));
    }

    void whatIsUpToDateIsNotWrittenAgain() {
        Bench bench;
        bench.put("icons", "a.png", "same");
        QVERIFY(bench.start());
        QFile::remove(bench.work + "files/icons/a.png");
        FileMirror again(bench.opener(), bench.work);
        QSignalSpy updated(&again, &FileMirror::updated);
        QString error;
        QVERIFY(again.start(&error));
        QTRY_VERIFY(again.isIdle());
        QCOMPARE(bench.local("icons/a.png"), QByteArray("same")); // damage is repaired
        QCOMPARE(updated.count(), 1);
        FileMirror third(bench.opener(), bench.work);
        QSignalSpy untouched(&third, &FileMirror::updated);
        QVERIFY(third.start(&error));
        QTRY_VERIFY(third.isIdle());
        QCOMPARE(untouched.count(), 0);
    }

    void filesGoneWhileTheClientWasAwayAreRemovedAndOthersAreNot() {
        Bench bench;
        bench.put("icons", "a.png", "x");
        QVERIFY(bench.start());
        QFile own(bench.work + "files/icons/own.txt");
        QVERIFY(own.open(QIODevice::WriteOnly));
        own.write("mine");
        own.close();
        CToolFileDel del(&bench.module);
        del.files = {{"icons", "a.png"}};
        del.Perform(false);
        FileMirror later(bench.opener(), bench.work);
        QString error;
        QVERIFY(later.start(&error));
        QTRY_VERIFY(later.isIdle());
        QCOMPARE(bench.local("icons/a.png"), QByteArray("missing"));
        QCOMPARE(bench.local("icons/own.txt"), QByteArray("mine"));
    }

    void captionsThatAreNoPlainNamesAreSkippedAndNamed_data() {
        QTest::addColumn<QString>("caption");
        for (const char* caption : {"..", ".", "a/../../b", "/etc", "a/b", "tab\tname"})
            QTest::newRow(caption) << QString(caption);
    }
    void captionsThatAreNoPlainNamesAreSkippedAndNamed() {
        QFETCH(QString, caption);
        Bench bench;
        bench.put("icons", "good.png", "good");
        bench.put("icons/Цех 1", "bad.png", "bad");
        QVERIFY(bench.write("MenuResourceFolder", 2,
                            {{"KeyLink", "sub"}, {"caption", caption.toStdString()}}));
        QVERIFY(bench.start());
        QCOMPARE(bench.local("icons/good.png"), QByteArray("good"));
        QCOMPARE(bench.problems.size(), 1);
        QVERIFY(bench.problems[0].contains("bad.png"));
        QVERIFY(!QFileInfo::exists(bench.work + "bad.png"));
        QVERIFY(!QFileInfo::exists(bench.work + "files/bad.png"));
        QVERIFY(!QFileInfo::exists(bench.work + "b/bad.png"));
        QVERIFY(!QFileInfo::exists(bench.work + "files/icons/a"));
        QVERIFY(!QFileInfo::exists("/etc/bad.png"));
        bench.put("icons", "another.png", "x"); // told once, not at every look
        QTRY_COMPARE(bench.local("icons/another.png"), QByteArray("x"));
        QCOMPARE(bench.problems.size(), 1);
    }

    void symbolicLinksAreNotFollowed() {
        Bench bench;
        const QString outside = bench.dir.path() + "/outside";
        QDir().mkpath(outside);
        QFile victim(outside + "/victim.txt");
        QVERIFY(victim.open(QIODevice::WriteOnly));
        victim.write("untouched");
        victim.close();
        QDir().mkpath(bench.work + "files");
        QVERIFY(QFile::link(outside, bench.work + "files/icons"));
        QVERIFY(QFile::link(outside + "/victim.txt", bench.work + "files/root.txt"));
        bench.put("icons", "victim.txt", "overwritten");
        bench.put("", "root.txt", "new content");
        QVERIFY(bench.start());
        QVERIFY(victim.open(QIODevice::ReadOnly));
        QCOMPARE(victim.readAll(), QByteArray("untouched"));
        QCOMPARE(bench.problems.size(), 1);                           // the folder that is a link
        QCOMPARE(bench.local("root.txt"), QByteArray("new content")); // the link was replaced
        QVERIFY(!QFileInfo(bench.work + "files/root.txt").isSymLink());
    }

    void aManifestFromOtherHandsRemovesNothingOutside() {
        Bench bench;
        QFile victim(bench.work + "victim.txt");
        QVERIFY(victim.open(QIODevice::WriteOnly));
        victim.write("x");
        victim.close();
        QFile list(bench.work + "mirror.list");
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write("../victim.txt\n/etc/hostname\n\n..\n");
        list.close();
        QVERIFY(bench.start());
        QVERIFY(victim.exists());
    }

    void aDirectoryThatCannotBeUsedIsAnError() {
        Bench bench;
        QFile file(bench.work + "files");
        QVERIFY(file.open(QIODevice::WriteOnly));
        QString error;
        QVERIFY(!bench.mirror.start(&error));
        QVERIFY(error.contains("files"));
        QVERIFY(bench.mirror.isIdle());
    }

    void aThousandFilesDoNotHoldUpTheWindow() {
        Bench bench;
        for (int i = 0; i < 1000; ++i)
            bench.put("icons", QStringLiteral("f%1").arg(i), QByteArray(1000, 'x'));
        QElapsedTimer clock;
        qint64 longest = 0;
        QTimer beat;
        QElapsedTimer since;
        connect(&beat, &QTimer::timeout, this, [&] { longest = qMax(longest, since.restart()); });
        since.start();
        clock.start();
        beat.start(1);
        QVERIFY(bench.start());
        qInfo("1000 files in %lld ms, longest wait %lld ms", clock.elapsed(), longest);
        QCOMPARE(QDir(bench.work + "files/icons").entryList(QDir::Files).size(), 1000);
        QVERIFY(longest < 200);
    }

    void aLongCopyTellsHowFarItIs() {
        Bench bench;
        for (int i = 0; i < 50; ++i)
            bench.put("icons", QStringLiteral("f%1").arg(i), "x");
        app::MirrorPace pace;
        pace.firstProgressAfter = pace.progressInterval = app::MirrorPace::Milliseconds(0);
        FileMirror mirror(bench.opener(), bench.work, pace);
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
        Bench bench;
        bench.put({}, "plan.txt", "plan");
        bench.put("icons", "pump.png", "p");
        bench.put("icons/Цех 1", "valve.png", "v");
        QVERIFY(bench.start()); // an engineer's client with the same directory
        FileMirror mirror(bench.opener(), bench.work, {}, app::MirrorExtent::Icons);
        QObject::connect(&bench.pump, &client::NotificationPump::changed, &mirror,
                         &FileMirror::changed);
        const QString other = bench.dir.path() + "/other/";
        QDir().mkpath(other);
        FileMirror alone(bench.opener(), other, {}, app::MirrorExtent::Icons);
        QObject::connect(&bench.pump, &client::NotificationPump::changed, &alone,
                         &FileMirror::changed);
        QString error;
        QVERIFY(mirror.start(&error) && alone.start(&error));
        QTRY_VERIFY(mirror.isIdle() && alone.isIdle());
        QVERIFY(QFile::exists(bench.work + "files/plan.txt"));
        QVERIFY(!QFile::exists(other + "files/plan.txt"));
        QVERIFY(QFile::exists(other + "files/icons/pump.png"));
        QVERIFY(QFile::exists(other + "files/icons/Цех 1/valve.png"));
        bench.put({}, "plan.txt", "plan 2");
        bench.put("icons", "fan.png", "f");
        QTRY_VERIFY(QFile::exists(other + "files/icons/fan.png"));
        QTRY_VERIFY(alone.isIdle());
        QVERIFY(!QFile::exists(other + "files/plan.txt"));
    }

    void aLongCopyShowsAndNotesItsFilesInStages() {
        Bench bench;
        for (int i = 0; i < 20; ++i)
            bench.put("icons/Цех 1", QStringLiteral("f%1").arg(i), "x");
        app::MirrorPace pace;
        pace.stage = app::MirrorPace::Milliseconds(0);
        pace.firstProgressAfter = pace.progressInterval = app::MirrorPace::Milliseconds(0);
        FileMirror mirror(bench.opener(), bench.work, pace);
        QSignalSpy updated(&mirror, &FileMirror::updated);
        QSignalSpy progress(&mirror, &FileMirror::progress);
        QString error;
        QVERIFY(mirror.start(&error));
        mirror.refresh(); // what is asked for meanwhile is not left to the end
        QTRY_VERIFY(mirror.isIdle());
        QVERIFY(updated.size() >= 20);
        // Each listing asks for what is missing only.
        QVERIFY(progress.size() >= 20);
        QCOMPARE(QDir(bench.work + "files/icons/Цех 1").entryList(QDir::Files).size(), 20);
        QFile list(bench.work + "mirror.list");
        QVERIFY(list.open(QIODevice::ReadOnly));
        QCOMPARE(list.readAll().count('\n'), 20);
    }

    void foldersTakenAwayAndMovedAreMadeAgain() {
        Bench bench;
        bench.put("icons/Цех 1", "a.png", "x");
        bench.put("icons/Цех 1", "b.png", "y");
        QVERIFY(bench.start());
        const QString folder = bench.work + "files/icons/Цех 1";
        QVERIFY(QDir(folder).removeRecursively());
        bench.mirror.refresh();
        QTRY_COMPARE(bench.local("icons/Цех 1/b.png"), QByteArray("y"));
        QTRY_VERIFY(bench.settled());
        QCOMPARE(bench.local("icons/Цех 1/a.png"), QByteArray("x"));
        QVERIFY(QDir().rename(folder, bench.work + "files/elsewhere"));
        bench.mirror.refresh();
        QTRY_COMPARE(bench.local("icons/Цех 1/b.png"), QByteArray("y"));
        QCOMPARE(bench.local("icons/Цех 1/a.png"), QByteArray("x"));
        QVERIFY(bench.problems.isEmpty());
    }

    void iconsComeFirst() {
        Bench bench;
        bench.write("MenuResourceFolder", 1,
                    {{"KeyLink", "d"}, {"type_", "4"}, {"caption", "docs"}});
        bench.put("", "a.txt", "x");
        bench.put("docs", "b.txt", "x");
        bench.put("icons", "z.png", "x");
        app::MirrorPace pace;
        pace.stage = app::MirrorPace::Milliseconds(0);
        FileMirror mirror(bench.opener(), bench.work, pace);
        QStringList listed;
        connect(&mirror, &FileMirror::updated, this, [&] {
            if (!listed.isEmpty())
                return;
            for (const char* file : {"a.txt", "docs/b.txt", "icons/z.png"})
                if (QFileInfo::exists(bench.work + "files/" + file))
                    listed << file;
        });
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_VERIFY(mirror.isIdle());
        QVERIFY(listed.contains("icons/z.png"));
    }

    void aStoreThatDoesNotOpenIsTriedAgain() {
        Bench bench;
        bench.put("icons", "a.png", "x");
        std::atomic<int> attempts = 0;
        app::MirrorPace pace;
        pace.retry = app::MirrorPace::Milliseconds(20);
        FileMirror mirror(
            [&attempts, open = bench.opener()](store::Status* status) {
                if (++attempts > 3)
                    return open(status);
                *status = {store::CannotConnect, "нет ответа"};
                return std::unique_ptr<store::Store>();
            },
            bench.work, pace);
        QSignalSpy problems(&mirror, &FileMirror::problem);
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("x"));
        QCOMPARE(int(attempts), 4);
        QTRY_VERIFY(mirror.isIdle());
        QCOMPARE(problems.size(), 1); // and not each time
        QVERIFY(problems[0][0].toString().contains("нет ответа"));
    }

    void aMirrorAtRestHoldsNoConnection() {
        Bench bench;
        std::atomic<int> opened = 0;
        app::MirrorPace pace;
        pace.close = app::MirrorPace::Milliseconds(20);
        FileMirror mirror(
            [&opened, open = bench.opener()](store::Status* status) {
                ++opened;
                return open(status);
            },
            bench.work, pace);
        QString error;
        QVERIFY(mirror.start(&error));
        QTRY_VERIFY(mirror.isIdle());
        QCOMPARE(int(opened), 1);
        const auto opensAgain = [&] {
            QTest::qWait(100);
            mirror.refresh();
            return QTest::qWaitFor([&] { return mirror.isIdle(); }) && opened > 1;
        };
        QTRY_VERIFY(opensAgain());
    }

    void closingWaitsForNoServer() {
        Bench bench;
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
                bench.work);
            QString error;
            QVERIFY(mirror.start(&error));
            QTRY_VERIFY(bool(waits));
            QVERIFY(!mirror.isIdle());
            clock.start();
        }
        QVERIFY(clock.elapsed() < 2000);
    }

    void nothingIsAskedOfAStoreThatIsAway() {
        Bench bench;
        std::atomic<int> opened = 0;
        FileMirror mirror(
            [&opened, open = bench.opener()](store::Status* status) {
                ++opened;
                return open(status);
            },
            bench.work);
        mirror.setConnected(false);
        QString error;
        QVERIFY(mirror.start(&error));
        bench.put("icons", "a.png", "x");
        mirror.refresh();
        QVERIFY(mirror.isIdle());
        QTest::qWait(100);
        QCOMPARE(int(opened), 0);
        mirror.setConnected(true);
        QVERIFY(!mirror.isIdle());
        QTRY_COMPARE(bench.local("icons/a.png"), QByteArray("x"));
    }
};

QTEST_MAIN(TestMirror)
#include "tst_mirror.moc"
