#include "AdminRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <memory>
#include <sqlite3.h>

bool AdminResult::refused(const QString& text) const {
    return code == 2 && out.isEmpty() && err.startsWith(QLatin1String("orvo-admin: ")) &&
           err.count(QLatin1Char('\n')) == 1 && err.endsWith(QLatin1Char('\n')) &&
           err.contains(text);
}

AdminRun::AdminRun() {
    if (!dir_.isValid())
        qFatal("no temporary directory");
}

QString AdminRun::path(const QString& name) const {
    return name.isEmpty() ? dir_.path() : dir_.filePath(name);
}

AdminResult AdminRun::plain(const QStringList& arguments, const QByteArray& input) const {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dir_.path());
    // Without a locale, as a service or a container runs it.
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(dir_.path());
    process.start(qEnvironmentVariable("ORVO_BIN_DIR") + QStringLiteral("/orvo-admin"), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForStarted() || !process.waitForFinished(100000))
        qFatal("orvo-admin did not run: %s", qPrintable(process.errorString()));
    AdminResult result;
    if (process.exitStatus() == QProcess::NormalExit)
        result.code = process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

AdminResult AdminRun::run(const QStringList& arguments) const {
    return plain(QStringList{QStringLiteral("--store"), storePath()} + arguments);
}

QString AdminRun::sql(const QString& statement) const {
    sqlite3* opened = nullptr;
    const int status =
        sqlite3_open_v2(storePath().toUtf8().constData(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> db(opened, sqlite3_close);
    if (status != SQLITE_OK)
        qFatal("cannot open %s", qPrintable(storePath()));
    QString first;
    bool taken = false;
    const auto row = [&](int columns, char** values) {
        if (!taken && columns > 0)
            first = QString::fromUtf8(values[0]);
        taken = true;
    };
    const auto callback = [](void* context, int columns, char** values, char**) {
        (*static_cast<decltype(row)*>(context))(columns, values);
        return 0;
    };
    auto call = row;
    if (sqlite3_exec(db.get(), statement.toUtf8().constData(), callback, &call, nullptr) !=
        SQLITE_OK)
        qFatal("%s: %s", qPrintable(statement), sqlite3_errmsg(db.get()));
    return first;
}

void AdminRun::copyFrom(const AdminRun& other) const {
    other.sql(QStringLiteral("pragma wal_checkpoint(truncate)"));
    if (!QFile::copy(other.storePath(), storePath()))
        qFatal("cannot copy %s", qPrintable(other.storePath()));
}

int AdminRun::count(const QString& table) const {
    return sql(QStringLiteral("select count(*) from \"%1\"").arg(table)).toInt();
}

QString AdminRun::write(const QString& name, const QByteArray& bytes) const {
    const QString file = path(name);
    QDir().mkpath(QFileInfo(file).path());
    QFile target(file);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file));
    return file;
}

QByteArray AdminRun::read(const QString& file) {
    QFile source(file);
    return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
}
