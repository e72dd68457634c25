// Files of SQLite stores that something has happened to. The programs never fall over them, never
// call a sound one damaged, name damage and the way out, and change nothing in what is damaged.
// ORVO_TRIAL_ROUNDS is the number of files, ORVO_TRIAL_KEEP a directory for those that were not
// borne. What is sound is for the database's own shell to say.
#include "Trial.h"

#include "tests/admin/AdminRun.h"
#include "tests/store/SqliteFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QProcess>

#include <algorithm>
#include <random>

using namespace orvo::test;
using orvo::store::test::bytesOf;
using orvo::store::test::writeFile;

namespace {

constexpr int pageSize = 4096;

struct Files {
    QByteArray store, log;
};

/// What the database's own shell finds in a copy.
struct Verdict {
    bool isStore = false; ///< bears the mark
    bool sound = false;
    QByteArray content; ///< a digest of everything in it
    QString words;
};

Verdict judge(const Files& files) {
    QTemporaryDir place;
    const QString copy = place.filePath("copy.db");
    writeFile(copy, files.store);
    if (!files.log.isEmpty())
        writeFile(copy + "-wal", files.log);
    Verdict verdict;
    verdict.isStore =
        orvo::store::test::shell(copy, "PRAGMA application_id").endsWith("1332901487");
    verdict.words = orvo::store::test::shell(copy, "PRAGMA integrity_check");
    verdict.sound = verdict.isStore && verdict.words == "ok";
    verdict.content = QCryptographicHash::hash(orvo::store::test::shell(copy, ".dump").toUtf8(),
                                               QCryptographicHash::Sha256);
    return verdict;
}

/// What file and log say together, without what merely counts and tells of the journal.
QByteArray carriedOver(const Files& files) {
    QTemporaryDir place;
    const QString copy = place.filePath("copy.db");
    writeFile(copy, files.store);
    if (!files.log.isEmpty())
        writeFile(copy + "-wal", files.log);
    orvo::store::test::shell(copy, "PRAGMA wal_checkpoint(TRUNCATE)");
    QByteArray all = bytesOf(copy) + bytesOf(copy + "-wal");
    for (const auto& [from, to] : {std::pair(18, 20), {24, 28}, {92, 100}})
        for (int i = from; i < std::min<int>(to, all.size()); ++i)
            all[i] = '\0';
    return all;
}

/// Makes sound files, and spoils them.
class Spoiler {
public:
    explicit Spoiler(unsigned seed) : m_random(seed) {}

    bool prepare(const AdminRun& admin) {
        if (!admin.init() || admin.run({"demo"}).code != 0)
            return false;
        admin.sql("PRAGMA wal_checkpoint(TRUNCATE)");
        m_sound.store = bytesOf(admin.storePath());
        m_withLog = withLog(admin, "UPDATE \"Menu\" SET \"caption\" = \"caption\" || '+'");
        // The log of another store, much like this one.
        m_foreign = withLog(admin, "DELETE FROM \"Menu\" WHERE rowid % 2 = 0; UPDATE "
                                   "\"MenuResource\" SET \"params\" = 'p'");
        return !m_withLog.log.isEmpty() && !m_foreign.log.isEmpty();
    }

