#include "bench/desk/Site.h"

#include "platform/store/PostgresApi.h"
#include "platform/store/Store.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>

#include <sqlite3.h>

namespace orvo::bench {

namespace {

/// An insertion of one row for each i from 1 to `count`.
std::string each(int count, const std::string& into, const std::string& values) {
    return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
           std::to_string(count) + ") INSERT INTO " + into + " SELECT " + values + " FROM n";
}

/// The statements that fill a new store, in their order.
std::vector<std::string> siteSql(const SiteSize& size) {
    constexpr int folders = 4000; // of the four kinds in turn
    constexpr int perFolder = 25;
    const std::string resources = std::to_string(size.resources);
    const std::string others = std::to_string(size.elements / 10);
    const std::string menu = "\"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", \"caption\", "
                             "\"order_\", \"ico\", \"MenuResourceKey\", \"params\")";
    const auto number = [](int value) { return std::to_string(value); };
    return {
        "INSERT INTO \"MenuResourceFolder\" (\"KeyLink\", \"type_\", \"caption\") VALUES "
        "('0a000000000000000000000000000001', 1, 'модули'), "
        "('0a000000000000000000000000000002', 2, 'функции'), "
        "('0a000000000000000000000000000003', 3, 'формы отображения'), "
        "('0a000000000000000000000000000004', 4, 'icons')",
        each(folders, "\"MenuResourceFolder\" (\"KeyLink\", \"ParentKey\", \"type_\", \"caption\")",
             "'rf' || (i - 1), CASE (i - 1) % 4 WHEN 3 THEN NULL ELSE "
             "'0a00000000000000000000000000000' || ((i - 1) % 4 + 1) END, (i - 1) % 4 + 1, "
             "'Участок ' || i"),
        each(size.resources,
             "\"MenuResource\" (\"KeyLink\", \"MenuResourceFolderKey\", \"name_\", \"type_\", "
             "\"caption\")",
             "'resource' || i, 'rf' || (i % " + number(folders) +
                 "), 'name_' || i, i % 4 + 1, 'Кран ' || i || ' на участке'"),
        each(40, "\"MenuFolder\" (\"KeyLink\", \"caption\", \"order_\", \"isFolder\")",
             "'df' || i, 'Управление ' || i, '1000', i > 0"),
        each(size.desktops,
             "\"MenuFolder\" (\"KeyLink\", \"ParentKey\", \"caption\", \"order_\", \"isFolder\")",
             "'desk' || i, 'df' || (i % 40 + 1), 'Пульт ' || i, '2000', i < 0"),
        each(size.elements, menu,
             "'element1_' || i, CASE i % " + number(perFolder) +
                 " WHEN 0 THEN NULL ELSE 'element1_' || (i + " + number(perFolder) + " - i % " +
                 number(perFolder) +
                 ") END, 'desk1', 'Элемент меню ' || i, i * 10, CASE i % 3 WHEN 0 THEN 'icon' || "
                 "(i % 100 + 1) || '.png' END, CASE i % " +
                 number(perFolder) + " WHEN 0 THEN NULL ELSE 'resource' || (i * 1999 % " +
                 resources + " + 1) END, ''"),
        each((size.desktops - 1) * (size.elements / 10), menu,
             "'element' || ((i - 1) / " + others + " + 2) || '_' || ((i - 1) % " + others +
                 "), NULL, 'desk' || ((i - 1) / " + others +
                 " + 2), 'Элемент ' || i, i * 10, NULL, 'resource' || (i * 13 % " + resources +
                 " + 1), ''"),
    };
}

void makeStore(const std::string& url) {
    store::Status status;
    auto made = store::open(url, {{}, true}, &status);
    must(made != nullptr, status.text);
}

void putIcons(const std::string& url) {
    store::Status status;
    auto target = store::open(url, {{}, false}, &status);
    must(target != nullptr, status.text);
    std::vector<QByteArray> pictures;
    std::vector<store::FileToPut> files;
    for (int i = 1; i <= 100; ++i)
        pictures.push_back([i] {
            QImage image(24, 24, QImage::Format_RGB32);
            image.fill(QColor::fromHsv(i * 3, 200, 200));
            QByteArray bytes;
            QBuffer buffer(&bytes);
            image.save(&buffer, "PNG");
            return bytes;
        }());
    for (int i = 1; i <= 100; ++i) {
        const QByteArray& bytes = pictures[static_cast<size_t>(i - 1)];
        files.push_back({"icons",
                         "icon" + std::to_string(i) + ".png",
                         {bytes.constData(), static_cast<size_t>(bytes.size())},
                         {}});
    }
    status = target->filePut(files);
    must(status.ok(), status.text);
}

/// Into a file without its triggers, which come back afterwards: a million changes are no part of
/// what is measured, and no log of a real site has them.
void fillSqlite(const std::string& path, const SiteSize& size) {
    sqlite3* file = nullptr;
    must(sqlite3_open(path.c_str(), &file) == SQLITE_OK, path);
    const auto run = [&](const std::string& sql) {
        char* error = nullptr;
        if (sqlite3_exec(file, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK)
            qFatal("%s: %s", sql.substr(0, 80).c_str(), error);
    };
    std::vector<std::string> names, makes;
    sqlite3_stmt* list = nullptr;
    sqlite3_prepare_v2(file, "SELECT name, sql FROM sqlite_master WHERE type = 'trigger'", -1,
                       &list, nullptr);
    const auto column = [&](int i) {
        return std::string(reinterpret_cast<const char*>(sqlite3_column_text(list, i)));
    };
    while (sqlite3_step(list) == SQLITE_ROW) {
        names.push_back(column(0));
        makes.push_back(column(1));
    }
    sqlite3_finalize(list);
    run("PRAGMA synchronous = off; PRAGMA cache_size = -400000; BEGIN");
    for (const std::string& name : names)
        run("DROP TRIGGER \"" + name + "\"");
    for (const std::string& sql : siteSql(size))
        run(sql);
    for (const std::string& sql : makes)
        run(sql);
    run("COMMIT; ANALYZE");
    sqlite3_close(file);
}

void fillPostgres(const std::string& url, const SiteSize& size) {
    store::postgres::Url where;
    store::postgres::Connection server;
    store::Status status = where.parse(url);
    if (status.ok())
        status = server.open(where);
    must(status.ok(), status.text);
    const auto run = [&](const std::string& sql) {
        must(store::postgres::succeeded(server.execute(sql).get()), sql);
    };
    run("SET search_path = public");
    run("SET session_replication_role = replica");
    for (const std::string& sql : siteSql(size))
        run(sql);
    run("VACUUM ANALYZE");
}

} // namespace

void must(bool done, const std::string& what) {
    if (!done)
        qFatal("%s", what.c_str());
}

void makeSqliteSite(const std::string& path, const SiteSize& size) {
    makeStore(path);
    fillSqlite(path, size);
    putIcons(path);
}

void makePostgresSite(const std::string& url, const SiteSize& size) {
    makeStore(url);
    fillPostgres(url, size);
    putIcons(url);
}

} // namespace orvo::bench
