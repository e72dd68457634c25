// Measures the record library against its peers in one run: bench_mdx [rows [rounds [part]]]
// Parts: seek, position, scan, change, pack; without one, all.
// Prints each measured ratio beside its budget. Exits with 1 if one is missed.
#include "Peers.h"
#include "Rows.h"
#include "bench/Budget.h"

#include "platform/mdx/MdxBuild.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <random>

using namespace bench;

namespace {

int rounds = 5;

void report(const char* work, double measured, const char* unit, double budget, bool atLeast) {
    std::printf("%-58s %9.2f %-6s", work, measured, unit);
    orvo::bench::judge(measured, atLeast ? orvo::bench::Bound::AtLeast : orvo::bench::Bound::AtMost,
                       budget, "");
}

void note(const char* what, double value, const char* unit) {
    std::printf("    %-54s %9.2f %s\n", what, value, unit);
    std::fflush(stdout);
}

void addKeys(MDArray* array) {
    for (int i = 0; i < 4; ++i) {
        MDAKeyDescription description{};
        std::strcpy(description.name, keyFields[i]);
        description.flags = i == 0 ? MDX_KEY_UNIQUE : MDX_KEY_MULTI;
        if (MDAKeyAdd(array, 1, &description) != MDX_OK)
            std::abort();
    }
}

void dropKeys(MDArray* array) {
    while (array->keyCount > 0)
        MDAKeyDel(array, 0);
}

MDRVar textValue(const std::string& text) {
    MDRVar value{};
    value.type = MDX_TEXT;
    value.value.text.length = static_cast<uint32_t>(text.size());
    value.value.text.pointer = text.c_str();
    return value;
}

MDRVar integerValue(int32_t number) {
    MDRVar value{};
    value.type = MDX_INTEGER;
    value.value.integer = number;
    return value;
}

// The full value list of a row in key `key`.
void valuesOf(const Row& row, int key, MDRVar* values) {
    if (key == 0) {
        values[0] = textValue(row.key);
        return;
    }
    if (key == 1 || key == 2)
        *values++ = integerValue(row.type);
    if (key == 1 || key == 3)
        *values++ = textValue(row.folder);
    if (key == 1 || key == 2)
        *values++ = textValue(row.name);
}

struct Bench {
    const std::vector<Row>& rows;
    std::vector<const Row*> pointers;
    std::vector<Row> probes; ///< what is sought, in random order, side by side in memory
    MDArray* array;
    Sqlite sqlite;
    Ranked ranked;
    std::vector<const Row*> sorted[4];

    explicit Bench(const std::vector<Row>& from) : rows(from), array(makeArray()), sqlite(from) {
        for (const Row& row : rows)
            pointers.push_back(&row);
        std::mt19937_64 random(3);
        for (size_t i = 0; i < std::min<size_t>(rows.size(), 300000); ++i)
            probes.push_back(rows[random() % rows.size()]);
        fill(array, rows);
    }
    ~Bench() { MDADestroy(array); }

    template <int key>
    void sortPointers() {
        sorted[key] = pointers;
        std::sort(sorted[key].begin(), sorted[key].end(), Less<key>());
    }

    void building() {
        std::vector<double> own, sort, boost, sqliteTimes, btree;
        for (int i = 0; i < rounds; ++i) {
            dropKeys(array);
            own.push_back(seconds([&] { addKeys(array); }));
            sort.push_back(seconds([&] {
                sortPointers<0>();
                sortPointers<1>();
                sortPointers<2>();
                sortPointers<3>();
            }));
            ranked.clear();
            boost.push_back(seconds([&] {
                for (const Row* row : pointers)
                    ranked.insert(row);
            }));
            if (i > 0)
                sqlite.dropIndexes();
            sqliteTimes.push_back(seconds([&] { sqlite.createIndexes(); }));
        }
        note("four keys built in", median(own) * 1e3, "ms");
        report("Build: against std::sort of pointers", median(sort) / median(own), "x", 5, true);
        report("Build: against Boost ranked", median(boost) / median(own), "x", 13, true);
        report("Build: against SQLite CREATE INDEX", median(sqliteTimes) / median(own), "x", 5,
               true);
        report("Key memory, bytes a record and key",
               double(orvo::mdx::keyMemory(array)) / double(rows.size()) / 4, "", 16, false);
        const double again = timed(rounds, [&] {
            MDAKeyDescription description{};
            std::strcpy(description.name, "KeyLink");
            MDAKeyAdd(array, 1, &description);
            MDAKeyDel(array, 4);
        });
        note("a key that is there already, added and deleted", again * 1e6, "us");
    }

