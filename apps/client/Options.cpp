#include "apps/client/Options.h"

#include "apps/client/KnownModules.h"
#include "apps/completion/Completion.h"
#include "apps/language/Language.h"
#include "frame/Text.h"
#include "platform/store/StoreUrl.h"

#include <QCommandLineParser>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

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

struct OptionText {
    const char* name;
    const char* shortName; ///< or null
    const char* value;     ///< the word for it; null: takes none, or one of the choices
    const char* text;
    QStringList (*choices)() = nullptr;
};

QStringList languageWords() {
    return language::codes();
}

QStringList moduleWords() {
    return moduleNames();
}

/// Everything that the command line may hold: the parser, --help and the shells' completion are
/// made of it.
constexpr OptionText optionTexts[] = {
    {"store", nullptr, "URL",
     QT_TRANSLATE_NOOP("orvo",
                       "хранилище: sqlite:///путь/orvo.db, просто путь или postgresql://… (иначе "
                       "$XDG_DATA_HOME/orvo/orvo.db)")},
    {"login", nullptr, "NAME",
     QT_TRANSLATE_NOOP("orvo", "пользователь, от имени которого идёт запись (иначе $USER)")},
    {"work-dir", nullptr, "DIR",
     QT_TRANSLATE_NOOP(
         "orvo",
         "рабочий каталог с копией файловой области в files/ (иначе $XDG_DATA_HOME/orvo/work)")},
    {"lang", nullptr, nullptr,
     QT_TRANSLATE_NOOP("orvo", "язык окон и сообщений (иначе - язык рабочего стола)"),
     languageWords},
    {"module", nullptr, nullptr,
     QT_TRANSLATE_NOOP("orvo", "открыть этот модуль; можно повторять (иначе открываются все)"),
     moduleWords},
    {"modules", nullptr, "DIR",
     QT_TRANSLATE_NOOP(
         "orvo",
         "каталог с библиотеками модулей, кроме собственного; можно повторять (писать в него и в "
         "каталоги над ним может только хозяин)")},
    {"desktop", nullptr, "NAME",
     QT_TRANSLATE_NOOP("orvo", "открыть только этот рабочий стол, как его видит оператор: "
                               "название, путь «папка/стол» или "
                               "ключ")},
    {"kiosk", nullptr, nullptr,
     QT_TRANSLATE_NOOP(
         "orvo",
         "рабочий стол на весь экран, без рамки; закрывается по Ctrl+Alt+Q, после вопроса об имени "
         "пользователя")},
    {"separate", nullptr, nullptr,
     QT_TRANSLATE_NOOP(
         "orvo",
         "открыть ещё одно окно, даже если клиент с тем же хранилищем, пользователем и рабочим "
         "каталогом уже работает (иначе модуль откроет он)")},
    {"screenshot", nullptr, "FILE",
     QT_TRANSLATE_NOOP("orvo", "открыть модули, записать снимок окна в PNG и завершиться")},
    {"inspect", nullptr, "SOCKET",
     QT_TRANSLATE_NOOP(
         "orvo",
         "отвечать через локальный сокет, что стоит в окнах и таблицах (для поддержки и проверок; "
         "только чтение, только этому пользователю)")},
    {"completion", nullptr, nullptr,
     QT_TRANSLATE_NOOP("orvo", "напечатать дополнение команд для оболочки"), completion::shells},
    {"help", "h", nullptr, QT_TRANSLATE_NOOP("orvo", "эта справка")},
    {"version", "v", nullptr, QT_TRANSLATE_NOOP("orvo", "версия")},
};

/// What is to stand behind it, as the help shows that; empty if nothing is.
QString valueOf(const OptionText& option) {
    return option.choices ? option.choices().join(QLatin1Char('|'))
                          : QString::fromUtf8(option.value);
}

QList<QCommandLineOption> allOptions() {
    QList<QCommandLineOption> options;
    for (const OptionText& one : optionTexts) {
        QStringList names{QString::fromUtf8(one.name)};
        if (one.shortName)
            names.prepend(QString::fromUtf8(one.shortName));
        options.append({names, Text::tr(one.text), valueOf(one)});
    }
    return options;
}

} // namespace

