// The index of keys, on its own, against a plain multimap.
#include "models/KeyIndex.h"

#include <QtTest>

#include <map>
#include <set>

class KeyIndexTest : public QObject {
    Q_OBJECT
private slots:
    void textsThatCompareEqualHaveOneHash();
    void aValueWithoutTextHasNoHash();
    void rowsAreFoundThroughRandomChanges();
    void removingWhatIsNotThereChangesNothing();
    void aClearedIndexIsEmptyAndUsable();
};

namespace {

std::set<void*> found(const KeyIndex& index, uint32_t hash) {
    std::set<void*> rows;
    index.forEach(hash, [&](void* row) { rows.insert(row); });
    return rows;
}

} // namespace

void KeyIndexTest::textsThatCompareEqualHaveOneHash() {
    for (uint code = 0; code < 0x1'0500; ++code) {
        if (code >= 0xd800 && code < 0xe000)
            continue;
        const QString text = QString::fromUcs4(&code, 1);
        for (const QString& other : {text.toUpper(), text.toLower(), text.toCaseFolded()}) {
            if (text.compare(other, Qt::CaseInsensitive) == 0)
                QCOMPARE(KeyIndex::hash(other), KeyIndex::hash(text));
        }
    }
    QVERIFY(KeyIndex::hash(QString("a")) != KeyIndex::hash(QString("b")));
}

void KeyIndexTest::aValueWithoutTextHasNoHash() {
    QCOMPARE(KeyIndex::hash(QVariant()), 0u);
    QCOMPARE(KeyIndex::hash(QVariant(QString())), 0u);
    QCOMPARE(KeyIndex::hash(QVariant("")), 0u);
    QCOMPARE(KeyIndex::hash(QVariant(7)), KeyIndex::hash(QString("7")));
}

void KeyIndexTest::rowsAreFoundThroughRandomChanges() {
    // Few hashes, close together and at both ends, so that runs wrap around and rows crowd.
    std::vector<uint32_t> hashes{1, 2, 3, 0xffffffffu, 0xfffffffeu, 0xfffffff0u};
    for (uint32_t i = 0; i < 60; ++i)
        hashes.push_back(i * 71582788u + 5u);
    std::vector<int> rows(300);
    KeyIndex index;
    std::map<uint32_t, std::set<void*>> expected;
    quint64 seed = 7;
    const auto random = [&seed](size_t below) {
        seed = seed * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<size_t>(seed >> 33) % below;
    };
    for (int turn = 0; turn < 20000; ++turn) {
        const uint32_t hash = hashes[random(hashes.size())];
        void* row = &rows[random(rows.size())];
        // Phases of growth and of decline.
        if (random(10) < ((turn / 3000) % 2 == 0 ? 7u : 2u)) {
            if (expected[hash].insert(row).second)
                index.insert(hash, row);
        } else {
            auto& have = expected[hash];
            if (!have.empty())
                row = *have.begin();
            have.erase(row);
            index.remove(hash, row);
        }
        if (turn % 50 == 0) {
            for (const uint32_t each : hashes)
                QCOMPARE(found(index, each), expected[each]);
        }
    }
}

void KeyIndexTest::removingWhatIsNotThereChangesNothing() {
    int a = 0;
    int b = 0;
    KeyIndex index;
    index.remove(5, &a);
    index.insert(5, &a);
    index.remove(5, &b);
    index.remove(6, &a);
    QCOMPARE(found(index, 5), std::set<void*>{&a});
}

void KeyIndexTest::aClearedIndexIsEmptyAndUsable() {
    int a = 0;
    int b = 0;
    KeyIndex index;
    index.insert(5, &a);
    index.insert(5, &b);
    index.clear();
    QVERIFY(found(index, 5).empty());
    index.insert(5, &b);
    QCOMPARE(found(index, 5), std::set<void*>{&b});
}

QTEST_MAIN(KeyIndexTest)
#include "tst_keyindex.moc"
