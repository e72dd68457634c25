// Backups of a PostgreSQL store: the archives of the server's own programs. Those take one snapshot
// while others write, carry the log along, and can be read by any administrator of the server
// without this program. Only the schema of the store is copied and restored: what else is in the
// database belongs to others.
#include "frame/StdText.h"
#include "platform/store/PostgresSchema.h"
#include "platform/store/PostgresStore.h"

#include "frame/Vocabulary.h"
#include "platform/store/Checksum.h"
#include "platform/store/Names.h"
#include "platform/store/Sql.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <memory>

namespace orvo::store::postgres {

namespace {

constexpr int progressMilliseconds = 100; ///< between two looks at the progress
constexpr qint64 mostUnsent = 4 << 20;
constexpr int lockMilliseconds = 10000; ///< of waiting for a table that somebody holds

/// The address as the environment of a program: unlike its arguments nobody else can read it.
QProcessEnvironment environmentFor(const Url& url) {
    struct Free {
        void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
    };
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const std::unique_ptr<PQconninfoOption, Free> options(PQconndefaults());
    for (const PQconninfoOption* option = options.get();
         option != nullptr && option->keyword != nullptr; ++option) {
        const std::string value = url.get(option->keyword);
        if (option->envvar != nullptr && !value.empty())
            environment.insert(QString::fromUtf8(option->envvar), QString::fromStdString(value));
    }
    return environment;
}

/// One of the server's programs at work. It is killed when it is given up.
class Program {
public:
    Program(const Url& url, const char* name, std::string what)
        : m_url(url)
        , m_name(name)
        , m_what(std::move(what)) {
        process.setProcessEnvironment(environmentFor(url));
    }
    ~Program() {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    Status start(const QStringList& arguments) {
        const QString path = QStandardPaths::findExecutable(QString::fromUtf8(m_name));
        if (path.isEmpty())
            return {Failed, m_what + StdText::tr(": нет программы ") + m_name +
                                StdText::tr(" (пакет postgresql-client)")};
        process.start(path, arguments);
        if (!process.waitForStarted())
            return {Failed, m_what + StdText::tr(": программа ") + std::string(m_name) +
                                StdText::tr(" не запускается (") +
                                process.errorString().toStdString() + ")"};
        return {};
    }

    /// Waits for the end; `look` is asked now and then whether to go on.
    Status finish(const std::function<bool()>& look) {
        while (process.state() != QProcess::NotRunning &&
               !process.waitForFinished(progressMilliseconds))
            if (!look())
                return stopped();
        return result();
    }

    Status result() {
        if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
            return {};
        // The first line says what it was; the rest is where.
        words = process.readAllStandardError().trimmed();
        const std::string line =
            words.left(words.indexOf('\n') < 0 ? words.size() : words.indexOf('\n')).toStdString();
        if (const std::string state = stateIn(line); !state.empty())
            return serverFailure(
                m_what, state,
                m_url.withoutSecrets(validUtf8(line.substr(line.find(state + ": ") + 7))));
        return {Failed,
                m_what + ": " +
                    (line.empty() ? std::string(m_name) + StdText::tr(" не закончила работу")
                                  : m_url.withoutSecrets(validUtf8(line)))};
    }
    Status stopped() const { return {Stopped, m_what + StdText::tr(": прервано")}; }

    QProcess process;
    QByteArray words; ///< all that a program said that failed

private:
    const Url& m_url;
    const char* m_name;
    const std::string m_what;
};

Status output(const Url& url, const char* program, const QStringList& arguments,
              const std::string& what, QByteArray* text) {
    Program run(url, program, what);
    Status status = run.start(arguments);
    if (!status.ok())
        return status;
    run.process.closeWriteChannel();
    status = run.finish([] { return true; });
    *text = run.process.readAllStandardOutput();
    return status;
}

/// The tables of a store of the newest version.
std::vector<std::string> ownTables() {
    std::vector<std::string> names = {"MenuResourceFileData", "MenuResourceFileSum",
                                      contentTable().name};
    for (const TableDef& table : tables())
        names.emplace_back(table.name);
    for (const char* name :
         {"NciVersionData", "NciVersion", "NciEvent", "NciPruned", "NciStore", "NciLock"})
        names.emplace_back(name);
    return names;
}

/// Whether an entry of an archive's list is one of a store's tables or goes with one. Functions,
/// triggers and rights are not taken from an archive, but made as this program makes them; whatever
/// else was in the database is left alone.
bool isOwn(const QString& entry) {
    static const QRegularExpression line(
        "^\\d+; \\d+ \\d+ (TABLE|TABLE DATA|SEQUENCE|SEQUENCE OWNED BY|SEQUENCE SET|CONSTRAINT|FK "
        "CONSTRAINT|INDEX|DEFAULT) public (\\w+)");
    const QRegularExpressionMatch match = line.match(entry);
    if (!match.hasMatch())
        return false;
    const QString name = match.captured(2);
    if (name == "NciEventId" || name == "NciVersionId")
        return true;
    for (const std::string& own : ownTables()) {
        const QString table = QString::fromStdString(own);
        if (name == table || (match.captured(1) == "INDEX" && name.startsWith(table + "_")))
            return true;
    }
    return false;
}

/// Refuses an archive that holds no store, or a newer one.
Status checkArchive(const Url& url, const std::string& file, QByteArray* entries, int* version) {
    const std::string what = StdText::tr("Резервная копия ") + shown(file);
    const QString path = QString::fromStdString(file);
    QByteArray list;
    Status status = output(url, "pg_restore", {"--list", path}, what, &list);
    if (!status.ok())
        return {status.code == Failed ? int(NotAStore) : status.code, status.text};
    if (!list.contains(" TABLE public NciStore ") || !list.contains(" TABLE public NciEvent "))
        return {NotAStore, what + StdText::tr(": в ней нет хранилища")};
    for (const QByteArray& entry : list.split('\n'))
        if (isOwn(QString::fromUtf8(entry)))
            *entries += entry + '\n';
    QByteArray data;
    status = output(url, "pg_restore",
                    {"--data-only", "--schema=public", "--table=NciStore", "--file=-", path}, what,
                    &data);
    if (!status.ok())
        return status;
    const int copy = data.indexOf("\nCOPY ");
    const int line = copy < 0 ? -1 : data.indexOf('\n', copy + 1);
    *version = line < 0 ? 0 : data.mid(line + 1, 12).simplified().split(' ').first().toInt();
    if (*version < 1)
        return {NotAStore, what + StdText::tr(": в ней нет хранилища")};
    if (*version > static_cast<int>(migrations().size()))
        return {NewerStore, what + StdText::tr(" сделана более новой версией программы (версия ") +
                                std::to_string(*version) + StdText::tr(", известна ") +
                                std::to_string(migrations().size()) + ")"};
    return {};
}

/// Opens the transaction: nobody else writes any more, and what is there goes. The owner stays.
QByteArray beginning() {
    std::string sql = "BEGIN;\nSET search_path = pg_catalog, pg_temp;\n"
                      "SET LOCAL client_min_messages = warning;\n"
                      "SET LOCAL lock_timeout = " +
                      std::to_string(lockMilliseconds) +
                      ";\n"
                      "SELECT format('SET LOCAL ROLE %I', pg_get_userbyid(relowner)) FROM pg_class "
                      "WHERE oid = 'public.\"NciEvent\"'::regclass \\gexec\n";
    sql +=
        std::string("SELECT ") + takeLogLock +
        ";\nSELECT greatest(coalesce((SELECT max(\"id\") FROM public.\"NciEvent\"), 0), "
        "coalesce((SELECT max(\"id\") FROM public.\"NciPruned\"), 0)) AS position \\gset orvo_\n";
    for (const std::string& name : ownTables())
        sql += "DROP TABLE IF EXISTS " + qualified(name) + " CASCADE;\n";
    return QByteArray::fromStdString(sql + dropFunctions());
}

/// Fails where the store lacks a table or a field, so that nothing is committed.
std::string checkTables() {
    std::string sql;
    const auto select = [&sql](const std::string& columns, const char* table) {
        sql += "SELECT " + columns + " FROM " + qualified(table) + " LIMIT 0;\n";
    };
    for (const TableDef& table : tables())
        select(fieldList(table), table.name);
    select(fieldList(contentTable()), contentTable().name);
    select("\"KeyLink\", \"part\", \"data\"", "MenuResourceFileData");
    select("\"KeyLink\", \"sha256\"", "MenuResourceFileSum");
    select("\"id\", \"code\", \"tableName\", \"key\", \"login\", \"time\", \"after\", \"before\", "
           "\"call\", \"group\", \"xact\", \"client\", \"place\", \"undoes\"",
           "NciEvent");
    select("\"id\", \"versions\"", "NciPruned");
    select(versionColumns, "NciVersion");
    select("\"id\", \"part\", \"data\"", "NciVersionData");
    select("\"version\", \"identity\"", "NciStore");
    return sql;
}

/// Fails where rows are not as the editors can bring them about: stored content without its
/// resource, or of another length than it says, or a log that no trigger has written.
std::string checkRows() {
    return std::string(R"(DO $orvo$ BEGIN
IF EXISTS (SELECT 1 FROM public."MenuResourceFile" AS f WHERE NOT EXISTS (SELECT 1 FROM
    public."MenuResource" AS r WHERE lower(r."KeyLink") = lower(f."MenuResourceKey"))) THEN
  RAISE EXCEPTION )" + literal(StdText::tr("копия изменена: содержимое файла без его ресурса")) +
                       R"(;
END IF;
IF EXISTS (SELECT 1 FROM public."MenuResourceFile" AS f WHERE coalesce(f."size", 0) <>
    (SELECT coalesce(sum(length(d."data")), 0) FROM public."MenuResourceFileData" AS d
     WHERE d."KeyLink" = f."KeyLink")) THEN
  RAISE EXCEPTION )" + literal(StdText::tr("копия изменена: содержимое файла не той длины")) +
                       R"(;
END IF;
IF EXISTS (SELECT 1 FROM public."NciEvent" WHERE "id" < 1 OR "code" NOT IN ()") +
           std::to_string(OrvoEventInsert) + ", " + std::to_string(OrvoEventUpdate) + ", " +
           std::to_string(OrvoEventDelete) + R"()) THEN
  RAISE EXCEPTION )" +
           literal(StdText::tr("копия изменена: невозможная строка журнала изменений")) + R"(;
END IF;
IF (SELECT count(*) FROM public."NciPruned") <> 1 THEN
  RAISE EXCEPTION )" +
           literal(StdText::tr("копия изменена: не одна строка в таблице NciPruned")) + R"(;
END IF;
END $orvo$;
)";
}