    template <class Work>
    double perProbe(Work&& work) {
        return timed(rounds,
                     [&] {
                         uint64_t sum = 0;
                         for (const Row& row : probes)
                             sum += work(row);
                         sink = sink + sum;
                     }) /
               double(probes.size()) * 1e9;
    }

    void exactSeek() {
        const double own = perProbe([&](const Row& row) {
            const MDRVar value = textValue(row.key);
            return uint64_t(MDARecSeekV(array, 0, &value, nullptr) != nullptr);
        });
        const double select = perProbe([&](const Row& row) { return sqlite.seek(row.key) >= 0; });
        const double boost = perProbe(
            [&](const Row& row) { return ranked.get<0>().find(&row) != ranked.get<0>().end(); });
        const double vector = perProbe([&](const Row& row) {
            const auto at = std::lower_bound(sorted[0].begin(), sorted[0].end(), &row, Less<0>());
            return uint64_t((*at)->key == row.key);
        });
        Btree<0> set(sorted[0].begin(), sorted[0].end());
        const double btree = perProbe([&](const Row& row) { return set.contains(&row); });
        note("exact seek", own, "ns");
        report("Exact seek: against SQLite prepared select", select / own, "x", 4, true);
        report("Exact seek: against Boost ranked", boost / own, "x", 5, true);
        report("Exact seek: against a sorted vector", vector / own, "x", 2.5, true);
        note("exact seek: against the Abseil btree (no budget)", btree / own, "x");
    }

    template <int key>
    void position() {
        const double own = perProbe([&](const Row& row) {
            MDRVar values[3];
            valuesOf(row, key, values);
            int32_t place = 0;
            MDARecSeekV(array, key, values, &place);
            return uint64_t(place);
        });
        const double boost = perProbe([&](const Row& row) {
            const auto& index = ranked.get<key>();
            return uint64_t(index.rank(index.lower_bound(&row)));
        });
        char title[80];
        std::snprintf(title, sizeof title, "First-not-less position, %s: against Boost ranked",
                      keyTitles[key]);
        note("first-not-less position", own, "ns");
        report(title, boost / own, "x", 4, true);
    }

    void recordAt() {
        std::vector<uint32_t> places(probes.size());
        std::mt19937_64 random(5);
        for (uint32_t& place : places)
            place = uint32_t(random() % rows.size());
        const double own = timed(rounds, [&] {
            uint64_t sum = 0;
            for (const uint32_t place : places)
                sum += MDARec(array, 1, int32_t(place)) != nullptr;
            sink = sink + sum;
        });
        const double boost = timed(rounds, [&] {
            uint64_t sum = 0;
            for (const uint32_t place : places)
                sum += *ranked.get<1>().nth(place) != nullptr;
            sink = sink + sum;
        });
        note("record at a position", own / double(places.size()) * 1e9, "ns");
        report("Record at a position: against Boost ranked", boost / own, "x", 12, true);
    }

    void scan() {
        for (int key = 0; key < 4; ++key) {
            const double time = timed(rounds, [&] {
                uint64_t sum = 0;
                for (int32_t i = 0; i < int32_t(array->recordCount); ++i)
                    sum += MDARec(array, key, i) != nullptr;
                sink = sink + sum;
            });
            char title[80];
            std::snprintf(title, sizeof title, "Scan in key order, %s, ns a record",
                          keyTitles[key]);
            report(title, time / double(rows.size()) * 1e9, "ns", 15, false);
        }
        const double reading = timed(rounds, [&] {
            uint64_t sum = 0;
            for (int32_t i = 0; i < int32_t(array->recordCount); ++i) {
                const char* text = nullptr;
                MDRGetTextPtr(MDRFldByName(array, "folder"), MDARec(array, 3, i), &text);
                sum += uint64_t(text[0]);
            }
            sink = sink + sum;
        });
        note("the same, looking up and reading a field of each",
             reading / double(rows.size()) * 1e9, "ns");
    }

