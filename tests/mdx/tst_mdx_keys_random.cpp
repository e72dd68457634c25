// Keys against a sorted vector: thousands of random changes, seeks and positions.
#include "MdxTest.h"

#include <QtTest>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <set>

using namespace mdxtest;

namespace {

// What a record of the model holds; nullopt is NULL.
struct Row {
    std::optional<std::string> key, group, name;
    std::optional<int32_t> type;
    uint32_t entry = 0;
    MDRData* record = nullptr;
};

template <class T>
int compareOptional(const std::optional<T>& a, const std::optional<T>& b) {
    if (!a || !b)
        return int(a.has_value()) - int(b.has_value());
    if constexpr (std::is_same_v<T, std::string>)
        return orvo::mdx::compareText(*a, *b);
    else
        return *a < *b ? -1 : *a > *b ? 1 : 0;
}

// Fields of a key by number, 0 key, 1 group, 2 name, 3 type.
int compareField(const Row& a, const Row& b, int field) {
    switch (field) {
    case 0:
        return compareOptional(a.key, b.key);
    case 1:
        return compareOptional(a.group, b.group);
    case 2:
        return compareOptional(a.name, b.name);
    default:
        return compareOptional(a.type, b.type);
    }
}

int compareRows(const Row& a, const Row& b, const std::vector<int>& fields) {
    for (const int field : fields)
        if (const int order = compareField(a, b, field))
            return order;
    return 0;
}

bool before(const Row& a, const Row& b, const std::vector<int>& fields) {
    if (const int order = compareRows(a, b, fields))
        return order < 0;
    if (const int order = compareField(a, b, 0))
        return order < 0;
    return a.entry < b.entry;
}

const std::vector<std::vector<int>> keyFields = {{0}, {3, 1, 2}, {3, 2}, {1}, {2}, {2, 3}};
const char* const keyNames[] = {"KeyLink", "type_;group;name", "type_;name", "group",
                                "name",    "NAME;Type_"};

// The library's array and its model, changed side by side.
class Pair {
public:
    explicit Pair(uint32_t seed)
        : m_random(seed)
        , m_array(makeArray({{"KeyLink", MDX_TEXT},
                             {"group", MDX_TEXT},
                             {"name", MDX_TEXT},
                             {"type_", MDX_INTEGER},
                             {"order_", MDX_INTEGER}})) {}

    MDArray* array() const { return m_array.get(); }
    size_t size() const { return m_rows.size(); }
    uint32_t random(uint32_t end) {
        return std::uniform_int_distribution<uint32_t>(0, end - 1)(m_random);
    }

    std::optional<std::string> randomText(uint32_t variety, bool longOnes) {
        switch (random(12)) {
        case 0:
            return std::nullopt;
        case 1:
            return std::string();
        case 2:
            return cp("Ёлка ") + std::to_string(random(variety));
        case 3:
            return cp("елка ") + std::to_string(random(variety));
        case 4:
            return cp("ЖУК") + std::string(random(3), '_');
        case 5:
            return longOnes ? std::string(200 + random(200), 'q') + std::to_string(random(variety))
                            : std::string("q");
        case 6:
            return "common prefix of considerable length, beyond one word " +
                   std::to_string(random(variety));
        case 7:
            return "COMMON prefix of considerable length, beyond one word " +
                   std::to_string(random(variety));
        default:
            return "n" + std::to_string(random(variety));
        }
    }

    void fill(Row& row, uint32_t variety) {
        row.key = random(50) == 0 ? std::nullopt
                                  : std::optional("K" + std::to_string(random(variety * 40)));
        row.group = randomText(variety / 4 + 1, false);
        row.name = randomText(variety, true);
        row.type = random(10) == 0 ? std::nullopt : std::optional<int32_t>(int32_t(random(5)) - 2);
    }

    static void write(const Row& row) {
        const auto put = [&](int field, const std::optional<std::string>& text) {
            if (text)
                setText(row.record, field, *text);
            else
                set(row.record, field, nullValue());
        };
        put(0, row.key);
        put(1, row.group);
        put(2, row.name);
        set(row.record, 3, row.type ? integerValue(*row.type) : nullValue());
    }

    void insert(uint32_t variety) {
        Row row;
        fill(row, variety);
        row.record = MDARecNew(array());
        write(row);
        row.entry = m_nextEntry++;
        QCOMPARE(MDARecPost(row.record, nullptr), 0);
        m_rows.push_back(row);
    }

    void edit(uint32_t variety) {
        Row& row = m_rows[random(uint32_t(m_rows.size()))];
        row.record = MDARecEdit(row.record);
        if (random(3) == 0) {
            row.type = int32_t(random(5)) - 2;
        } else {
            fill(row, variety);
        }
        write(row);
        if (random(4) == 0) { // written twice before it is posted
            fill(row, variety);
            write(row);
        }
        uint32_t word = 0;
        QCOMPARE(MDARecPost(row.record, &word), 0);
        QCOMPARE(word, 1u);
    }

    void remove() {
        const size_t index = random(uint32_t(m_rows.size()));
        if (random(3) == 0)
            setText(m_rows[index].record, 2, "edited, and not posted");
        QCOMPARE(MDARecDel(m_rows[index].record), 0);
        m_rows[index] = m_rows.back();
        m_rows.pop_back();
    }

