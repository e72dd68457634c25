#include "apps/client/start/StoreMaker.h"

#include "frame/Text.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include <utility>

namespace orvo::app {

StoreMaker::StoreMaker(QString program, QObject* parent)
    : QObject(parent)
    , m_program(std::move(program)) {
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setStandardOutputFile(QProcess::nullDevice());
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            ended(Text::tr("Программа %1 не запущена: %2").arg(m_program, m_process.errorString()));
    });
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this](int code, QProcess::ExitStatus status) {
                if (status == QProcess::NormalExit && code == 0) {
                    m_steps.removeFirst();
                    next();
                    return;
                }
                const QString said = QString::fromUtf8(m_process.readAllStandardError()).trimmed();
                ended(said.isEmpty() ? Text::tr("Хранилище не сделано: команда %1 %2 "
                                                "прервана.")
                                           .arg(m_program, m_steps.first())
                                     : said.section(QLatin1Char('\n'), -1));
            });
}

StoreMaker::~StoreMaker() {
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished(1000);
}

void StoreMaker::make(const QString& file, bool withDemonstration) {
    Q_ASSERT(!isRunning());
    m_file = file;
    m_steps = QStringList{QStringLiteral("init")};
    if (withDemonstration)
        m_steps << QStringLiteral("demo");
    const QString folder = QFileInfo(file).absolutePath();
    QString problem;
    if (!QFileInfo::exists(m_program))
        problem = Text::tr("Рядом с клиентом нет команды orvo-admin, которая делает "
                           "хранилища: установите пакет orvo-admin.");
    else if (!QDir().mkpath(folder))
        problem = Text::tr("Каталог %1 не создан.").arg(folder);
    if (problem.isEmpty())
        next();
    else
        QTimer::singleShot(0, this, [this, problem] { ended(problem); });
}

void StoreMaker::next() {
    if (m_steps.isEmpty()) {
        emit made({});
        return;
    }
    m_process.start(m_program, {QStringLiteral("--store"), m_file, m_steps.first()});
}

void StoreMaker::ended(const QString& problem) {
    m_steps.clear();
    emit made(problem);
}

} // namespace orvo::app
