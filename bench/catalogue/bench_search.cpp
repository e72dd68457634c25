// bench_search [RECORDS]: the search over RECORDS (1000000) resources and as many elements as
// somebody types, beside SQLite in memory over the same texts: LIKE, and the trigram index of FTS5.
// Medians of five. Exits with 1 if a budget is missed.
#include "bench/Budget.h"
#include "bench/store/Support.h"

#include "catalogue/Search.h"
#include "frame/Vocabulary.h"
#include "platform/store/Maintenance.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

using namespace orvo;
using namespace orvo::bench;
using namespace orvo::catalogue;

namespace {

constexpr double firstBudgetMs = 16, allBudgetMs = 100, changeBudgetMs = 5;
constexpr double besideBudget = 150;
constexpr int most = 200; ///< shown, and fetched from the peers
constexpr int rounds = 5;

void judge(const char* what, double figure, double budget, const char* unit) {
    std::printf("  %-46s %9.2f %s", what, figure, unit);
    orvo::bench::judge(figure, orvo::bench::Bound::AtMost, budget, "");
}

void require(const store::Status& status) {
    check(status.ok(), status.text);
}

std::string keyOf(const char* kind, int number) {
    char key[40];
    const auto mixed = static_cast<unsigned>(number) * 2654435761U;
    std::snprintf(key, sizeof key, "{%s%06X-%04X-4A%02X-9C%02X-%012X}", kind, mixed >> 8,
                  mixed & 0xFFFF, mixed >> 24, mixed >> 4 & 0xFF, static_cast<unsigned>(number));
    return key;
}

/// A plant: folders of resources, a thousand desktops, a tenth of the elements folders.
store::Status fillPlant(store::Receiver& into, int count) {
    const char* const things[] = {"Насос",  "Клапан", "Задвижка",  "Ёмкость",
                                  "Датчик", "Кран",   "Компрессор"};
    const char* const adjectives[] = {"подпиточный", "аварийный", "дренажный", "резервный",
                                      "магистральный"};
    const auto caption = [&](int i) {
        return std::string(things[i % 7]) + " " + adjectives[i / 7 % 5] + " " + std::to_string(i);
    };
    using Values = std::vector<store::Value>;
    const store::Value null;
    const auto add = [&](const char* table, const Values& values) {
        require(into.record(*store::findTable(table), values, {}));
    };
    for (int i = 0; i < 100; ++i)
        add("MenuResourceFolder",
            {keyOf("10", i), null, int64_t(3), "Участок " + std::to_string(i)});
    for (int i = 0; i < count; ++i)
        add("MenuResource",
            {keyOf("20", i), keyOf("10", i % 100), "unit" + std::to_string(i) + "_view", int64_t(3),
             caption(i), "tag=" + std::to_string(i % 5000), null, null, null});
    for (int i = 0; i < 1000; ++i)
        add("MenuFolder",
            {keyOf("30", i), null, "КС-" + std::to_string(i), std::string("2000"), int64_t(0)});
    for (int i = 0; i < count; ++i) {
        const bool isFolder = i % 10 == 0;
        add("Menu",
            {keyOf("40", i), isFolder ? null : store::Value(keyOf("40", i / 10 * 10)),
             keyOf("30", i / 10 % 1000), caption(i), int64_t(i), null, int64_t(0), int64_t(0),
             isFolder ? null : store::Value(keyOf("20", i)), "n=" + std::to_string(i % 777)});
    }
    return {};
}

/// SQLite in memory over the same texts, the tables prepared as well as can be.
class Peer {
public:
    explicit Peer(const Catalogue& catalogue) {
        sqlite3_open(":memory:", &m_db);
        run("CREATE TABLE t (text TEXT)");
        run("CREATE VIRTUAL TABLE f USING fts5(text, tokenize = 'trigram', content = 't')");
        run("BEGIN");
        sqlite3_stmt* insert = prepare("INSERT INTO t VALUES (?1)");
        for (uint32_t i = 0; i < catalogue.numberEnd(); ++i) {
            const Record record = catalogue.at(i);
            // Small letters: LIKE of SQLite knows the cases of Latin letters only.
            const QString text =
                (record.name() + '\n' + QString::fromStdString(record.text("name_")) + '\n' +
                 QString::fromStdString(record.text("params")) + '\n' +
                 QString::fromStdString(record.key()))
                    .toLower();
            const QByteArray bytes = text.toUtf8();
            sqlite3_bind_text(insert, 1, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        run("INSERT INTO f(f) VALUES ('rebuild')");
        run("COMMIT");
    }
    ~Peer() { sqlite3_close(m_db); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Counts all and fetches the first ones, as the search does. Negative: it cannot.
    double like(const QStringList& words) const {
        QStringList conditions;
        for (const QString& word : words)
            conditions << QString("text LIKE '%%1%'").arg(word);
        return query("t", conditions.join(" AND "));
    }
    double trigram(const QStringList& words) const {
        QStringList parts;
        for (const QString& word : words) {
            if (word.size() < 3)
                return -1; // it knows no shorter ones
            parts << '"' + word + '"';
        }
        return query("f", QString("f MATCH '%1'").arg(parts.join(" AND ")));
    }

private:
    double query(const char* table, const QString& where) const {
        const std::string text =
            QString("SELECT count(*) FROM %1 WHERE %2").arg(table, where).toStdString();
        const std::string firsts = QString("SELECT rowid, text FROM %1 WHERE %2 LIMIT %3")
                                       .arg(table, where)
                                       .arg(most)
                                       .toStdString();
        std::vector<double> taken;
        for (int i = 0; i < rounds; ++i)
            taken.push_back(1000 * seconds([&] {
                                for (const std::string& sql : {firsts, text}) {
                                    sqlite3_stmt* statement = prepare(sql.c_str());
                                    while (sqlite3_step(statement) == SQLITE_ROW)
                                        sqlite3_column_int(statement, 0);
                                    sqlite3_finalize(statement);
                                }
                            }));
        return median(taken);
    }
    void run(const char* sql) {
        check(sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK,
              sqlite3_errmsg(m_db));
    }
    sqlite3_stmt* prepare(const char* sql) const {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(m_db, sql, -1, &statement, nullptr) == SQLITE_OK,
              sqlite3_errmsg(m_db));
        return statement;
    }
    sqlite3* m_db = nullptr;
};

void benchQueries(Search& search, const Catalogue& catalogue, const Peer& peer) {
    const char* const queries[] = {"насос",
                                   "999999",
                                   "unit777777_view",
                                   "а",
                                   "нас подпит 70",
                                   "дренажный кс-77",
                                   "{40",
                                   "ничего такого нет",
                                   "клапан резервный 33"};
    const std::atomic<bool> stop = false;
    for (const char* text : queries) {
        std::vector<double> firsts, alls;
        int count = 0;
        for (int i = 0; i < rounds; ++i) {
            QElapsedTimer timer;
            double first = -1;
            timer.start();
            const Findings found =
                search.find(catalogue, text, most, stop, [&](const Findings& sofar) {
                    if (!sofar.best.isEmpty())
                        first = static_cast<double>(timer.nsecsElapsed()) / 1e6;
                });
            alls.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            firsts.push_back(first < 0 ? alls.back() : first);
            count = found.count;
        }
        const QStringList words = QString(text).split(' ');
        std::printf("%s: %d found; LIKE %.0f ms, trigrams %.1f ms\n", text, count, peer.like(words),
                    peer.trigram(words));
        judge("the first ones", median(firsts), count == 0 ? allBudgetMs : firstBudgetMs, "ms");
        judge("all", median(alls), allBudgetMs, "ms");
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 1000000;
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const QTemporaryDir directory;
    store::Status status;
    const auto store = store::openMaintained(directory.filePath("plant.db").toStdString(),
                                             {"bench", true, "bench"}, &status);
    check(store != nullptr, status.text);
    require(store->replaceAll([count](store::Receiver& into) { return fillPlant(into, count); }));
    Catalogue catalogue;
    Search search;
    catalogue.addListener(&search);
    const double loading = seconds([&] { require(catalogue.load(*store)); });
    const double copying = seconds([&] { search.settled(catalogue); });
    const auto records = static_cast<double>(catalogue.count());
    const Catalogue::Memory memory = catalogue.memory();
    std::printf("%.0f records: loaded in %.2f s, texts copied in %.2f s\n", records, loading,
                copying);
    judge("memory beside the texts", static_cast<double>(memory.beside) / records, besideBudget,
          "bytes a record");
    std::printf("  %-46s %9.2f bytes a record; the search's copy %.2f\n", "texts",
                static_cast<double>(memory.texts) / records,
                static_cast<double>(search.memory()) / records);
    std::vector<double> changes;
    for (int i = 0; i < 101; ++i) {
        store::Change change;
        change.code = OrvoEventUpdate;
        change.table = "Menu";
        change.key = keyOf("40", count / 101 * i);
        change.after = R"({"caption":"Насос переименованный"})";
        changes.push_back(1000 * seconds([&] {
                              check(catalogue.apply(change), "not applied");
                              search.settled(catalogue);
                          }));
    }
    judge("a change, ready to be found", median(changes), changeBudgetMs, "ms");
    const Peer peer(catalogue);
    benchQueries(search, catalogue, peer);
    return orvo::bench::exitCode();
}
