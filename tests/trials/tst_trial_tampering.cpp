// Backups that something has happened to on their way: none replaces a good store by a bad one, and
// a refusal changes nothing. Half of them have the checksum of what they were beside them: of those
// none is taken. ORVO_TRIAL_ROUNDS is their number.
#include "TrialStore.h"

#include <QProcess>

#include <algorithm>
#include <random>

using namespace orvo::test;

class TestTrialTampering : public TrialStore {
    Q_OBJECT
public:
    using TrialStore::TrialStore;

private slots:
    void init() { TrialStore::init(); }

    void noTamperedBackupSpoilsAGoodStore() {
        const QByteArray before = content();
        const QString good = m_admin->path("good"), bad = m_admin->path("bad");
        ORVO_DONE(run({"backup", good}));
        const QByteArray bytes = AdminRun::read(good), sum = AdminRun::read(good + ".sha256");
        // Archives of PostgreSQL are no databases: nobody edits values in them.
        const int kinds = isPostgres() ? 5 : 6;
        const int wanted = rounds(isPostgres() ? 4 : 12);
        int done = 0, refusedByContent = 0, same = 0, edited = 0;
        Log log = Log::GoesOn;
        for (int i = 0; done < wanted; ++i) {
            const QByteArray now = tampered(bytes, i % kinds);
            if (now == bytes)
                continue;
            const bool withSum = (i / kinds) % 2 == 0;
            m_admin->write("bad", now);
            QFile::remove(bad + ".sha256");
            if (withSum)
                m_admin->write("bad.sha256", sum);
            const QString what = QString("trial %1, kind %2: ").arg(i).arg(i % kinds);
            const AdminResult result = run({"restore", "--replace", bad});
            if (result.code != 0) {
                QVERIFY2(result.refused("orvo-admin: "), qPrintable(what + result.err));
                QVERIFY2(content() == before, qPrintable(what + result.err));
                refusedByContent += withSum ? 0 : 1;
            } else {
                // Without a checksum an edited text passes, and restore says that it may; the store
                // is sound all the same, and goes on.
                QVERIFY2(!withSum, qPrintable(what + "taken against its checksum"));
                QVERIFY2(result.out.contains("не каждый байт"), qPrintable(what + result.out));
                (content() == before ? same : edited) += 1;
                const AdminResult checked = run({"check"});
                QVERIFY2(checked.code <= 1 && !checked.out.contains("база данных"),
                         qPrintable(what + checked.out + checked.err));
                const auto store = open();
                QVERIFY2(store, qPrintable(what));
                int64_t position = 0;
                QVERIFY(store->logPosition(&position).ok());
                const AdminResult added = run({"ext", "add", QString(".t%1").arg(i)});
                QVERIFY2(added.code == 0, qPrintable(what + added.err));
                std::vector<orvo::store::Change> changes;
                QVERIFY2(store->readLog(position, 10, &changes).ok() && changes.size() == 1,
                         qPrintable(what));
                ORVO_DONE(run({"restore", "--replace", good}));
                log = Log::IsOfBackup;
            }
            ++done;
        }
        QCOMPARE(content(), before);
        QCOMPARE(fault(log), QString());
        qInfo("%d tampered backups, half of them with the checksum of the good one: those all "
              "refused; "
              "of the others %d refused by their content, %d gave what was backed up, %d had other "
              "values and were taken with a warning",
              done, refusedByContent, same, edited);
    }

private:
    /// One thing that happens to files, by its number.
    QByteArray tampered(QByteArray bytes, int kind) {
        constexpr int page = 4096;
        const auto below = [&](int most) { return int(m_random() % unsigned(std::max(1, most))); };
        const int pages = bytes.size() / page;
        switch (kind) {
        case 0: { // a bit
            const int at = below(bytes.size());
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
            return bytes;
        }
        case 1: // the rest is gone
            return bytes.left(1 + below(bytes.size() - 1));
        case 2: { // two pages in each other's place
            const int a = below(pages) * page, b = below(pages) * page;
            const QByteArray first = bytes.mid(a, page), second = bytes.mid(b, page);
            return bytes.replace(a, page, second).replace(b, page, first);
        }
        case 3: // a page is empty
            return bytes.replace(below(pages) * page, page, QByteArray(page, '\0'));
        case 4: { // some bytes of something else
            const int at = below(bytes.size() - 16);
            for (int i = 0; i < 16; ++i)
                bytes[at + i] = static_cast<char>(below(256));
            return bytes;
        }
        default: { // one value is another one
            m_admin->write("edited", bytes);
            static const char* const edits[] = {
                "UPDATE \"Menu\" SET \"caption\" = 'другое' WHERE rowid = (SELECT min(rowid) FROM "
                "\"Menu\")",
                "DELETE FROM \"NciEvent\"",
                "UPDATE \"NciPruned\" SET \"id\" = 0",
                "DROP TRIGGER \"Menu.deleted\"",
                "PRAGMA user_version = 1",
                "PRAGMA user_version = 0",
                "DELETE FROM \"MenuResource\" WHERE \"type_\" = 3"};
            QProcess shell;
            shell.start("sqlite3", {m_admin->path("edited"), edits[below(std::size(edits))]});
            shell.waitForFinished();
            return AdminRun::read(m_admin->path("edited"));
        }
        }
    }

    std::mt19937 m_random{seed()};
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestTrialTampering>(argc, argv);
}
#include "tst_trial_tampering.moc"
