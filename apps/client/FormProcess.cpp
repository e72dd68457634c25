#include "apps/client/FormProcess.h"

#include "apps/formview/ExitCodes.h"
#include "frame/Text.h"

#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvo::app {

namespace {

void limit(__rlimit_resource resource, rlim_t value) {
    const rlimit both = {value, value};
    setrlimit(resource, &both);
}

/// Bytes that a process has in memory for itself.
qint64 memoryOf(qint64 process) {
    QFile file(QStringLiteral("/proc/%1/statm").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> pages = file.readAll().split(' ');
    return pages.size() > 2
               ? (pages[1].toLongLong() - pages[2].toLongLong()) * sysconf(_SC_PAGESIZE)
               : 0;
}

} // namespace

FormProcess::FormProcess(const ProcessLimits& limits, QObject* parent)
    : SetUpProcess(parent)
    , m_limits(limits) {
    setProcessChannelMode(QProcess::SeparateChannels);
    setStandardInputFile(nullDevice());
    setStandardOutputFile(nullDevice());
    setStandardErrorFile(nullDevice());
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this] { end(whyFinished()); });
    connect(this, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            end(Text::tr("программа просмотра %1 не запускается: %2")
                    .arg(QFileInfo(program()).fileName(), errorString()));
    });
    connect(&m_look, &QTimer::timeout, this, &FormProcess::look);
}

FormProcess::~FormProcess() {
    m_hasEnded = true;
    m_look.stop();
    m_channel.reset();
    if (state() != QProcess::NotRunning) {
        kill();
        waitForFinished(1000);
    }
}

void FormProcess::show(const QString& program, const formview::Document& document, qreal ratio,
                       int dpi) {
    int sockets[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets) != 0)
        return end(QString::fromLocal8Bit(::strerror(errno)));
    m_channel = std::make_unique<formview::Channel>(sockets[0], formview::largestFrame + (1 << 16));
    m_childSocket = sockets[1];
    connect(m_channel.get(), &formview::Channel::received, this, &FormProcess::received);

    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    variables.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(ratio));
    variables.insert(QStringLiteral("QT_FONT_DPI"), QString::number(dpi));
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_SCREEN_SCALE_FACTORS",
                             "QT_AUTO_SCREEN_SCALE_FACTOR", "QT_STYLE_OVERRIDE"})
        variables.remove(QLatin1String(name));
    setProcessEnvironment(variables);
    m_answered.start();
    start(program, {QString::number(m_childSocket), QString::number(m_limits.memory)},
          QIODevice::NotOpen);
    ::close(m_childSocket);
    m_childSocket = -1;
    if (!m_channel) // it has not even been started
        return;
    m_channel->send(formview::Message::Show, document);
    m_look.start(std::min(250, m_limits.answerMs / 4));
}

void FormProcess::setUpChild() {
    ::fcntl(m_childSocket, F_SETFD, 0); // stays open in the program
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_NOFILE, 256);
    const rlimit open = {30, RLIM_INFINITY}; // it renews the first
    setrlimit(RLIMIT_CPU, &open);
}

void FormProcess::received(formview::Message message, const QByteArray& body) {
    if (message != formview::Message::Pong)
        return;
    quint32 number = 0;
    if (formview::unpack(body, &number) && number == m_asked) {
        m_got = number;
        m_answered.start();
    }
}

void FormProcess::look() {
    if (state() != QProcess::Running || !m_channel)
        return;
    if (memoryOf(processId()) > m_limits.memory)
        return end(Text::tr("просмотру не хватило %1 МиБ памяти").arg(m_limits.memory >> 20));
    if (m_answered.elapsed() > m_limits.answerMs)
        return end(Text::tr("просмотр не отвечает дольше %1 с")
                       .arg(m_limits.answerMs / 1000.0, 0, 'g', 3));
    if (m_got == m_asked)
        m_channel->send(formview::Message::Ping, ++m_asked);
}

QString FormProcess::whyFinished() const {
    if (exitStatus() == QProcess::NormalExit && exitCode() == formview::exitOutOfMemory)
        return Text::tr("просмотру не хватило %1 МиБ памяти").arg(m_limits.memory >> 20);
    if (exitStatus() == QProcess::CrashExit)
        return exitCode() == SIGXCPU ? Text::tr("просмотр слишком долго занимает процессор")
                                     : Text::tr("просмотр завершился аварийно");
    return Text::tr("просмотр завершился с кодом %1").arg(exitCode());
}

void FormProcess::end(const QString& why) {
    if (std::exchange(m_hasEnded, true))
        return;
    m_look.stop();
    if (state() != QProcess::NotRunning)
        kill();
    if (m_channel) {
        m_channel->disconnect();
        m_channel.release()->deleteLater(); // it may be the sender
    }
    emit ended(why);
}

} // namespace orvo::app