QString ownStore() {
    return dataHome() + QStringLiteral("/orvo/orvo.db");
}

QString usualWorkDir(const QString& store) {
    const QString beginning = dataHome() + QStringLiteral("/orvo/work");
    store::StoreUrl url;
    if (!url.parse(store.toStdString()).ok() || QString::fromStdString(url.file()) == ownStore())
        return beginning + QLatin1Char('/');
    // The name is for people, the digest for stores of one name.
    const QByteArray address = QByteArray::fromStdString(url.displayName());
    const QString name =
        QString::fromUtf8(address).section(QLatin1Char('/'), -1).section(QLatin1Char('?'), 0, 0);
    const QByteArray digest = QCryptographicHash::hash(address, QCryptographicHash::Sha256).toHex();
    return QStringLiteral("%1-%2-%3/").arg(beginning, name, QString::fromLatin1(digest.left(8)));
}

bool parseOptions(const QStringList& arguments, Options* options, QString* error) {
    QCommandLineParser parser;
    parser.addOptions(allOptions());
    const auto isSet = [&](const char* name) { return parser.isSet(QLatin1String(name)); };
    const auto value = [&](const char* name) { return parser.value(QLatin1String(name)); };
    const bool isUnderstood = parser.parse(arguments);
    // Whoever wants these reads standard error himself, also for what is wrong below.
    if (isSet("screenshot"))
        options->screenshot = absolute(value("screenshot"));
    options->inspect = value("inspect");
    if (!isUnderstood) {
        const QStringList unknown = parser.unknownOptionNames();
        *error = unknown.isEmpty()
                     ? Text::tr("У параметра в конце командной строки нет значения, или оно "
                                "лишнее; см. --help.")
                     : Text::tr("Неизвестный параметр «%1»; см. --help.").arg(unknown.first());
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        *error =
            Text::tr("Лишний аргумент «%1»; см. --help.").arg(parser.positionalArguments().first());
        return false;
    }
    options->help = isSet("help");
    options->version = isSet("version");
    options->isSeparate = isSet("separate");
    for (const OptionText& option : optionTexts)
        if (isSet(option.name) && !valueOf(option).isEmpty() && value(option.name).isEmpty()) {
            *error = Text::tr("Пустое значение параметра --%1.").arg(QLatin1String(option.name));
            return false;
        }
    if (isSet("lang") && !language::codes().contains(value("lang"))) {
        *error = Text::tr("Языка «%1» нет среди %2.")
                     .arg(value("lang"), language::codes().join(QLatin1String(", ")));
        return false;
    }
    options->completion = value("completion");
    if (isSet("completion") && !completion::shells().contains(options->completion)) {
        *error = Text::tr("Оболочки «%1» нет среди %2.")
                     .arg(options->completion, completion::shells().join(QLatin1String(", ")));
        return false;
    }

    options->store = isSet("store") ? value("store") : ownStore();
    options->isDefaultStore = !isSet("store");
    store::StoreUrl url;
    const store::Status status = url.parse(options->store.toStdString());
    if (!status.ok()) {
        *error = QString::fromStdString(status.text);
        return false;
    }
    if (url.isPath())
        options->store = absolute(QString::fromStdString(url.file()));
    options->login = isSet("login") ? value("login") : systemLogin();
    if (options->login.isEmpty()) {
        *error = Text::tr("Имя пользователя неизвестно; задайте --login NAME.");
        return false;
    }
    options->isWorkDirGiven = isSet("work-dir");
    options->workDir =
        isSet("work-dir") ? absolute(value("work-dir")) : usualWorkDir(options->store);
    if (!options->workDir.endsWith(QLatin1Char('/')))
        options->workDir += QLatin1Char('/');
    for (const QString& directory : parser.values(QStringLiteral("modules")))
        options->moduleDirs << absolute(directory);
    options->desktop = value("desktop");
    options->isKiosk = isSet("kiosk");
    if (options->isKiosk && options->desktop.isEmpty()) {
        *error = Text::tr("Параметр --kiosk требует --desktop.");
        return false;
    }
    if (!options->desktop.isEmpty() && isSet("module")) {
        *error = Text::tr("Рабочий стол открывается без редакторов: --desktop и --module "
                          "вместе не даются.");
        return false;
    }

    for (const QString& asked : parser.values(QStringLiteral("module"))) {
        QString name = moduleNamed(asked);
        if (name.isEmpty() && isSet("modules"))
            name = asked; // of a library that is not loaded yet
        if (name.isEmpty()) {
            *error = Text::tr("Модуля «%1» нет среди %2.")
                         .arg(asked, moduleNames().join(QLatin1String(", ")));
            return false;
        }
        if (!options->modules.contains(name))
            options->modules << name;
    }
    options->askedModules = options->modules;
    if (options->modules.isEmpty() && options->desktop.isEmpty())
        options->modules = moduleNames();
    return true;
}

