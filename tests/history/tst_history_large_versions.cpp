// A form's file of 200 MiB: replaced, listed, read byte for byte, brought back by undo, forgotten.
#include "HistoryTest.h"

#include "history/ReturnVersion.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>

#include <cstdint>
#include <cstring>

#include <sys/mman.h>

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

namespace {

constexpr size_t mebibyte = 1u << 20;
constexpr size_t large = 200 * mebibyte;

/// Bytes that no database packs, others for each seed.
std::string noise(size_t size, uint64_t seed) {
    std::string bytes(size, '\0');
    for (size_t at = 0; at + sizeof seed <= size; at += sizeof seed) {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
        std::memcpy(&bytes[at], &seed, sizeof seed);
    }
    return bytes;
}

QByteArray hashOf(std::string_view bytes) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (size_t at = 0; at < bytes.size(); at += mebibyte)
        hash.addData(bytes.data() + at, int(std::min(mebibyte, bytes.size() - at)));
    return hash.result();
}

/// A line of the process's memory, in MiB.
int64_t memory(const char* line) {
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& one : file.readAll().split('\n'))
        if (one.startsWith(line))
            return one.mid(int(std::strlen(line)) + 1)
                       .simplified()
                       .split(' ')
                       .first()
                       .toLongLong() /
                   1024;
    return 0;
}

/// Tells how much memory something took beyond what was there, at its peak, and how long it took.
template <class Work>
int64_t peakOf(const char* what, Work work) {
    QFile reset("/proc/self/clear_refs");
    if (reset.open(QIODevice::WriteOnly))
        reset.write("5");
    reset.close();
    const int64_t before = memory("VmRSS");
    QElapsedTimer time;
    time.start();
    work();
    const int64_t peak = memory("VmHWM") - before;
    qInfo("%s: %lld MiB, %lld ms", what, static_cast<long long>(peak),
          static_cast<long long>(time.elapsed()));
    return peak;
}

} // namespace

class TestHistoryLargeVersions : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void init() {
        HistoryTest::init();
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}, {"caption", "Формы"}})
                    .send(*m_anna));
    }
    void aLargeFileIsReplacedKeptAndBroughtBack();
    void aFileAboveTheLimitIsRefusedInWords();

private:
    /// Of the file of the form that is stored.
    QByteArray storedHash() const {
        std::vector<StoredFile> files;
        const Status status = m_anna->formGet("big_", true, &files);
        return status.ok() && files.size() == 1 ? hashOf(files[0].bytes)
                                                : QByteArray(status.text.c_str());
    }
};

void TestHistoryLargeVersions::aLargeFileIsReplacedKeptAndBroughtBack() {
    QByteArray first, second;
    {
        const std::string bytes = noise(large, 1);
        first = hashOf(bytes);
        peakOf("stored", [&] { ORVO_OK(m_anna->formPut("", {{"", "big_", bytes, 1.0}})); });
    }
    {
        const std::string bytes = noise(large + 1, 2);
        second = hashOf(bytes);
        peakOf("replaced", [&] { ORVO_OK(m_anna->formPut("", {{"", "big_", bytes, 2.0}})); });
    }
    const int64_t replaced = last(*m_anna);
    std::vector<KeptVersion> versions;
    // What is only looked at or handed on is never in memory as a whole.
    constexpr int64_t fewPieces = 100;
    QVERIFY(peakOf("listed", [&] { ORVO_OK(m_anna->versions({}, &versions)); }) < fewPieces);
    QCOMPARE(versions.size(), size_t(1));
    QCOMPARE(versions[0].size, uint64_t(large));
    QCryptographicHash read(QCryptographicHash::Sha256);
    QVERIFY(peakOf("read", [&] {
                ORVO_OK(m_anna->versionBytes(versions[0].id, [&](std::string_view piece) -> Status {
                    read.addData(piece.data(), int(piece.size()));
                    return {};
                }));
            }) < fewPieces);
    QCOMPARE(read.result(), first);
    Inverse done;
    peakOf("brought back by undo", [&] { ORVO_OK(undo(*m_anna, {replaced}, {}, &done)); });
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QCOMPARE(storedHash(), first);
    peakOf("done again", [&] { ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done)); });
    QCOMPARE(storedHash(), second);
    std::vector<std::string> damages;
    peakOf("checked", [&] { ORVO_OK(m_anna->integrity(&damages)); });
    QCOMPARE(damages, std::vector<std::string>());
    int64_t seen = 0;
    ORVO_OK(m_anna->logPosition(&seen));
    peakOf("returned", [&] { ORVO_OK(returnVersion(*m_anna, versions[0].id, seen, {})); });
    QCOMPARE(storedHash(), first);
    const int64_t returned = last(*m_anna);
    PrunedVersions pruned;
    QVERIFY(peakOf("pruned", [&] { ORVO_OK(m_anna->pruneVersions(0, large, false, &pruned)); }) <
            fewPieces);
    QVERIFY2(pruned.count >= 2, qPrintable(QString::number(pruned.count)));
    versions.clear();
    ORVO_OK(m_anna->versions({}, &versions));
    QVERIFY(versions.size() <= 1);
    ORVO_OK(m_anna->pruneVersions(0, 0, false, &pruned));
    ORVO_OK(undo(*m_anna, {returned}, {}, &done));
    QVERIFY(!done.written);
    QVERIFY2(remarks(done).join('\n').contains("не хранится"),
             qPrintable(remarks(done).join('\n')));
    QCOMPARE(storedHash(), first);
}

void TestHistoryLargeVersions::aFileAboveTheLimitIsRefusedInWords() {
    constexpr size_t size = 513 * mebibyte; // none of its pages is ever touched
    void* const room =
        mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    QVERIFY(room != MAP_FAILED);
    const Status status =
        m_anna->formPut("", {{"", "big_", {static_cast<const char*>(room), size}, 1.0}});
    munmap(room, size);
    QCOMPARE(status.code, int(Refused));
    QCOMPARE(QString::fromStdString(status.text), QString("Файл \"big_\" больше 512 МиБ"));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryLargeVersions>(argc, argv);
}

#include "tst_history_large_versions.moc"