/// Brings what came from an archive of that version up to date. Every number of a change that was
/// ever given out becomes too low for a reader, and the next change gets a higher one.
QByteArray ending(int version, bool vouchedFor) {
    std::string sql = "\nSET search_path = pg_catalog, pg_temp;\n";
    for (auto step = static_cast<size_t>(version); step < migrations().size(); ++step)
        sql += migrations()[step];
    sql += functionsAndRights(dictionary()) + checkTables() +
           (vouchedFor ? std::string() : checkRows()) +
           "UPDATE public.\"NciStore\" SET \"version\" = " + std::to_string(migrations().size()) +
           ", \"identity\" = gen_random_uuid();\n"
           "UPDATE public.\"NciPruned\" SET \"id\" = greatest(:orvo_position, \"id\");\n"
           // Another server's transactions have other numbers.
           "UPDATE public.\"NciEvent\" SET \"xact\" = NULL WHERE \"id\" = (SELECT max(\"id\") FROM "
           "public.\"NciEvent\");\n" +
           cursorsPruned() + "COMMIT;\n";
    return QByteArray::fromStdString(sql);
}

} // namespace

Status PostgresStore::backup(const std::string& file, const Progress& progress) {
    return guarded([&]() -> Status {
        const std::string what = StdText::tr("Резервная копия");
        const QString path = QString::fromStdString(file);
        Status status = ready();
        if (!status.ok())
            return status;
        QStringList arguments = {"--format=custom", "--no-password", "--schema=public",
                                 "--lock-wait-timeout=" + QString::number(lockMilliseconds),
                                 "--file=" + path};
        // What others have put beside the store may be beyond our rights.
        std::string own = "'NciEventId', 'NciVersionId'";
        for (const std::string& name : ownTables())
            own += ", " + literal(name);
        const Result others = m_connection.query(
            "SELECT relname::text FROM pg_class WHERE relnamespace = 'public'::regnamespace AND "
            "relkind IN ('r', 'p', 'v', 'm', 'f', 'S') AND relname NOT IN (" +
                own + ")",
            {});
        if (!succeeded(others.get()))
            return m_connection.failure(what, others.get());
        for (int row = 0; row < PQntuples(others.get()); ++row)
            arguments << QString::fromStdString("--exclude-table=public." +
                                                identifier(textAt(others.get(), row, 0)));
        Program dump(m_url, "pg_dump", what);
        status = dump.start(arguments);
        if (!status.ok())
            return status;
        QElapsedTimer clock;
        clock.start();
        status = dump.finish([&] {
            return !progress || progress(static_cast<uint64_t>(QFileInfo(path).size()), 0);
        });
        // The program tells the statement that failed, but no code.
        if (status.code == Failed && clock.elapsed() >= lockMilliseconds &&
            dump.words.contains("LOCK TABLE ")) {
            status = serverFailure(what, "55P03", {});
            status.text += m_connection.whoHolds();
        }
        return status;
    });
}

