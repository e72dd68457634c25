#include "TrialStore.h"

#include "platform/store/StoreUrl.h"
#include "tests/store/Batch.h"
#include "tests/store/SqliteFiles.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QThread>

namespace orvo::test {

namespace {

/// The errors that `check` has found.
QStringList errorsIn(const AdminResult& checked) {
    return checked.lines().filter(QRegularExpression("^ошибка"));
}

} // namespace

QString desktopOf(store::Store& store) {
    CMDArray desktops;
    if (!store.fetch("MenuFolder", desktops.array).ok())
        return {};
    for (const QString& line :
         store::test::dump(desktops.array, {"KeyLink", "isFolder"}).split('\n'))
        if (line.endsWith("|false"))
            return line.section('|', 0, 0);
    return {};
}

void TrialStore::init() {
    AdminTest::init();
    const AdminResult made = run({"demo"});
    QVERIFY2(made.code == 0, qPrintable(made.err));
    m_replay = {};
    m_errors = errorsIn(run({"check", "--all"}));
    const auto store = open();
    QVERIFY(store);
    m_desktop = desktopOf(*store);
    QVERIFY(!m_desktop.isEmpty());
}

std::unique_ptr<QProcess> TrialStore::start(const QStringList& arguments) const {
    auto process = std::make_unique<QProcess>();
    process->setWorkingDirectory(m_admin->path());
    process->start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                   onStore(m_kind, arguments));
    process->waitForStarted();
    return process;
}

int TrialStore::killAfter(QProcess& process, int milliseconds) {
    if (process.waitForFinished(std::max(1, milliseconds)))
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    process.kill();
    process.waitForFinished();
    // It may have come to its end in the meantime.
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool TrialStore::isQuiet() const {
    if (!isPostgres())
        return true;
    QElapsedTimer clock;
    clock.start();
    QByteArray words;
    while (clock.elapsed() < 30000) {
        if (m_kind.byHand("SELECT 'sessions ' || count(*) FROM pg_stat_activity WHERE datname = "
                          "current_database() AND pid <> pg_backend_pid() AND backend_type = "
                          "'client backend'",
                          &words) &&
            words.contains("sessions 0"))
            return true;
        QThread::msleep(20);
    }
    qWarning("%s", words.constData());
    return false;
}

QString TrialStore::fault(Log log) {
    const AdminResult checked = run({"check", "--all"});
    if (checked.code > 1 || errorsIn(checked) != m_errors)
        return "check: " + checked.out + checked.err;
    const auto store = open();
    if (!store)
        return "the store does not open";
    const QStringList differences =
        log == Log::GoesOn ? m_replay.check(*store) : store::test::historyDifferences(*store);
    if (!differences.isEmpty())
        return "log and tables: " + differences.join("; ");
    store::StoreUrl address;
    if (isPostgres() || !address.parse(m_kind.url()).ok())
        return {};
    const QString sound = store::test::shell(QString::fromStdString(address.file()),
                                             "PRAGMA busy_timeout = 5000; PRAGMA integrity_check");
    return sound.endsWith("ok") ? QString() : "integrity_check: " + sound;
}

} // namespace orvo::test