    static constexpr int kinds = 13;
    Files spoiled(int kind) {
        Files files = below(2) == 0 ? m_sound : m_withLog;
        QByteArray& bytes = files.store;
        const int pages = bytes.size() / pageSize;
        switch (kind) {
        case 0:
            flip(bytes, 0, bytes.size());
            break;
        case 1:
            bytes.truncate(1 + below(bytes.size() - 1));
            break;
        case 2: {
            const int a = below(pages) * pageSize, b = below(pages) * pageSize;
            const QByteArray one = bytes.mid(a, pageSize), other = bytes.mid(b, pageSize);
            bytes.replace(a, pageSize, other).replace(b, pageSize, one);
            break;
        }
        case 3: // more pages than there are
            bytes[30] = static_cast<char>(bytes[30] + 1 + below(100));
            break;
        case 4:
            flip(bytes, 0, 100);
            break;
        case 5:
            files = {m_withLog.store, {}};
            break;
        case 6:
            files = {m_sound.store, m_foreign.log};
            break;
        case 7:
            files = m_withLog;
            flip(files.log, 0, files.log.size());
            break;
        case 8:
            files = m_withLog;
            files.log.truncate(1 + below(files.log.size() - 1));
            break;
        case 9:
            bytes.clear();
            break;
        case 10:
            bytes = foreign();
            break;
        case 11:
            bytes.replace(below(pages) * pageSize, pageSize, QByteArray(pageSize, '\0'));
            break;
        default: {
            const int length = 16 + below(pageSize), at = below(bytes.size() - length);
            for (int i = at; i < at + length; ++i)
                bytes[i] = static_cast<char>(below(256));
        }
        }
        return files;
    }

private:
    int below(int most) { return int(m_random() % unsigned(std::max(1, most))); }

    void flip(QByteArray& bytes, int from, int to) {
        for (int left = 1 + below(8); left > 0; --left) {
            const int at = from + below(to - from);
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
        }
    }

    /// The files as they are while somebody has the store open and has changed it so.
    static Files withLog(const AdminRun& admin, const char* change) {
        QTemporaryDir place;
        const QString path = place.filePath("live.db");
        QFile::copy(admin.storePath(), path);
        QProcess holder;
        holder.start("sqlite3", {"-batch", path});
        holder.write(QByteArray("PRAGMA wal_autocheckpoint = 0; ") + change +
                     "; SELECT 'changed';\n");
        QByteArray words;
        while (!words.contains("changed") && holder.waitForReadyRead())
            words += holder.readAll();
        Files files{bytesOf(path), bytesOf(path + "-wal")};
        holder.closeWriteChannel();
        holder.waitForFinished();
        return files;
    }

    /// What another program has made.
    QByteArray foreign() {
        switch (below(4)) {
        case 0:
            return QByteArray("Заметки дежурного\n").repeated(below(2000));
        case 1: {
            QByteArray noise(below(300000), '\0');
            for (char& c : noise)
                c = static_cast<char>(below(256));
            return noise;
        }
        case 2:
            return "SQLite format 3" + QByteArray(1, '\0') + QByteArray(below(9000), 'x');
        default: {
            QTemporaryDir place;
            orvo::store::test::shell(place.filePath("other.db"),
                                     "CREATE TABLE t (a); INSERT INTO t VALUES (1)");
            return bytesOf(place.filePath("other.db"));
        }
        }
    }

    std::mt19937 m_random;
    Files m_sound, m_withLog, m_foreign;
};

} // namespace