Status PostgresStore::restore(const std::string& file, const Progress& progress) {
    return guarded([&]() -> Status {
        const std::string what = StdText::tr("Восстановление");
        const bool vouchedFor = hasChecksum(file);
        QByteArray entries;
        int version = 0;
        Status status = verifyChecksum(file, progress);
        if (status.ok())
            status = checkArchive(m_url, file, &entries, &version);
        if (!status.ok())
            return status;
        QTemporaryFile list;
        if (!list.open() || list.write(entries) != entries.size() || !list.flush())
            return {Failed, what + StdText::tr(": нет места для списка (") +
                                list.errorString().toStdString() + ")"};
        Program reader(m_url, "pg_restore", what);
        Program writer(m_url, "psql", what);
        writer.process.setStandardOutputFile(QProcess::nullDevice());
        status = reader.start({"--no-owner", "--use-list=" + list.fileName(), "--file=-",
                               QString::fromStdString(file)});
        if (status.ok())
            status = writer.start({"--no-psqlrc", "--quiet", "--no-password",
                                   "--set=ON_ERROR_STOP=1", "--set=VERBOSITY=verbose", "--file=-"});
        if (!status.ok())
            return status;
        const auto ended = [&](Status end) {
            if (end.code == Timeout)
                end.text += m_connection.whoHolds(Connection::Wanted::Tables);
            return end;
        };
        reader.process.closeWriteChannel();
        writer.process.write(beginning());
        uint64_t done = 0;
        for (bool more = true; more;) {
            if (progress && !progress(done, 0))
                return writer.stopped();
            more = reader.process.waitForReadyRead(progressMilliseconds) ||
                   reader.process.state() != QProcess::NotRunning;
            const QByteArray piece = reader.process.readAllStandardOutput();
            done += static_cast<uint64_t>(piece.size());
            writer.process.write(piece);
            while (writer.process.state() == QProcess::Running &&
                   writer.process.bytesToWrite() > mostUnsent) {
                writer.process.waitForBytesWritten(progressMilliseconds);
                if (progress && !progress(done, 0))
                    return writer.stopped();
            }
            if (writer.process.state() == QProcess::NotRunning)
                return ended(writer.result()); // without the end nothing is committed
        }
        // Only an archive that was read to its end may be kept.
        status = reader.result();
        if (!status.ok())
            return status;
        writer.process.write(ending(version, vouchedFor));
        writer.process.closeWriteChannel();
        status = ended(writer.finish([&] { return !progress || progress(done, 0); }));
        return status.ok() ? ready() : status;
    });
}

} // namespace orvo::store::postgres