    void change() {
        const std::vector<Row> fresh = makeRows(std::min<size_t>(rows.size(), 100000), 99);
        std::vector<double> own, boost, sqliteTimes;
        for (int i = 0; i < rounds; ++i) {
            std::vector<MDRData*> records;
            records.reserve(fresh.size());
            own.push_back(seconds([&] {
                for (const Row& row : fresh) {
                    MDRData* record = MDARecNew(array);
                    const MDRVar values[5] = {textValue(row.key), integerValue(row.type),
                                              textValue(row.folder), textValue(row.name),
                                              textValue(row.parameters)};
                    for (int f = 0; f < 5; ++f)
                        MDRSetVal(MDRFldByNum(array, f), record, &values[f]);
                    MDARecPost(record, nullptr);
                    records.push_back(record);
                }
                for (MDRData* record : records)
                    MDARecDel(record);
            }));
            boost.push_back(seconds([&] {
                for (const Row& row : fresh)
                    ranked.insert(&row);
                for (const Row& row : fresh)
                    ranked.erase(&row);
            }));
            sqliteTimes.push_back(seconds([&] {
                sqlite.run("BEGIN");
                for (const Row& row : fresh)
                    sqlite.insert(row);
                for (const Row& row : fresh)
                    sqlite.erase(row.key);
                sqlite.run("COMMIT");
            }));
        }
        note("insert and delete in four keys", median(own) / double(fresh.size()) * 1e6, "us");
        report("Insert and delete: against Boost ranked", median(boost) / median(own), "x", 3,
               true);
        report("Insert and delete: against SQLite", median(sqliteTimes) / median(own), "x", 5,
               true);
    }

    // Source bytes touched, target pages fresh from the system, in the packing and in memcpy alike.
    void packing(bool withKeys) {
        if (!withKeys)
            dropKeys(array);
        std::vector<double> pack, copy, unpack;
        for (int i = 0; i < rounds + 1; ++i) {
            void* image = nullptr;
            uint32_t length = 0;
            malloc_trim(0);
            pack.push_back(seconds([&] { length = MDAPack(array, &image); }));
            void* target = nullptr;
            malloc_trim(0);
            copy.push_back(seconds([&] {
                target = std::malloc(length);
                std::memcpy(target, image, length);
            }));
            sink = sink + static_cast<unsigned char*>(target)[length / 2];
            std::free(target);
            MDArray* other = nullptr;
            MDACreate(&other, 0);
            unpack.push_back(seconds([&] {
                if (MDAUnpackN(other, image, length) != MDX_OK)
                    std::abort();
            }));
            MDADestroy(other);
            MDMemFree(image);
        }
        note("memcpy of the image", median(copy) * 1e3, "ms");
        note("pack", median(pack) * 1e3, "ms");
        note("unpack", median(unpack) * 1e3, "ms");
        report(withKeys ? "Pack, four keys: share of memcpy" : "Pack: share of memcpy",
               median(copy) / median(pack) * 100, "%", 70, true);
        report(withKeys ? "Unpack, four keys, one unique and so built: of memcpy"
                        : "Unpack: share of memcpy",
               median(copy) / median(unpack) * 100, "%", 70, true);
    }
};

} // namespace

int main(int argc, char** argv) {
    const size_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1000000;
    rounds = std::max(1, argc > 2 ? std::atoi(argv[2]) : 5);
    if (count < 1000) {
        std::fprintf(stderr, "usage: bench_mdx [rows, at least 1000] [rounds]\n");
        return 2;
    }
    std::printf("record library: %zu rows, medians of %d\n", count, rounds);
    const std::string part = argc > 3 ? argv[3] : "";
    const auto wanted = [&part](const char* name) { return part.empty() || part == name; };
    const std::vector<Row> rows = makeRows(count, 1);
    Bench bench(rows);
    bench.building();
    if (wanted("seek"))
        bench.exactSeek();
    if (wanted("position")) {
        bench.position<0>();
        bench.position<1>();
        bench.position<2>();
        bench.position<3>();
    }
    if (wanted("scan")) {
        bench.recordAt();
        bench.scan();
    }
    if (wanted("change"))
        bench.change();
    if (wanted("pack")) {
        bench.packing(true);
        bench.packing(false);
    }
    return orvo::bench::exitCode();
}