class TestTrialDamage : public QObject {
    Q_OBJECT
private slots:
    void programsTellOfDamageAndLeaveItAsItIs() {
        Spoiler spoiler(seed());
        QVERIFY(spoiler.prepare(m_admin));
        const int wanted = rounds(2 * Spoiler::kinds);
        int sound = 0, damaged = 0;
        QStringList all;
        for (int round = 0; round < wanted; ++round) {
            const int kind = round % Spoiler::kinds;
            const Files files = spoiler.spoiled(kind);
            const Verdict verdict = judge(files);
            const QString what = QString("file %1, kind %2 (%3): ")
                                     .arg(round)
                                     .arg(kind)
                                     .arg(verdict.words.left(200));
            QString wrong;
            for (const QStringList& command :
                 {QStringList{"check"}, QStringList{"list", "forms"}, QStringList{"history"},
                  QStringList{"export", "-"}, QStringList{"user", "list"}}) {
                lay(files);
                const QString one = wrongOf(command, files, verdict);
                if (wrong.isEmpty() && !one.isEmpty())
                    wrong = command.first() + ' ' + one;
            }
            lay(files);
            if (wrong.isEmpty())
                wrong = wrongOfClient(files, verdict);
            if (const QString keep = qEnvironmentVariable("ORVO_TRIAL_KEEP");
                !wrong.isEmpty() && !keep.isEmpty()) {
                writeFile(QString("%1/%2.db").arg(keep).arg(round), files.store);
                writeFile(QString("%1/%2.db-wal").arg(keep).arg(round), files.log);
            }
            if (!wrong.isEmpty())
                all << what + wrong;
            sound += verdict.sound ? 1 : 0;
            damaged += verdict.isStore && !verdict.sound ? 1 : 0;
        }
        qInfo("%d files: %d sound all the same, %d damaged, %d no stores", wanted, sound, damaged,
              wanted - sound - damaged);
        QVERIFY2(all.isEmpty(), qPrintable(all.join('\n')));
    }

private:
    Files present() const {
        return {bytesOf(m_admin.storePath()), bytesOf(m_admin.storePath() + "-wal")};
    }
    void lay(const Files& files) const {
        for (const char* suffix : {"", "-wal", "-shm"})
            QFile::remove(m_admin.storePath() + suffix);
        QVERIFY(writeFile(m_admin.storePath(), files.store));
        if (!files.log.isEmpty())
            QVERIFY(writeFile(m_admin.storePath() + "-wal", files.log));
    }
    /// What is wrong with what a command does on these files; empty if nothing is.
    QString wrongOf(const QStringList& command, const Files& files, const Verdict& verdict) const {
        const AdminResult result = m_admin.run(command);
        const QString said = result.out.left(400) + result.err;
        if (result.code < 0 || result.code > 2)
            return "fell over: " + said;
        if (result.code == 2 && !result.err.startsWith("orvo-admin: "))
            return "no words: " + said;
        const bool saysDamaged = result.err.contains("повреждён (");
        if (saysDamaged && verdict.sound)
            return "calls a sound store damaged: " + said;
        if (saysDamaged &&
            (!result.err.contains("ничего не удаляйте") || !result.err.contains(".recover")))
            return "does not tell the way out: " + said;
        const bool tells = result.code == 2 || result.out.contains("база данных: ");
        if (command.first() == "check" && verdict.isStore && !verdict.sound && !tells)
            return "does not see the damage: " + said;
        const QString change = changeOf(files, verdict, tells);
        return change.isEmpty() ? QString() : change + ": " + said;
    }

    QString wrongOfClient(const Files& files, const Verdict& verdict) const {
        QProcess client;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        client.setProcessEnvironment(environment);
        client.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-client",
                     {"--store", m_admin.storePath(), "--login", "engineer", "--work-dir",
                      m_admin.path("work"), "--screenshot", m_admin.path("window.png")});
        // With a part of the store it lives on, and waits for the rest.
        constexpr int patience = 60000, look = 5000;
        const bool ended = client.waitForFinished(verdict.sound ? patience : look);
        if (!ended) {
            client.kill();
            client.waitForFinished();
        }
        const QString words = QString::fromUtf8(client.readAllStandardError());
        if (!ended)
            return verdict.sound ? "the client does not open a sound store: " + words : QString();
        if (client.exitStatus() != QProcess::NormalExit || client.exitCode() > 1)
            return "the client fell over: " + words;
        if (client.exitCode() == 1 && words.isEmpty())
            return "the client says nothing";
        if (verdict.sound && words.contains("повреждён ("))
            return "the client calls a sound store damaged: " + words;
        const QString change = changeOf(files, verdict, words.contains("повреждён ("));
        return change.isEmpty() ? QString() : "the client " + change + ": " + words;
    }

    /// Whether it has changed them.
    QString changeOf(const Files& files, const Verdict& verdict, bool told) const {
        const Files now = present();
        if (verdict.sound) {
            const Verdict after = judge(now);
            return after.sound && after.content == verdict.content ? QString()
                                                                   : "changed a sound one";
        }
        // What nobody has noticed is carried over like any other log.
        const bool same = told || !verdict.isStore
                              ? now.store == files.store && now.log == files.log
                              : carriedOver(now) == carriedOver(files);
        return same ? QString() : "changed what is damaged";
    }

    AdminRun m_admin;
};

QTEST_GUILESS_MAIN(TestTrialDamage)
#include "tst_trial_damage.moc"
