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
#include "apps/client/start/SecretService.h"
#include "apps/client/start/ServerPassword.h"
#include "apps/client/start/StorePage.h"
#include "apps/language/Language.h"

#include "frame/QtCompat.h"
#include "frame/Text.h"
#include "platform/store/StoreUrl.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QMessageBox>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <unistd.h>

namespace {

/// Whatever word of the command line the message repeats may be an address in a wrong place.
QString withoutPasswords(const QString& text) {
    return QString::fromStdString(orvo::store::withoutCredentials(text.simplified().toStdString()));
}

int refuse(int code, const QString& text) {
    std::fprintf(stderr, "orvo-client: %s\n", withoutPasswords(text).toUtf8().constData());
    return code;
}

QString noWindows; ///< in the user's language, which cannot be asked while the QApplication is made
QString wrongCommandLine; ///< what is wrong with it, in words that were said already; else empty

/// While the QApplication is made, Qt gives up by aborting and explains itself over many lines.
/// The user gets one line and an exit code instead.
void onStartMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtFatalMsg)
        return;
    if (!wrongCommandLine.isEmpty())
        std::_Exit(2);
    refuse(1, noWindows.arg(qEnvironmentVariable("DISPLAY"), text));
    std::_Exit(1);
}

/// That of the desktop's theme, so that window and menu entry look alike; else our own.
QIcon applicationIcon() {
    QIcon own;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        own.addFile(QStringLiteral(":/orvo/app/%1").arg(size));
    return QIcon::fromTheme(QLatin1String(orvo::app::applicationId), own);
}

/// Whether somebody sees a window: nobody does on a platform without one, and whoever wants a
/// picture or answers through a socket is another program.
bool isSeen(const orvo::app::Options& options) {
    const QString platform = QGuiApplication::platformName();
    return options.screenshot.isEmpty() && options.inspect.isEmpty() &&
           platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

/// `failed`: the store that did not open for that reason, or empty. False if the user wants none.
/// `typed`: the password that was typed for the store of the options.
bool chooseStore(orvo::app::Options* options, QString* typed, const QString& reason,
                 const QString& failed) {
    const QString ownFile = orvo::app::ownStore();
    orvo::app::ChosenStore chosen;
    if (!orvo::app::askForStore(ownFile, options->login, reason, failed, &chosen))
        return false;
    options->store = chosen.address;
    options->isDefaultStore = chosen.address == ownFile;
    if (!options->isWorkDirGiven)
        options->workDir = orvo::app::usualWorkDir(chosen.address);
    // A store that is tried again keeps the password it had.
    if (chosen.address != failed || !chosen.password.isEmpty())
        *typed = chosen.password;
    return true;
}

/// Opens the store of the options and runs until the window closes. Null if it does not open, with
/// the reason.
std::optional<int> runOn(const orvo::app::Options& options, orvo::app::SchemeKeeper& scheme,
                         QString* reason) {
    orvo::app::Instance instance(options);
    // An operator's desktop is a window of its own beside an engineer's client.
    const bool isSeparate = options.isSeparate || !options.desktop.isEmpty();
    if (options.screenshot.isEmpty() && !isSeparate &&
        instance.take(options.inspect.isEmpty()) == orvo::app::Instance::Role::Further)
        return 0;
    orvo::app::Client client(options);
    QObject::connect(&instance, &orvo::app::Instance::requested, &client,
                     &orvo::app::Client::openFurther);
    if (!client.open(reason))
        return std::nullopt;
    if (options.screenshot.isEmpty() && options.inspect.isEmpty())
        orvo::app::rememberStore(options.store);
    client.show();
    scheme.addMenu(client.window()->viewMenu());
    if (!options.screenshot.isEmpty())
        client.takeScreenshot();
    return QApplication::exec();
}

/// Who has no store yet, or one that does not open, is asked which; an operator, whether to try
/// again.
int runClient(orvo::app::Options options, orvo::app::SchemeKeeper& scheme) {
    QString typed;
    const bool mayAsk = isSeen(options), isOperator = !options.desktop.isEmpty();
    if (mayAsk && !isOperator && options.isDefaultStore &&
        !QFileInfo::exists(orvo::app::ownStore()) &&
        !chooseStore(&options, &typed,
                     orvo::Text::tr("Хранилища на этой машине ещё нет. С чего начать?"), {}))
        return 0;
    while (true) {
        QString reason;
        orvo::app::offerPassword(typed.isEmpty() && !orvo::app::hasOwnPassword()
                                     ? orvo::app::secrets::passwordOf(options.store)
                                     : typed);
        if (const std::optional<int> code = runOn(options, scheme, &reason))
            return *code;
        const int code = refuse(1, reason);
        reason = withoutPasswords(reason);
        if (!mayAsk || !(isOperator ? orvo::app::askToRetryDesktop(reason)
                                    : chooseStore(&options, &typed, reason, options.store)))
            return code;
    }
}

/// Whether nobody reads standard error, as of a program that the desktop has started from an icon.
bool isStartedByDesktop() {
    return isatty(STDERR_FILENO) == 0 && orvo::app::displayProblem().isEmpty();
}

/// What is wrong with the command line, in a window.
int showWrongCommandLine(const orvo::app::Options& options) {
    if (isSeen(options)) {
        QMessageBox box(QMessageBox::Critical, orvo::Text::tr("Клиент не запущен"),
                        withoutPasswords(wrongCommandLine));
        box.setTextFormat(Qt::PlainText);
        box.addButton(orvo::Text::tr("Закрыть"), QMessageBox::RejectRole);
        box.exec();
    }
    return 2;
}

/// What is said and done before there is an application of windows: help, a wrong command line, a
/// display that is missing. No value: the program goes on, to a window that says what is wrong with
/// the command line if nobody reads standard error.
std::optional<int> beforeWindows(const QStringList& arguments, bool isOfOurs,
                                 orvo::app::Options* options) {
    QString error;
    if (!isOfOurs && !orvo::app::parseOptions(arguments, options, &error)) {
        refuse(2, error);
        if (!isStartedByDesktop())
            return 2;
        wrongCommandLine = error;
        return {};
    }
    if (options->help || options->version || !options->completion.isEmpty()) {
        const QString text = options->help      ? orvo::app::helpText()
                             : options->version ? orvo::app::versionText()
                                                : orvo::app::completionText(options->completion);
        return std::fputs(text.toUtf8().constData(), stdout) < 0 ? 1 : 0;
    }
    error = orvo::app::displayProblem();
    if (!error.isEmpty())
        return refuse(1, error);
    noWindows = orvo::Text::tr("Окна показать нельзя (дисплей «%1»): %2");
    return {};
}

} // namespace

