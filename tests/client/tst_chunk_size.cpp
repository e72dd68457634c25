// How many notifications are handed over at once, by what they cost.
#include "platform/client/ChunkSize.h"

#include <QtTest>

#include <random>

using orvo::client::ChunkSize;

class TestChunkSize : public QObject {
    Q_OBJECT

    static constexpr qint64 wanted = 2500;

    /// Hands over so many chunks of a burst; gives the mean number of changes of the last half.
    static double settle(ChunkSize& size, qint64 ofChunk, qint64 ofChange, int chunks = 200) {
        int counted = 0;
        for (int i = 0; i < chunks; ++i) {
            const int count = size.changes();
            if (i >= chunks / 2)
                counted += count;
            size.took(count, ofChunk + ofChange * count, wanted);
        }
        return counted / (chunks - chunks / 2.0);
    }

private slots:
    void cheapChangesGoManyAtOnce() {
        ChunkSize size;
        QCOMPARE(settle(size, 0, 5), double(ChunkSize::largest));
    }
    void dearChangesGoOneByOne() {
        ChunkSize size;
        QVERIFY(settle(size, 0, 20000) < 1.2);
    }
    void changesInBetweenFillWhatIsWanted() {
        ChunkSize size;
        const double mean = settle(size, 0, 200);
        QVERIFY(mean >= 4 && mean <= 20);
    }
    void whereEachChunkIsDearItIsAsLargeAsCanBe() {
        ChunkSize size;
        QVERIFY(settle(size, 30000, 25) > 0.85 * ChunkSize::largest);
    }
    void itFindsBackFromTheOneToTheOther() {
        ChunkSize size;
        settle(size, 0, 20000);
        QVERIFY(settle(size, 30000, 25) > 0.85 * ChunkSize::largest);
        QVERIFY(settle(size, 0, 20000) < 1.2);
        QCOMPARE(settle(size, 0, 5), double(ChunkSize::largest));
    }
    void theEndOfABurstTellsNothingUnlessItIsDear() {
        ChunkSize size;
        settle(size, 0, 5);
        size.took(3, 2000, wanted);
        QCOMPARE(size.changes(), ChunkSize::largest);
        size.took(3, 60000, wanted);
        QVERIFY(size.changes() <= 3);
    }
    void noCostLeadsBeyondTheLargestOrBelowOne() {
        std::mt19937 random(1);
        ChunkSize size;
        for (int i = 0; i < 100'000; ++i) {
            const int all = size.changes();
            const int count = random() % 4 == 0
                                  ? 1 + static_cast<int>(random() % static_cast<unsigned>(all))
                                  : all;
            size.took(count, random() % (4 * wanted), wanted);
            QVERIFY(size.changes() >= 1);
            QVERIFY2(size.changes() <= ChunkSize::largest,
                     qPrintable(QString::number(size.changes())));
        }
    }
};

QTEST_APPLESS_MAIN(TestChunkSize)
#include "tst_chunk_size.moc"
