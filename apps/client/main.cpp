// orvo-client: the engineer's client and the operator's desktop. Exit codes: 0 done, 1 could not
// work, 2 wrong command line.
#include "apps/client/Client.h"
#include "apps/client/FocusMark.h"
#include "apps/client/FunctionHost.h"
#include "apps/client/Instance.h"
#include "apps/client/LatinKeys.h"
#include "apps/client/Look.h"
#include "apps/client/MainWindow.h"
#include "apps/client/Options.h"
#include "apps/client/Scheme.h"
#include "apps/client/WaitPane.h"
#include "apps/client/start/RecentStores.h"
#include "apps/client/start/ServerPassword.h"
#include "apps/client/start/StorePage.h"

#include "platform/store/StoreUrl.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>

#include <cstdio>
#include <cstdlib>

namespace {

int refuse(int code, const QString& text) {
    // Whatever word of the command line the message repeats may be an address in a wrong place.
    const std::string line = orvo::store::withoutCredentials(text.simplified().toStdString());
    std::fprintf(stderr, "orvo-client: %s\n", line.c_str());
    return code;
}

/// While the QApplication is made, Qt gives up by aborting and explains itself over many lines.
/// The user gets one line and an exit code instead.
void onStartMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtFatalMsg)
        return;
    refuse(1, QStringLiteral("Окна показать нельзя (дисплей «%1»): %2")
                  .arg(qEnvironmentVariable("DISPLAY"), text));
    std::_Exit(1);
}

/// That of the desktop's theme, so that window and menu entry look alike; else our own.
QIcon applicationIcon() {
    QIcon own;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        own.addFile(QStringLiteral(":/orvo/app/%1").arg(size));
    return QIcon::fromTheme(QLatin1String(orvo::app::applicationId), own);
}

/// False if the user wants no store.
bool chooseStore(orvo::app::Options* options, const QString& reason) {
    const QString ownFile = orvo::app::ownStore();
    orvo::app::ChosenStore chosen;
    if (!orvo::app::askForStore(ownFile, options->login, reason, &chosen))
        return false;
    options->store = chosen.address;
    options->isDefaultStore = chosen.address == ownFile;
    if (!options->isWorkDirGiven)
        options->workDir = orvo::app::usualWorkDir(chosen.address);
    orvo::app::offerPassword(chosen.password);
    return true;
}

/// Opens the store of the options and runs until the window closes. Whoever names no store and has
/// none, or one that does not open, is asked which.
int runClient(orvo::app::Options options, orvo::app::SchemeKeeper& scheme) {
    const bool mayAsk = options.isDefaultStore && options.screenshot.isEmpty() &&
                        options.inspect.isEmpty() && options.desktop.isEmpty();
    bool isAsked = mayAsk && !QFileInfo::exists(orvo::app::ownStore());
    QString reason;
    if (isAsked)
        reason = QStringLiteral("Хранилища на этой машине ещё нет. С чего начать?");
    while (true) {
        if (isAsked && !chooseStore(&options, reason))
            return 0;
        orvo::app::Instance instance(options);
        // An operator's desktop is a window of its own beside an engineer's client.
        const bool isSeparate = options.isSeparate || !options.desktop.isEmpty();
        if (options.screenshot.isEmpty() && !isSeparate &&
            instance.take(options.inspect.isEmpty()) == orvo::app::Instance::Role::Further)
            return 0;
        orvo::app::Client client(options);
        QObject::connect(&instance, &orvo::app::Instance::requested, &client,
                         &orvo::app::Client::openFurther);
        if (client.open(&reason)) {
            if (options.screenshot.isEmpty() && options.inspect.isEmpty())
                orvo::app::rememberStore(options.store);
            client.show();
            scheme.addMenu(client.window()->viewMenu());
            if (!options.screenshot.isEmpty())
                client.takeScreenshot();
            return QApplication::exec();
        }
        if (!mayAsk)
            return refuse(1, reason);
        isAsked = true;
    }
}

} // namespace

int main(int argc, char* argv[]) {
    orvo::app::keepOwnPassword();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    orvo::app::Options options;
    QString error;
    const bool pane = orvo::app::isWaitPane(argc, argv);
    const bool function = orvo::app::isFunctionHost(argc, argv);
    if (!pane && !function && !orvo::app::parseOptions(arguments, &options, &error))
        return refuse(2, error);
    if (options.help || options.version || !options.completion.isEmpty()) {
        const QString text = options.help      ? orvo::app::helpText()
                             : options.version ? orvo::app::versionText()
                                               : orvo::app::completionText(options.completion);
        return std::fputs(text.toUtf8().constData(), stdout) < 0 ? 1 : 0;
    }
    error = orvo::app::displayProblem();
    if (!error.isEmpty())
        return refuse(1, error);

    // The command line is read; Qt is to see the program's name alone.
    int qtArgc = 1;
    char* qtArgv[] = {argv[0], nullptr};
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QtMessageHandler usual = qInstallMessageHandler(onStartMessage);
    QApplication application(qtArgc, qtArgv);
    qInstallMessageHandler(usual);
    // One name for the window's class, the desktop entry, the icon and the metadata.
    QCoreApplication::setApplicationName(QLatin1String(orvo::app::applicationId));
    QGuiApplication::setDesktopFileName(QLatin1String(orvo::app::applicationId));
    QApplication::setWindowIcon(applicationIcon());
    orvo::app::SchemeKeeper scheme;
    orvo::app::speakRussian();
    orvo::app::FocusMark::follow();
    orvo::app::LatinKeys::install();
    if (pane)
        return orvo::app::runWaitPane(arguments);
    if (function)
        return orvo::app::runFunctionHost();

    return runClient(options, scheme);
}