int main(int argc, char* argv[]) {
    orvo::app::keepOwnPassword();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    const QString language = orvo::language::choose(orvo::language::given(arguments));
    const bool pane = orvo::app::isWaitPane(argc, argv);
    const bool function = orvo::app::isFunctionHost(argc, argv);
    // We read the command line; Qt is to see the program's name alone.
    int qtArgc = 1;
    char* qtArgv[] = {argv[0], nullptr};
    orvo::app::Options options;
    {
        const QCoreApplication early(qtArgc, qtArgv);
        const orvo::language::Speaker speaker(language);
        if (const auto code = beforeWindows(arguments, pane || function, &options))
            return *code;
    }

    orvo::qt::followScreenScale();
    const QtMessageHandler usual = qInstallMessageHandler(onStartMessage);
    QApplication application(qtArgc, qtArgv);
    qInstallMessageHandler(usual);
    // One name for the window's class, the desktop entry, the icon and the metadata.
    QCoreApplication::setApplicationName(QLatin1String(orvo::app::applicationId));
    QGuiApplication::setDesktopFileName(QLatin1String(orvo::app::applicationId));
    QApplication::setWindowIcon(applicationIcon());
    orvo::app::SchemeKeeper scheme;
    const orvo::language::Speaker speaker(language);
    if (!wrongCommandLine.isEmpty())
        return showWrongCommandLine(options);
    orvo::app::FocusMark::follow();
    orvo::app::LatinKeys::install();
    if (pane)
        return orvo::app::runWaitPane(arguments);
    if (function)
        return orvo::app::runFunctionHost();

    return runClient(options, scheme);
}
