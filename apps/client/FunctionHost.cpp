#include "apps/client/FunctionHost.h"

#include "apps/client/FormViewer.h"
#include "apps/client/FunctionProcess.h"
#include "apps/client/Handbook.h"
#include "apps/client/HostApp.h"
#include "apps/client/Installation.h"
#include "apps/client/LogReading.h"
#include "apps/client/ModuleLibraries.h"
#include "frame/Text.h"
#include "platform/client/Session.h"
#include "platform/store/Store.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>
#include <QWidget>

#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace orvo::app {

namespace {

constexpr int logError = 5;

QByteArray readOrder() {
    constexpr int longest = 1 << 20;
    QByteArray line;
    char byte = 0;
    while (line.size() < longest && ::read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n')
        line += byte;
    return line;
}

void writeLog(int level, const QString& place, const QString& text) {
    constexpr int longest = 8192; // a line that the client still reads
    const QJsonObject line{
        {"log", QJsonArray{level, place.left(longest / 8), text.left(longest / 2)}}};
    std::fputs((QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n').constData(), stdout);
    std::fflush(stdout);
}

/// From here on there is nothing to bring to the front, however long the end takes.
void tellClosing() {
    std::fputs("{\"closing\":true}\n", stdout);
    std::fflush(stdout);
}

bool hasWindow() {
    for (const QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible())
            return true;
    return false;
}

void raiseWindows() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible()) {
            window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
            window->raise();
            window->activateWindow();
        }
}

/// What a function may ask of its host.
void serve(HostApp& app, std::unique_ptr<Handbook>& handbook) {
    QObject::connect(&app, &HostApp::logged, &app, &writeLog);
    QObject::connect(&app, &HostApp::handbookRequested, &app, [&](HandbookRequest* request) {
        if (!handbook)
            handbook = std::make_unique<Handbook>(nullptr);
        request->refusal.clear();
        handbook->open(request->page, request->chapter, &request->refusal);
    });
    QObject::connect(&app, &HostApp::logRequested, &app, [&](LogRequest* request) {
        request->refusal = Text::tr("Нет связи с хранилищем.");
        if (app.m_session)
            readLastChanges(client::sessionStore(*app.m_session), request);
    });
    QObject::connect(&app, &HostApp::formRequested, &app, [&](const QString& request) {
        QString error = Text::tr("нет связи с хранилищем");
        FormWindow* form =
            app.m_session ? openForm(client::sessionStore(*app.m_session), request, nullptr, &error)
                          : nullptr;
        if (!form)
            return app.log(logError, request, error);
        form->setAttribute(Qt::WA_DeleteOnClose);
        form->show();
    });
}

} // namespace

bool isFunctionHost(int argc, char** argv) {
    return argc == 2 && std::strcmp(argv[1], functionHostMode) == 0;
}

int runFunctionHost() {
    const QJsonObject order = QJsonDocument::fromJson(readOrder()).object();
    const QString name = order[QLatin1String("name")].toString();
    const QString workDir = order[QLatin1String("workDir")].toString();
    if (name.isEmpty() || workDir.isEmpty()) {
        std::fputs("orvo-client: --function-host даёт только сам клиент.\n", stderr);
        return FunctionExitFailed;
    }
    HostApp app;
    std::unique_ptr<Handbook> handbook;
    serve(app, handbook);
    app.m_workDir = workDir;

    std::unique_ptr<COrvoCliSes> session;
    if (order[QLatin1String("isConnected")].toBool()) {
        store::OpenOptions how;
        how.login = order[QLatin1String("login")].toString().toStdString();
        how.allowReadOnly = true;
        store::Status status;
        auto store =
            store::open(order[QLatin1String("store")].toString().toStdString(), how, &status);
        if (store)
            session = client::makeSession(std::move(store), &status);
        if (!session)
            app.log(logError, name, QString::fromStdString(status.text));
    }
    app.m_session = session.get();
    app.m_mayWrite = session && client::sessionStore(*session).mayWrite();
    const auto logModule = std::make_unique<COrvoCliMod>(&app);
    app.m_logModule = logModule.get();

    ModuleLibraries libraries;
    QStringList further;
    for (const QJsonValue one : order[QLatin1String("modules")].toArray())
        further << one.toString();
    libraries.load(installation::moduleDirectory(), further);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [] {
        char bytes[64];
        if (::read(STDIN_FILENO, bytes, sizeof bytes) <= 0)
            QCoreApplication::quit(); // the client is gone
        else
            raiseWindows();
    });
    const OrvoFunctionResult result =
        libraries.call(&app, name, order[QLatin1String("parameters")].toString());
    if (result == OrvoFunctionUnknown)
        return FunctionExitUnknown;
    if (hasWindow())
        QApplication::exec();
    tellClosing();
    return result == OrvoFunctionDone ? FunctionExitDone : FunctionExitFailed;
}

} // namespace orvo::app
