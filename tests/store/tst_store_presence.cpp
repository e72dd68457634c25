// Who has a store open, as every other client learns it.
#include "StoreTest.h"

#include "platform/store/Presence.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvo::store;
using namespace orvo::store::test;

namespace {

OpenEdit edit(const char* key, const char* what = "элемент «Архив»") {
    return {"Menu", key, 1700000000, what};
}

/// "login: key key; login:" of what a client sees.
QByteArray text(const std::vector<PresenceEntry>& others) {
    QByteArray all;
    for (const PresenceEntry& one : others) {
        all += (all.isEmpty() ? "" : "; ") + QByteArray::fromStdString(one.login) + ":";
        for (const OpenEdit& edit : one.edits)
            all += " " + QByteArray::fromStdString(edit.key);
    }
    return all;
}

/// Looks when there is reason to, as a client does, until it sees that; how long that took, in
/// milliseconds, or -1. The other one speaks meanwhile.
int sees(Presence& presence, const QByteArray& expected, int ms = 10000,
         Presence* other = nullptr) {
    QElapsedTimer clock;
    clock.start();
    QByteArray seen;
    std::string why;
    while (clock.elapsed() < ms) {
        std::vector<PresenceEntry> others;
        const Status status = presence.look(&others);
        why = status.text;
        seen = text(others);
        if (status.ok() && seen == expected)
            return static_cast<int>(clock.elapsed());
        if (other != nullptr && !other->look(&others).ok())
            return -1;
        pollfd wait = {presence.wakeFd(), POLLIN, 0};
        ::poll(&wait, 1, std::min(presence.nextLookMs(), other != nullptr ? 50 : 2000));
    }
    qWarning("sees \"%s\" instead of \"%s\" %s", seen.constData(), expected.constData(),
             why.c_str());
    return -1;
}

/// Lets the others speak, as their clients' threads do.
void attend(Presence& presence) {
    std::vector<PresenceEntry> others;
    const Status status = presence.look(&others);
    QVERIFY2(status.ok(), status.text.c_str());
}

/// A process that takes part until it is killed.
int takePart(const char* url, const char* login) {
    Status status;
    const auto presence = openPresence(url, login, &status);
    if (!presence)
        return 1;
    presence->announce({edit("dead")});
    for (;;) {
        std::vector<PresenceEntry> others;
        if (!presence->look(&others).ok())
            return 1;
        pollfd wait = {presence->wakeFd(), POLLIN, 0};
        ::poll(&wait, 1, presence->nextLookMs());
    }
}

} // namespace

class TestPresence : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private:
    std::unique_ptr<Presence> come(const char* login) {
        Status status;
        auto presence = openPresence(m_kind.url(), login, &status);
        if (!presence)
            qWarning("%s", status.text.c_str());
        return presence;
    }

