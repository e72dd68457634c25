// The index of keys, on its own, against a plain map.
#include "models/KeyIndex.h"

#include <QtTest>

#include <map>
#include <set>

using orvo::KeyIndex;

namespace {

std::set<void*> found(const KeyIndex& index, const QString& key) {
    std::set<void*> rows;
    index.forEachCandidate(key, [&](void* row) { rows.insert(row); });
    return rows;
}

} // namespace

class KeyIndexTest : public QObject {
    Q_OBJECT
private slots:
    void textsThatCompareEqualHaveOneHash() {
        for (uint code = 0; code < 0x1'0500; ++code) {
            if (code >= 0xd800 && code < 0xe000)
                continue;
            // Alone, and at each place of a block of four.
            for (const char* around : {"%1", "abc%1", "%1def", "a%1bcdef", "ЫЫ%1"}) {
                const QString text = QString(around).arg(QString::fromUcs4(&code, 1));
                for (const QString& other : {text.toUpper(), text.toLower(), text.toCaseFolded()}) {
                    if (text.compare(other, Qt::CaseInsensitive) == 0)
                        QCOMPARE(KeyIndex::hash(other), KeyIndex::hash(text));
                }
            }
        }
        // ASCII letters in blocks, and their neighbours in the code.
        const QString all = "@AMZ[`amz{/09:\x7f@AZ[";
        QCOMPARE(KeyIndex::hash(all), KeyIndex::hash(all.toLower()));
        QCOMPARE(KeyIndex::hash(all), KeyIndex::hash(all.toUpper()));
        std::set<uint32_t> hashes;
        for (ushort c = 0; c < 0x80; ++c)
            hashes.insert(KeyIndex::hash(QString("abc") + QChar(c)));
        QCOMPARE(hashes.size(), size_t(0x80 - 26));
        QVERIFY(KeyIndex::hash("abcd") != KeyIndex::hash(QString("abcd") + QChar(0)));
        QVERIFY(KeyIndex::hash("a") != KeyIndex::hash("b"));
    }

    void aValueWithoutTextIsNotEntered() {
        int row = 0;
        KeyIndex index;
        for (const QVariant& value : {QVariant(), QVariant(QString()), QVariant("")}) {
            QCOMPARE(KeyIndex::entry(&row, value).hash, 0u);
            index.insert(KeyIndex::entry(&row, value));
            index.insertAll({KeyIndex::entry(&row, value)});
            index.remove(KeyIndex::entry(&row, value));
        }
        QVERIFY(found(index, "").empty());
        index.insert(KeyIndex::entry(&row, 7));
        QCOMPARE(found(index, "7"), std::set<void*>{&row});
    }

    void rowsAreFoundThroughRandomChanges() {
        // Few keys and many rows: rows crowd, come and go, and the table grows and empties.
        std::vector<QString> keys;
        for (int i = 0; i < 70; ++i)
            keys.push_back(QString("Key%1").arg(i * 7919));
        std::vector<int> rows(300);
        KeyIndex index;
        std::map<QString, std::set<void*>> expected;
        quint64 seed = 7;
        const auto random = [&seed](size_t below) {
            seed = seed * 6364136223846793005ull + 1442695040888963407ull;
            return static_cast<size_t>(seed >> 33) % below;
        };
        for (int turn = 0; turn < 20000; ++turn) {
            const QString& key = keys[random(keys.size())];
            const QString spelt = random(2) ? key : key.toUpper();
            void* row = &rows[random(rows.size())];
            // Phases of growth and of decline.
            if (random(10) < ((turn / 3000) % 2 == 0 ? 7u : 2u)) {
                if (expected[key].insert(row).second)
                    index.insert(KeyIndex::entry(row, spelt));
            } else {
                auto& have = expected[key];
                if (!have.empty())
                    row = *have.begin();
                have.erase(row);
                index.remove(KeyIndex::entry(row, spelt));
            }
            QVERIFY2(!index.check(), index.check());
            if (turn % 50 == 0) {
                for (const QString& each : keys)
                    QCOMPARE(found(index, each.toLower()), expected[each]);
            }
        }
    }

    void keysOfOneHashAreCandidatesOfEachOther() {
        int a = 0;
        int b = 0;
        int c = 0;
        KeyIndex index;
        const KeyIndex::Entry one = KeyIndex::entry(&a, "one");
        const KeyIndex::Entry two{one.hash, &b};
        index.insert(one);
        QVERIFY(found(index, "two").empty());
        index.insertAll({two, KeyIndex::entry(&c, "ONE")});
        QCOMPARE(found(index, "one"), (std::set<void*>{&a, &b, &c}));
        index.remove(one);
        index.remove(KeyIndex::entry(&c, "one"));
        QCOMPARE(found(index, "one"), std::set<void*>{&b});
        index.remove(two);
        QVERIFY(found(index, "one").empty());
        index.insert(KeyIndex::entry(&c, "one"));
        QCOMPARE(found(index, "one"), std::set<void*>{&c});
    }

    void removingWhatIsNotThereChangesNothing() {
        int a = 0;
        int b = 0;
        KeyIndex index;
        index.remove(KeyIndex::entry(&a, "k"));
        index.insert(KeyIndex::entry(&a, "k"));
        index.remove(KeyIndex::entry(&b, "k"));
        index.remove(KeyIndex::entry(&a, "other"));
        QCOMPARE(found(index, "k"), std::set<void*>{&a});
    }

    void aClearedIndexIsEmptyAndUsable() {
        int a = 0;
        int b = 0;
        KeyIndex index;
        index.insert(KeyIndex::entry(&a, "k"));
        index.insert(KeyIndex::entry(&b, "k"));
        index.clear();
        QVERIFY(found(index, "k").empty());
        index.insert(KeyIndex::entry(&b, "k"));
        QCOMPARE(found(index, "k"), std::set<void*>{&b});
    }
};

QTEST_GUILESS_MAIN(KeyIndexTest)
#include "tst_keyindex.moc"