QString helpText() {
    constexpr int column = 21, width = 96;
    const QLatin1Char blank(' ');
    QString usage = QStringLiteral("orvo-client"), table;
    int filled = usage.size();
    for (const OptionText& option : optionTexts) {
        const QString name = QLatin1String("--") + QLatin1String(option.name);
        const QString value = valueOf(option);
        const QString inUsage =
            QLatin1String(" [") + (value.isEmpty() ? name : name + blank + value) +
            QLatin1String(qstrncmp(option.name, "module", 6) == 0 ? "]..." : "]");
        if (filled + inUsage.size() > width) {
            usage += QStringLiteral("\n           ");
            filled = 11;
        }
        usage += inUsage;
        filled += inUsage.size();

        QString line = QLatin1String("  ") + name;
        if (option.shortName)
            line.insert(2,
                        QLatin1Char('-') + QLatin1String(option.shortName) + QLatin1String(", "));
        if (option.value)
            line += blank + value;
        line = line.leftJustified(column - 1);
        const QString text =
            (option.choices ? value + QLatin1String(": ") : QString()) + Text::tr(option.text);
        for (const QString& word : text.split(blank)) {
            if (line.size() + word.size() > width) {
                table += line + QLatin1Char('\n');
                line = QString(column - 1, blank);
            }
            line += blank + word;
        }
        table += line + QLatin1Char('\n');
    }
    return Text::tr("orvo-client: редактор меню, редактор ресурсов и рабочий стол оператора.\n\n") +
           usage + QStringLiteral("\n\n") + table;
}

QString completionText(const QString& shell) {
    return completion::script(shell, {QStringLiteral("orvo-client"), allOptions(), {}});
}

QString versionText() {
    return QStringLiteral("orvo-client " ORVO_VERSION "\n");
}

QString displayProblem() {
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
        if (!qEnvironmentVariableIsEmpty(name))
            return {};
    return Text::tr("Нет дисплея: переменные DISPLAY и WAYLAND_DISPLAY пусты; запустите в "
                    "графическом сеансе, через ssh -X или под Xvfb.");
}

QString adviceOnMissingStore(const Options& options) {
    store::StoreUrl url;
    if (!url.parse(options.store.toStdString()).ok() || url.file().empty())
        return {};
    const QFileInfo file(QString::fromStdString(url.file()));
    if (file.exists())
        return {};
    if (options.isDefaultStore)
        return Text::tr("; новое хранилище делает orvo-admin init");
    if (!file.dir().exists())
        return Text::tr("; каталога %1 нет").arg(file.path());
    QString place = QString::fromStdString(url.isPath() ? url.file() : url.displayName());
    if (place.contains(QRegularExpression(QStringLiteral("[^\\w./:@%+=-]"))))
        place = QLatin1Char('\'') + place.replace(QLatin1Char('\''), QLatin1String("'\\''")) +
                QLatin1Char('\'');
    return Text::tr("; новое хранилище делает orvo-admin --store %1 init").arg(place);
}

} // namespace orvo::app
