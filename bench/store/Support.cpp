#include "Support.h"

#include "platform/mdx/MdxBuild.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvo::bench {

namespace {

using Clock = std::chrono::steady_clock;

void setText(CMDArray& array, MDRData* record, const char* field, const std::string& text) {
    MDRVar var{};
    var.type = MDX_TEXT;
    var.value.text.length = static_cast<uint32_t>(text.size());
    var.value.text.pointer = text.c_str();
    array.SetValF(record, field, var);
}

/// "VmHWM" and the like, in MiB.
double memory(const char* name) {
    QFile file("/proc/self/status");
    check(file.open(QIODevice::ReadOnly), "no /proc");
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(name))
            return line.simplified().split(' ').value(1).toDouble() / 1024;
    }
    return 0;
}

} // namespace

void keepMemory() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

void touchMemory() {
    constexpr size_t size = 768u << 20;
    void* mapping =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    check(mapping != MAP_FAILED, "no memory");
    ::madvise(mapping, size, MADV_HUGEPAGE);
    for (size_t i = 0; i < size; i += 4096)
        static_cast<volatile char*>(mapping)[i] = 1;
    ::munmap(mapping, size);
}

double seconds(const std::function<void()>& work) {
    const auto begin = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void check(bool ok, const std::string& what) {
    if (ok)
        return;
    std::fprintf(stderr, "bench_store: %s\n", what.c_str());
    std::exit(1);
}

double rate(const std::function<void()>& write) {
    int count = 0;
    const auto begin = Clock::now();
    std::chrono::duration<double> passed{};
    do {
        for (int i = 0; i < 20; ++i, ++count)
            write();
        passed = Clock::now() - begin;
    } while (passed.count() < 0.2);
    return count / passed.count();
}

void fill(store::Store& target, int records) {
    const store::TableDef& table = *store::findTable("MenuResource");
    constexpr int portion = 50000;
    for (int begin = 0; begin < records; begin += portion) {
        CMDArray array;
        store::makeStructure(table, array.array);
        for (int i = begin; i < std::min(begin + portion, records); ++i) {
            MDRData* record = MDARecNew(array.array);
            MDRSetFlags(record, MDX_INSERT);
            char key[40];
            std::snprintf(key, sizeof key, "%08X%024X", i * 2654435761u, unsigned(i));
            setText(array, record, "KeyLink", key);
            setText(array, record, "MenuResourceFolderKey",
                    "F000000000000000000000000000" + std::to_string(1000 + i % 500));
            setText(array, record, "name_", "resource_" + std::to_string(i));
            setText(array, record, "caption",
                    mdx::toCp1251("Экранная форма участка номер " + std::to_string(i)));
            setText(array, record, "params", "unit=" + std::to_string(i % 97) + ";mode=view");
            setText(array, record, "ico", "form_" + std::to_string(i % 40) + ".png");
            setText(array, record, "UsersKey", i % 10 == 0 ? "U1" : "");
            MDRVar var{};
            var.type = MDX_INTEGER;
            var.value.integer = 1 + i % 4;
            array.SetValF(record, "type_", var);
            var.type = MDX_DATE;
            var.value.date = 1.7e9 + i;
            array.SetValF(record, "dateTimeEdit", var);
            MDARecPost(record, nullptr);
        }
        const store::Status status = target.update("MenuResource", array.array);
        check(status.ok(), status.text);
    }
    int64_t last = 0;
    store::Status status = target.logPosition(&last);
    if (status.ok())
        status = target.pruneLog(last);
    check(status.ok(), status.text);
}

double fetchIntoRecords(store::Store& source, int records) {
    touchMemory();
    CMDArray array;
    const double time = seconds([&] {
        const store::Status status = source.fetch("MenuResource", array.array);
        check(status.ok(), status.text);
    });
    check(array.array->recordCount == static_cast<uint32_t>(records), "records are missing");
    return time;
}

double fetchThroughQt(const char* driver, const QString& database, const QString& host,
                      const QString& user, int records) {
    touchMemory();
    double time = 0;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(driver, "peer");
        connection.setDatabaseName(database);
        connection.setHostName(host);
        connection.setUserName(user);
        check(connection.open(), connection.lastError().text().toStdString());
        int rows = 0;
        qint64 characters = 0;
        time = seconds([&] {
            QSqlQuery query(connection);
            query.setForwardOnly(true);
            check(query.exec("SELECT \"KeyLink\", \"MenuResourceFolderKey\", \"name_\", \"type_\", "
                             "\"caption\", \"params\", \"ico\", \"UsersKey\", \"dateTimeEdit\" "
                             "FROM \"MenuResource\""),
                  query.lastError().text().toStdString());
            for (; query.next(); ++rows) {
                for (int i = 0; i < 9; ++i) {
                    const QVariant value = query.value(i);
                    characters += value.type() == QVariant::String ? value.toString().size() : 1;
                }
            }
        });
        check(rows == records && characters > 0, "rows are missing");
    }
    QSqlDatabase::removeDatabase("peer");
    return time;
}

void insertForUpdates(store::Store& target) {
    CMDArray insert;
    store::makeStructure(*store::findTable("Menu"), insert.array);
    for (int i = 0; i < 1000; ++i) {
        MDRData* record = MDARecNew(insert.array);
        MDRSetFlags(record, MDX_INSERT);
        setText(insert, record, "KeyLink", std::to_string(100000 + i));
        setText(insert, record, "caption", "c");
        MDARecPost(record, nullptr);
    }
    const store::Status status = target.update("Menu", insert.array);
    check(status.ok(), status.text);
}

void updateOne(store::Store& target, int number) {
    CMDArray array;
    store::makeStructure(*store::findTable("Menu"), array.array);
    MDRData* record = MDARecNew(array.array);
    MDRSetFlags(record, MDX_UPDATE);
    setText(array, record, "KeyLink", std::to_string(100000 + number * 7 % 1000));
    setText(array, record, "caption", "caption " + std::to_string(number));
    MDARecPost(record, nullptr);
    const store::Status status = target.update("Menu", array.array);
    check(status.ok(), status.text);
}

void benchLargeFile(const std::function<std::unique_ptr<store::Store>()>& openStore) {
    constexpr size_t size = 200u << 20;
    const auto child = [&](const char* what, const std::function<void(store::Store&)>& work) {
        std::fflush(stdout);
        const pid_t pid = ::fork(); // no store is open here; the child's peak is its own
        check(pid >= 0, "fork");
        if (pid == 0) {
            const auto target = openStore();
            const double before = memory("VmRSS");
            const double time = seconds([&] { work(*target); });
            std::printf("200 MiB file %s: %.2f s, peak of memory %.2fx the file\n", what, time,
                        (memory("VmHWM") - before) / 200);
            std::fflush(stdout);
            ::_exit(0);
        }
        int result = 0;
        ::waitpid(pid, &result, 0);
        check(result == 0, "large file");
    };
    child("in (the caller's copy included)", [&](store::Store& target) {
        const std::string bytes(size, 'x');
        const store::Status status = target.filePut({{"", "large", bytes, {}}});
        check(status.ok(), status.text);
    });
    child("out", [&](store::Store& target) {
        std::vector<store::StoredFile> files;
        const store::Status status = target.fileGet("", "large", true, &files);
        check(status.ok() && files.size() == 1 && files[0].bytes.size() == size, "large file");
    });
}

} // namespace orvo::bench
