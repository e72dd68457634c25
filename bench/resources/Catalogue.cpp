#include "bench/resources/Catalogue.h"

#include <algorithm>

namespace orvo::bench {

namespace {

constexpr int foldersInGroup = 20;
constexpr int formKind = 3;
constexpr int fileKind = 4;

/// Rows from .. end - 1 of "n", before an INSERT ... SELECT.
QByteArray numbers(int end, int from = 0) {
    return "WITH RECURSIVE n(i) AS (SELECT " + QByteArray::number(from) +
           " UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " + QByteArray::number(end) + ") ";
}

} // namespace

int Catalogue::from(int kind) const {
    constexpr int before[] = {0, 0, 30, 60, 85, 100}; // percent
    return static_cast<int>(static_cast<qint64>(m_rows) * before[kind] / 100);
}

void Catalogue::fill(test::TestStore& store) const {
    const auto run = [&](const QByteArray& sql) { store.sql(sql.constData()); };
    // A statement of the shell has its time: many rows take several.
    const auto insert = [&](int count, const QByteArray& sql) {
        constexpr int most = 50000;
        for (int from = 0; from < count; from += most)
            run(numbers(std::min(count, from + most), from) + sql);
    };
    const char* const tops[] = {"", "модули", "функции", "формы отображения", "docs"};
    const char* const names[] = {"", "mod_", "fn_", "sh_", "pasport_"};
    for (int kind = 1; kind <= fileKind; ++kind) {
        const QByteArray k = QByteArray::number(kind);
        const int count = from(kind + 1) - from(kind);
        run("INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"type_\", \"caption\") VALUES "
            "('top-" +
            k + "', " + k + ", '" + tops[kind] + "')");
        if (count == 0)
            continue;
        run(numbers((folders(kind) + foldersInGroup - 1) / foldersInGroup) +
            "INSERT INTO \"MenuResourceFolder\" SELECT 'group-" + k + "-' || i, 'top-" + k + "', " +
            k + ", 'Участок ' || i FROM n");
        run(numbers(folders(kind)) + "INSERT INTO \"MenuResourceFolder\" SELECT 'folder-" + k +
            "-' || i, 'group-" + k + "-' || (i / " + QByteArray::number(foldersInGroup) + "), " +
            k + ", 'Узел ' || i FROM n");
        insert(count,
               "INSERT INTO \"MenuResource\" (\"KeyLink\", \"MenuResourceFolderKey\", \"name_\", "
               "\"type_\", \"caption\", \"ico\") SELECT 'res-' || (i + " +
                   QByteArray::number(from(kind)) + "), 'folder-" + k + "-' || (i / " +
                   QByteArray::number(inFolder) + "), '" + names[kind] + "' || (10000000 + i), " +
                   k + ", 'Насосная станция ' || i, 'pump.png' FROM n");
        if (kind >= formKind)
            insert(count, "INSERT INTO \"MenuResourceFile\" SELECT 'content-' || (i + " +
                              QByteArray::number(from(kind)) + "), 'res-' || (i + " +
                              QByteArray::number(from(kind)) + "), '" + names[kind] +
                              "' || (10000000 + i), 1700000000, 1, x'41' FROM n");
    }
    run("INSERT INTO \"MenuResourceFolder\" VALUES ('large', 'top-1', 1, 'Весь завод'), "
        "('empty', 'top-1', 1, 'Пустая')");
    insert(
        inLarge(),
        "INSERT INTO \"MenuResource\" (\"KeyLink\", \"MenuResourceFolderKey\", \"name_\", "
        "\"type_\", \"caption\", \"ico\") SELECT 'large-' || i, 'large', 'large_' || (10000000 + "
        "i), "
        "1, 'Насосная станция ' || i, 'pump.png' FROM n");
}

} // namespace orvo::bench