private slots:
    void whoComesSeesTheOthersAndIsSeen() {
        const auto first = come("first");
        QVERIFY(sees(*first, "") >= 0);
        const auto second = come("second");
        attend(*second);
        QVERIFY(sees(*first, "second:") >= 0);
        QVERIFY(sees(*first, "second:", 300) >= 0);
        QVERIFY(sees(*second, "first:", 10000, first.get()) >= 0);
        std::vector<PresenceEntry> others;
        ORVO_OK(second->look(&others));
        QVERIFY(!others.at(0).place.empty());
        QVERIFY(std::abs(others.at(0).since - static_cast<double>(time(nullptr))) < 60);
    }

    void openEditIsSeenUntilItEnds() {
        const auto first = come("first");
        const auto second = come("second");
        QVERIFY(sees(*first, "") >= 0);
        attend(*second);
        QVERIFY(sees(*first, "second:") >= 0);
        second->announce({edit("one"), edit("two")});
        attend(*second);
        const int shown = sees(*first, "second: one two");
        QVERIFY(shown >= 0);
        std::vector<PresenceEntry> others;
        ORVO_OK(first->look(&others));
        QCOMPARE(others.at(0).edits.at(0).what, std::string("элемент «Архив»"));
        QCOMPARE(others.at(0).edits.at(0).since, 1700000000.0);
        second->announce({});
        attend(*second);
        const int gone = sees(*first, "second:");
        QVERIFY(gone >= 0);
        qInfo("An edit shows after %d ms and is gone after %d ms.", shown, gone);
    }

    void whoLeavesIsGoneAtOnce() {
        const auto first = come("first");
        auto second = come("second");
        QVERIFY(sees(*first, "") >= 0);
        attend(*second);
        QVERIFY(sees(*first, "second:") >= 0);
        second.reset();
        const int gone = sees(*first, "");
        QVERIFY(gone >= 0 && gone < 1000);
    }

    void killedClientIsGoneWithinSeconds() {
        const auto first = come("first");
        QVERIFY(sees(*first, "") >= 0);
        QProcess other;
        other.start(QCoreApplication::applicationFilePath(),
                    {"--take-part", QString::fromStdString(m_kind.url()), "other"});
        QVERIFY(other.waitForStarted());
        QVERIFY(sees(*first, "other: dead", 30000) >= 0);
        QCOMPARE(::kill(static_cast<pid_t>(other.processId()), SIGKILL), 0);
        const int gone = sees(*first, "");
        QVERIFY(gone >= 0 && gone < 5000);
        qInfo("A killed client is gone after %d ms.", gone);
        other.waitForFinished();
    }

    void nothingOfItReachesTheStore() {
        const int64_t before = position();
        const auto first = come("first");
        const auto second = come("second");
        for (int i = 0; i < 20; ++i) {
            first->announce({edit(i % 2 == 0 ? "even" : "odd")});
            attend(*first);
            attend(*second);
        }
        QCOMPARE(position(), before);
    }

    void severalClientsOfOneLoginAreOneEach() {
        const auto first = come("first");
        const auto second = come("same");
        const auto third = come("same");
        QVERIFY(sees(*first, "") >= 0);
        attend(*second);
        attend(*third);
        QVERIFY(sees(*first, "same:; same:") >= 0);
    }

    void moreEditsThanAnybodyHasAreLeftOut() {
        const auto first = come("first");
        const auto second = come("second");
        QVERIFY(sees(*first, "") >= 0);
        std::vector<OpenEdit> many;
        for (size_t i = 0; i < mostOpenEdits + 5; ++i)
            many.push_back(edit("k", std::string(5000, 'x').c_str()));
        second->announce(many);
        attend(*second);
        QByteArray expected = "second:";
        for (size_t i = 0; i < mostOpenEdits; ++i)
            expected += " k";
        QVERIFY(sees(*first, expected) >= 0);
        std::vector<PresenceEntry> others;
        ORVO_OK(first->look(&others));
        QCOMPARE(others.at(0).edits.at(0).what.size(), longestPresenceText);
    }

    void textsOfAnEntryStayInTheirLines() {
        PresenceEntry entry;
        entry.login = "a\nsince 1";
        entry.place = std::string("\xff\x1b[1m") + std::string(1000, '\x01');
        entry.since = 5;
        entry.edits = {edit("key", "two\nlines"), {"NoTable", "key", 0, ""}, edit("a b")};
        PresenceEntry read;
        QVERIFY(parsePresence(presenceText(entry), &read));
        QCOMPARE(read.login, std::string("a since 1"));
        QCOMPARE(read.since, 5.0);
        QVERIFY(read.place.size() <= longestPresenceText);
        QVERIFY(read.place.find('\x1b') == std::string::npos);
        QCOMPARE(read.edits.size(), size_t(1));
        QCOMPARE(read.edits.at(0).what, std::string("two lines"));
    }

    void badEntriesAreNone_data() {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray head = "orvo-presence 1\nlogin a\n";
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("another version") << QByteArray("orvo-presence 2\nlogin a\nsince 1");
        QTest::newRow("no time") << head;
        QTest::newRow("time of letters") << head + "since now";
        QTest::newRow("negative time") << head + "since -1";
        QTest::newRow("endless time") << head + "since 99999999999999999999";
        QTest::newRow("no login") << QByteArray("orvo-presence 1\nsince 1");
        QTest::newRow("too long") << head + "since 1\n" +
                                         QByteArray(static_cast<int>(longestPresenceEntry), 'x');
    }
    void badEntriesAreNone() {
        QFETCH(QByteArray, bytes);
        PresenceEntry entry;
        QVERIFY(!parsePresence(bytes.toStdString(), &entry));
    }
};