    void checkOrder(size_t key) {
        std::vector<const Row*> sorted;
        for (const Row& row : m_rows)
            sorted.push_back(&row);
        std::sort(sorted.begin(), sorted.end(),
                  [&](const Row* a, const Row* b) { return before(*a, *b, keyFields[key]); });
        QCOMPARE(size_t(array()->recordCount), sorted.size());
        for (size_t i = 0; i < sorted.size(); ++i)
            if (MDARec(array(), int(key), int32_t(i)) != sorted[i]->record)
                QFAIL(
                    qPrintable(QString("key %1, position %2: %3 instead of %4")
                                   .arg(key)
                                   .arg(i)
                                   .arg(QString::fromStdString(
                                            MDARec(array(), int(key), int32_t(i))
                                                ? textOf(MDARec(array(), int(key), int32_t(i)), 0)
                                                : "null"),
                                        QString::fromStdString(sorted[i]->key.value_or("NULL")))));
        QVERIFY(!MDARec(array(), int(key), int32_t(sorted.size())));

        // Seeks: for values of records present, and for random ones.
        for (int round = 0; round < 40; ++round) {
            Row probe;
            fill(probe, 30);
            if (round % 2 == 0 && !m_rows.empty())
                probe = m_rows[random(uint32_t(m_rows.size()))];
            const auto& fields = keyFields[key];
            // Trailing values NULL, as in the scan of a group.
            const size_t given = random(uint32_t(fields.size())) + 1;
            for (size_t f = given; f < fields.size(); ++f) {
                if (fields[f] == 1)
                    probe.group.reset();
                if (fields[f] == 2)
                    probe.name.reset();
                if (fields[f] == 3)
                    probe.type.reset();
            }
            std::vector<MDRVar> values;
            for (const int field : fields) {
                const auto& text = field == 0 ? probe.key : field == 1 ? probe.group : probe.name;
                if (field == 3)
                    values.push_back(probe.type ? integerValue(*probe.type) : nullValue());
                else
                    values.push_back(text ? textValue(*text) : nullValue());
            }
            const auto place =
                std::partition_point(sorted.begin(), sorted.end(), [&](const Row* row) {
                    return compareRows(*row, probe, fields) < 0;
                });
            int32_t position = 77;
            const MDRData* found = MDARecSeekV(array(), int(key), values.data(), &position);
            QCOMPARE(position, place == sorted.end() ? -1 : int32_t(place - sorted.begin()));
            const bool equal = place != sorted.end() && compareRows(**place, probe, fields) == 0;
            QCOMPARE(found, equal ? (*place)->record : nullptr);
            QCOMPARE(MDARecSeekV(array(), int(key), values.data(), nullptr), found);
        }
    }

    /// After each change while that is cheap, now and then in a large array.
    void checkInvariants(int change) {
        if (m_rows.size() < 250 || change % 500 == 0)
            QCOMPARE(orvo::mdx::check(array()), std::string());
    }

    void checkAll() {
        QCOMPARE(orvo::mdx::check(array()), std::string());
        for (size_t key = 0; key < array()->keyCount; ++key) {
            checkOrder(key);
            if (QTest::currentTestFailed())
                return;
        }
    }

private:
    std::mt19937 m_random;
    ArrayPtr m_array;
    std::vector<Row> m_rows;
    uint32_t m_nextEntry = 0;
};

} // namespace

class TestMdxKeysRandom : public QObject {
    Q_OBJECT

private slots:
    void keysFollowAModelThroughRandomChanges_data() {
        QTest::addColumn<int>("atStart");
        QTest::addColumn<int>("changes");
        QTest::addColumn<int>("variety");
        QTest::addColumn<bool>("keysFirst");
        QTest::newRow("from nothing") << 0 << 6000 << 300 << true;
        QTest::newRow("few records") << 100 << 2000 << 20 << true;
        QTest::newRow("few distinct values") << 3000 << 3000 << 3 << true;
        QTest::newRow("keys built over records") << 5000 << 3000 << 2000 << false;
        QTest::newRow("shrinking to nothing") << 4000 << -1 << 500 << false;
        QTest::newRow("large") << 30000 << 6000 << 20000 << false;
    }
    void keysFollowAModelThroughRandomChanges() {
        QFETCH(int, atStart);
        QFETCH(int, changes);
        QFETCH(int, variety);
        QFETCH(bool, keysFirst);
        Pair pair(uint32_t(atStart + changes + variety));
        const auto addKeys = [&] {
            for (const char* name : keyNames)
                QCOMPARE(addKey(pair.array(), name, MDX_KEY_MULTI), 0);
        };
        if (keysFirst)
            addKeys();
        for (int i = 0; i < atStart; ++i)
            pair.insert(uint32_t(variety));
        if (!keysFirst)
            addKeys();
        pair.checkAll();
        if (changes < 0) {
            while (pair.size() > 0) {
                pair.remove();
                pair.checkInvariants(int(pair.size()));
                if (pair.size() % 800 == 0 || pair.size() < 3)
                    pair.checkAll();
                if (QTest::currentTestFailed())
                    return;
            }
            return;
        }
        for (int i = 0; i < changes; ++i) {
            const uint32_t kind = pair.random(10);
            if (kind < 4 || pair.size() == 0)
                pair.insert(uint32_t(variety));
            else if (kind < 7)
                pair.edit(uint32_t(variety));
            else
                pair.remove();
            pair.checkInvariants(i);
            if (i % (changes / 6) == 0)
                pair.checkAll();
            if (QTest::currentTestFailed())
                return;
        }
        pair.checkAll();
    }
};

QTEST_APPLESS_MAIN(TestMdxKeysRandom)
#include "tst_mdx_keys_random.moc"
