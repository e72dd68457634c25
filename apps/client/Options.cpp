#include "apps/client/Options.h"

#include "platform/store/StoreUrl.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <pwd.h>
#include <unistd.h>

namespace orvo::app {

namespace {

QString dataHome() {
    const QString set = qEnvironmentVariable("XDG_DATA_HOME");
    // A relative path there is to be ignored.
    return QDir::isAbsolutePath(set) ? set : QDir::homePath() + QStringLiteral("/.local/share");
}

QString systemLogin() {
    const QString user = qEnvironmentVariable("USER");
    if (!user.isEmpty())
        return user;
    const passwd* entry = getpwuid(geteuid());
    return entry ? QString::fromLocal8Bit(entry->pw_name) : QString();
}

QString absolute(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

bool parseOptions(const QStringList& arguments, Options* options, QString* error) {
    QCommandLineParser parser;
    const QCommandLineOption storeOption(QStringLiteral("store"), {}, QStringLiteral("URL"));
    const QCommandLineOption login(QStringLiteral("login"), {}, QStringLiteral("NAME"));
    const QCommandLineOption workDir(QStringLiteral("work-dir"), {}, QStringLiteral("DIR"));
    const QCommandLineOption module(QStringLiteral("module"), {}, QStringLiteral("MODULE"));
    const QCommandLineOption shot(QStringLiteral("screenshot"), {}, QStringLiteral("FILE"));
    const QCommandLineOption inspect(QStringLiteral("inspect"), {}, QStringLiteral("SOCKET"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOptions({storeOption, login, workDir, module, shot, inspect, help, version});
    if (!parser.parse(arguments)) {
        const QStringList unknown = parser.unknownOptionNames();
        *error =
            unknown.isEmpty()
                ? QStringLiteral("У параметра в конце командной строки нет значения, или оно "
                                 "лишнее; см. --help.")
                : QStringLiteral("Неизвестный параметр «%1»; см. --help.").arg(unknown.first());
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        *error = QStringLiteral("Лишний аргумент «%1»; см. --help.")
                     .arg(parser.positionalArguments().first());
        return false;
    }
    options->help = parser.isSet(help);
    options->version = parser.isSet(version);
    for (const QCommandLineOption& option : {storeOption, login, workDir, module, shot, inspect})
        if (parser.isSet(option) && parser.value(option).isEmpty()) {
            *error = QStringLiteral("Пустое значение параметра --%1.").arg(option.names().first());
            return false;
        }

    options->store = parser.isSet(storeOption) ? parser.value(storeOption)
                                               : dataHome() + QStringLiteral("/orvo/orvo.db");
    store::StoreUrl url;
    const store::Status status = url.parse(options->store.toStdString());
    if (!status.ok()) {
        *error = QString::fromStdString(status.text);
        return false;
    }
    if (url.isPath())
        options->store = absolute(QString::fromStdString(url.file()));
    options->login = parser.isSet(login) ? parser.value(login) : systemLogin();
    if (options->login.isEmpty()) {
        *error = QStringLiteral("Имя пользователя неизвестно; задайте --login NAME.");
        return false;
    }
    options->workDir = absolute(parser.isSet(workDir) ? parser.value(workDir)
                                                      : dataHome() + QStringLiteral("/orvo/work"));
    if (!options->workDir.endsWith(QLatin1Char('/')))
        options->workDir += QLatin1Char('/');
    if (parser.isSet(shot))
        options->screenshot = absolute(parser.value(shot));
    options->inspect = parser.value(inspect);

    const QStringList known{QStringLiteral("Menu"), QStringLiteral("Resources")};
    for (const QString& asked : parser.values(module)) {
        QString name;
        for (const QString& candidate : known)
            if (candidate.compare(asked, Qt::CaseInsensitive) == 0)
                name = candidate;
        if (name.isEmpty()) {
            *error = QStringLiteral("Неизвестный модуль «%1»; есть Menu и Resources.").arg(asked);
            return false;
        }
        if (!options->modules.contains(name))
            options->modules << name;
    }
    if (options->modules.isEmpty())
        options->modules = known;
    return true;
}

QString helpText() {
    return QStringLiteral(
        "orvo-client: клиент инженера: редактор меню и редактор ресурсов.\n"
        "\n"
        "orvo-client [--store URL] [--login NAME] [--work-dir DIR]\n"
        "            [--module Menu|Resources]... [--screenshot FILE] [--inspect SOCKET]\n"
        "\n"
        "  --store URL        хранилище: sqlite:///путь/orvo.db, просто путь или postgresql://…\n"
        "                     (иначе $XDG_DATA_HOME/orvo/orvo.db)\n"
        "  --login NAME       пользователь, от имени которого идёт запись (иначе $USER)\n"
        "  --work-dir DIR     рабочий каталог с копией файловой области в files/\n"
        "                     (иначе $XDG_DATA_HOME/orvo/work)\n"
        "  --module MODULE    открыть этот модуль; можно повторять (иначе открываются оба)\n"
        "  --screenshot FILE  открыть модули, записать снимок окна в PNG и завершиться\n"
        "  --inspect SOCKET   отвечать через локальный сокет, что стоит в окнах и таблицах (для\n"
        "                     поддержки и проверок; только чтение, только этому пользователю)\n"
        "  -h, --help         эта справка\n"
        "  -v, --version      версия\n");
}

QString versionText() {
    return QStringLiteral("orvo-client " ORVO_VERSION "\n");
}

QString displayProblem() {
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        if (!qEnvironmentVariableIsEmpty(name))
            return {};
    return QStringLiteral("Нет дисплея: переменные DISPLAY и WAYLAND_DISPLAY пусты; запустите в "
                          "графическом сеансе, через ssh -X или под Xvfb.");
}

} // namespace orvo::app
