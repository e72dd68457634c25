#include "apps/client/FunctionProcess.h"

#include "apps/client/FunctionHost.h"
#include "frame/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <utility>

namespace orvo::app {

namespace {

constexpr qint64 longestLine = 1 << 16;

} // namespace

FunctionProcess::FunctionProcess(QObject* parent) : SetUpProcess(parent) {
    setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(this, &QProcess::readyReadStandardOutput, this, &FunctionProcess::readLog);
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, [this] {
        readLog();
        end(failure());
    });
    connect(this, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(Text::tr("Функция «%1» не запущена: %2").arg(m_name, errorString()));
    });
}

FunctionProcess::~FunctionProcess() {
    m_hasEnded = true;
    if (state() != QProcess::NotRunning) {
        kill();
        waitForFinished(1000);
    }
}

void FunctionProcess::run(const FunctionContext& context, const QString& name,
                          const QString& params, bool isConnected) {
    m_name = name;
    start(context.program, {QString::fromLatin1(functionHostMode)});
    if (m_hasEnded)
        return;
    // By the pipe, not by the command line: the address may hold a password.
    const QJsonObject order{{"store", context.store},
                            {"login", context.login},
                            {"workDir", context.workDir},
                            {"modules", QJsonArray::fromStringList(context.moduleDirs)},
                            {"name", name},
                            {"parameters", params},
                            {"isConnected", isConnected}};
    write(QJsonDocument(order).toJson(QJsonDocument::Compact) + '\n');
}

void FunctionProcess::raiseWindows() {
    if (state() == QProcess::Running)
        write("raise\n");
}

void FunctionProcess::setUpChild() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

void FunctionProcess::readLog() {
    setReadChannel(QProcess::StandardOutput);
    while (canReadLine() || bytesAvailable() >= longestLine) {
        const QJsonObject told = QJsonDocument::fromJson(readLine(longestLine)).object();
        m_isClosing = m_isClosing || told[QLatin1String("closing")].toBool();
        const QJsonArray line = told[QLatin1String("log")].toArray();
        if (line.size() == 3)
            emit logged(line[0].toInt(), line[1].toString(), line[2].toString());
    }
}

QString FunctionProcess::failure() const {
    if (exitStatus() == QProcess::CrashExit)
        return Text::tr("Функция «%1» завершилась аварийно (сигнал %2).")
            .arg(m_name)
            .arg(exitCode());
    switch (exitCode()) {
    case FunctionExitDone:
        return {};
    case FunctionExitUnknown:
        return Text::tr("Функции «%1» здесь нет: её не знает ни одна библиотека модулей.")
            .arg(m_name);
    case FunctionExitFailed:
        return Text::tr("Функция «%1» не выполнена; причина в журнале.").arg(m_name);
    default:
        return Text::tr("Функция «%1» завершилась с кодом %2.").arg(m_name).arg(exitCode());
    }
}

void FunctionProcess::end(const QString& why) {
    if (!std::exchange(m_hasEnded, true))
        emit ended(why);
}

} // namespace orvo::app
