// A full disk under the client's work directory: the copy of the file area and the writes that were
// not saved. Both tell of it, hold no half of a file, and go on when there is room again.
// ORVO_TRIAL_ROUNDS is the number of disks.
#include "Trial.h"

#include "apps/client/FileMirror.h"
#include "platform/client/UnwrittenList.h"
#include "tests/client/HostFixture.h"
#include "tests/store/SqliteFiles.h"

#include <QDir>
#include <QDirIterator>

#include <random>

using namespace orvo;
using namespace orvo::test;
using store::test::bytesOf;
using store::test::SmallDisk;

namespace {

/// A host whose work directory is a small disk.
struct Fixture : Host {
    QString work = dir.path() + "/workdir/";
    std::unique_ptr<SmallDisk> disk;
    QStringList told;

    explicit Fixture(const QByteArray& size) {
        QDir().mkpath(work);
        disk = std::make_unique<SmallDisk>(work, size.constData());
    }
    /// All files below a directory of the disk, with their bytes.
    std::map<QString, QByteArray> files(const QString& directory) const {
        std::map<QString, QByteArray> all;
        QDirIterator each(work + directory, QDir::Files | QDir::Hidden,
                          QDirIterator::Subdirectories);
        while (each.hasNext()) {
            const QString path = each.next();
            all[each.fileName()] = bytesOf(path);
        }
        return all;
    }
    bool isFullTold() const {
        return !told.filter(QRegularExpression("No space left on device|не осталось места"))
                    .isEmpty();
    }
};

} // namespace

class TestTrialWorkdir : public QObject {
    Q_OBJECT
private slots:
    void copyOfTheFileAreaGoesOnWhenThereIsRoom() {
        const int wanted = rounds(2);
        for (int round = 0; round < wanted; ++round) {
            Fixture fixture("size=" + QByteArray::number(100 + below(900)) + "k");
            if (!fixture.disk->mounted())
                QSKIP("needs the right to mount a file system");
            std::map<QString, QByteArray> wantedFiles;
            for (int i = 0; i < 12; ++i) {
                const QByteArray bytes(100000 + below(100000), char('a' + i));
                wantedFiles[QString("%1.bin").arg(i)] = bytes;
                QVERIFY(fixture.store()
                            .filePut({{"",
                                       std::to_string(i) + ".bin",
                                       {bytes.constData(), size_t(bytes.size())},
                                       1700000000.0 + i}})
                            .ok());
            }
            app::MirrorPace pace;
            pace.retry = std::chrono::milliseconds(200);
            app::FileMirror mirror(
                [&fixture](store::Status* status) {
                    return store::open(fixture.url, {"mirror", false}, status);
                },
                fixture.work, pace);
            connect(&mirror, &app::FileMirror::problem, this,
                    [&fixture](const QString& text) { fixture.told << text; });
            QString error;
            QVERIFY2(mirror.start(&error), qPrintable(error));
            QTRY_VERIFY_WITH_TIMEOUT(fixture.isFullTold(), 20000);
            QTRY_VERIFY_WITH_TIMEOUT(mirror.isIdle(), 20000);
            for (const auto& [name, bytes] : fixture.files("files"))
                QVERIFY2(wantedFiles.count(name) != 0 && wantedFiles[name] == bytes,
                         qPrintable(name));
            QVERIFY(fixture.disk->resize("size=8m"));
            QTRY_VERIFY_WITH_TIMEOUT(fixture.files("files") == wantedFiles, 20000);
        }
    }

    void unwrittenWritesAreKeptWhenThereIsRoom() {
        const int wanted = rounds(2);
        for (int round = 0; round < wanted; ++round) {
            Fixture fixture("size=64k");
            if (!fixture.disk->mounted())
                QSKIP("needs the right to mount a file system");
            client::UnwrittenList list(fixture.store());
            connect(&list, &client::UnwrittenList::told, this,
                    [&fixture](const QString& text) { fixture.told << text; });
            QString error;
            QVERIFY2(list.keepIn(fixture.work + "unwritten", &error), qPrintable(error));
            client::setUnwritten(*fixture.session, &list);
            // Writes that the store refuses, each with a text that fills the disk a little more.
            const int count = 12;
            QVERIFY(fixture.write("Menu", 1, {{"KeyLink", "there"}}));
            for (int i = 0; i < count; ++i)
                QVERIFY(
                    !fixture.write("Menu", 1,
                                   {{"KeyLink", "there"},
                                    {"caption", std::string(size_t(8000 + below(8000)), 'x')}}));
            QCOMPARE(list.entries().size(), size_t(count));
            QVERIFY2(fixture.isFullTold(), qPrintable(fixture.told.join('\n')));
            const auto kept = [&fixture] {
                int entries = 0;
                for (const auto& file : fixture.files("unwritten"))
                    entries += file.first.endsWith(".entry") ? 1 : 0;
                return entries;
            };
            QVERIFY(kept() < count);
            QVERIFY(fixture.disk->resize("size=8m"));
            QTRY_COMPARE_WITH_TIMEOUT(kept(), count, 20000);
            client::setUnwritten(*fixture.session, nullptr);
            // What is kept is whole: the list of the next process has all of it.
            QStringList typed, found;
            for (const client::UnwrittenEntry& entry : list.entries())
                typed << entry.id;
            QVERIFY(fixture.files("unwritten").size() >= size_t(count));
            for (const auto& [name, bytes] : fixture.files("unwritten"))
                if (name.endsWith(".entry")) {
                    QVERIFY2(bytes.startsWith("ORVOUNW1"), qPrintable(name));
                    found << name.section('.', 0, 0);
                }
            typed.sort();
            found.sort();
            QCOMPARE(found, typed);
        }
    }

private:
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }
    std::mt19937 m_random{seed()};
};

QTEST_MAIN(TestTrialWorkdir)
#include "tst_trial_workdir.moc"