/// Beside a file.
class TestFilePresence : public QObject {
    Q_OBJECT
    std::unique_ptr<StoreKind> m_kind;
    QString m_folder;

    std::unique_ptr<Presence> come(const char* login) {
        Status status;
        return openPresence(m_kind->url(), login, &status);
    }
    void put(const char* name, const QByteArray& bytes) {
        QFile file(m_folder + "/" + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

private slots:
    void init() {
        for (auto& kind : storeKinds())
            if (kind->name() == "sqlite")
                m_kind = std::move(kind);
        if (!m_kind)
            QSKIP("another kind");
        QVERIFY(m_kind->renew());
        QString path = QString::fromStdString(m_kind->url());
        m_folder = path.mid(path.indexOf("//") + 2) + "-presence";
    }
    void cleanup() { m_kind.reset(); }

    void leftoversOfDeadClientsAreRemovedAndTheFolderGoesWithTheLast() {
        auto first = come("first");
        QVERIFY(sees(*first, "") >= 0);
        put("00112233445566778899aabbccddeeff", "orvo-presence 1\nlogin dead\nsince 1");
        QVERIFY(sees(*first, "") >= 0);
        QCOMPARE(QDir(m_folder).entryList(QDir::Files).size(), 1);
        QFile::link("/etc/passwd", m_folder + "/ffeeddccbbaa99887766554433221100");
        QVERIFY(sees(*first, "") >= 0);
        QVERIFY(QFile::remove(m_folder + "/ffeeddccbbaa99887766554433221100"));
        first.reset();
        QVERIFY(!QFileInfo::exists(m_folder));
    }

    void folderThatWasRemovedIsMadeAgain() {
        const auto first = come("first");
        const auto second = come("second");
        QVERIFY(sees(*first, "") >= 0);
        QVERIFY(sees(*second, "first:") >= 0);
        QVERIFY(QDir(m_folder).removeRecursively());
        attend(*first);
        attend(*second);
        QVERIFY(sees(*first, "second:") >= 0);
        QVERIFY(sees(*second, "first:") >= 0);
    }

    void folderAndFilesFollowTheRightsOfTheStore_data() {
        QTest::addColumn<int>("store");
        QTest::addColumn<int>("folder");
        QTest::addColumn<int>("file");
        QTest::newRow("private") << 0600 << 0700 << 0600;
        QTest::newRow("read by a group") << 0640 << 01770 << 0640;
        QTest::newRow("read by all") << 0644 << 01777 << 0644;
    }
    void folderAndFilesFollowTheRightsOfTheStore() {
        QFETCH(int, store);
        QFETCH(int, folder);
        QFETCH(int, file);
        const auto mode = [](const QString& path) {
            struct stat info {};
            return ::stat(QFile::encodeName(path).constData(), &info) == 0
                       ? int(info.st_mode & 07777)
                       : -1;
        };
        const QString path = m_folder.chopped(int(strlen("-presence")));
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(store)), 0);
        const auto first = come("first");
        QVERIFY(sees(*first, "") >= 0);
        QCOMPARE(mode(m_folder), folder);
        QCOMPARE(mode(m_folder + "/" + QDir(m_folder).entryList(QDir::Files).value(0)), file);
    }

    void storeThatIsGoneHasNobody() {
        const auto first = come("first");
        QVERIFY(sees(*first, "") >= 0);
        const QString path = m_folder.chopped(int(strlen("-presence")));
        QVERIFY(QFile::rename(path, path + ".away"));
        std::vector<PresenceEntry> others;
        ORVO_FAILS(first->look(&others), ConnectionBroken);
        QVERIFY(QFile::rename(path + ".away", path));
        ORVO_OK(first->look(&others));
    }
};

int main(int argc, char** argv) {
    if (argc == 4 && qstrcmp(argv[1], "--take-part") == 0)
        return takePart(argv[2], argv[3]);
    int result = runOnAllKinds<TestPresence>(argc, argv);
    TestFilePresence file;
    return result | QTest::qExec(&file, argc, argv);
}

#include "tst_store_presence.moc"
