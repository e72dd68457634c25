#include "apps/admin/CommandLine.h"

#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/Suggestion.h"
#include "apps/admin/Verb.h"
#include "apps/completion/Completion.h"
#include "apps/language/Language.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QTranslator>

#include <cstring>

namespace orvo::admin {

namespace {

/// The few texts of Qt's parser, so that no translation package has to be installed.
class ParserTexts : public QTranslator {
public:
    using QTranslator::QTranslator;
    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* source, const char* /*disambiguation*/,
                      int /*n*/) const override {
        static const struct {
            const char* english;
            const char* russian;
        } texts[] = {
            {"Unknown option '%1'.", "неизвестный ключ «%1»"},
            {"Unknown options: %1.", "неизвестные ключи: %1"},
            {"Missing value after '%1'.", "после «%1» нет значения"},
            {"Unexpected value after '%1'.", "ключ «%1» не принимает значения"},
            {"Options:", "Ключи:"},
            {"Arguments:", "Аргументы:"},
        };
        if (std::strcmp(context, "QCommandLineParser") == 0)
            for (const auto& text : texts)
                if (std::strcmp(source, text.english) == 0)
                    return QString::fromUtf8(text.russian);
        return {};
    }
};

/// What stands before every verb, and behind it too.
OptionList commonOptions() {
    return {
        {QStringLiteral("store"),
         Text::tr("Хранилище: путь к файлу, sqlite:///путь/orvo.db или postgresql://узел/база."),
         QStringLiteral("URL")},
        {QStringLiteral("lang"), Text::tr("Язык сообщений (иначе - язык системы)."),
         language::codes().join(QLatin1Char('|'))},
        {{QStringLiteral("h"), QStringLiteral("help")}, Text::tr("Показать справку и закончить.")}};
}

OptionList optionsOf(const Verb& verb) {
    OptionList options = commonOptions();
    if (verb.options)
        verb.options(options);
    return options;
}

OptionList generalOptions() {
    return commonOptions() +
           OptionList{{QStringLiteral("version"), Text::tr("Показать версию и закончить.")},
                      {QStringLiteral("completion"),
                       Text::tr("Напечатать дополнение команд для оболочки."),
                       completion::shells().join(QLatin1Char('|'))}};
}

void printCompletion(const QString& shell) {
    completion::Command command{QStringLiteral("orvo-admin"), generalOptions(), {}};
    for (const Verb* verb : verbs())
        command.verbs.append({QString::fromUtf8(verb->name), Text::tr(verb->summary),
                              Text::tr(verb->arguments), optionsOf(*verb)});
    const QString script = completion::script(shell, command);
    if (script.isEmpty())
        throw Failure(StdText::tr("оболочки «") + shell.toStdString() +
                      StdText::tr("» нет среди ") +
                      completion::shells().join(QStringLiteral(", ")).toStdString());
    out(script.chopped(1).toStdString()); // its last line feed is added again
}

/// What the parser has to complain of, with the option that was meant.
std::string complaint(const QCommandLineParser& parser, const OptionList& options) {
    std::vector<std::string> present;
    for (const QCommandLineOption& option : options)
        present.push_back("--" + option.names().last().toStdString());
    const QStringList unknown = parser.unknownOptionNames();
    return parser.errorText().toStdString() +
           (unknown.size() == 1 ? suggestion("--" + unknown[0].toStdString(), present) : "");
}

/// Qt's list of options under our own usage line.
void printHelp(const std::string& usage, const std::string& text, QCommandLineParser& parser) {
    const QString all = parser.helpText();
    const char heading[] = "Options:"; // as the parser calls them, in its own words
    const int options = all.indexOf(QCoreApplication::translate("QCommandLineParser", heading));
    out(StdText::tr("Вызов: orvo-admin ") + usage + "\n\n" + text + "\n\n" +
        (options < 0 ? QString() : all.mid(options)).toStdString());
}

void printGeneralHelp(QCommandLineParser& parser) {
    std::string text = StdText::tr("Ведение хранилища Orvo.\n\nДействия:\n");
    for (const Verb* verb : verbs()) {
        std::string line = std::string("  ") + verb->name;
        line.resize(std::max<size_t>(line.size() + 2, 16), ' ');
        text += line + StdText::tr(verb->summary) + "\n";
    }
    text += StdText::tr(
        "\nСправка о действии: orvo-admin ДЕЙСТВИЕ --help\n"
        "Коды завершения: 0 сделано, 1 проверка нашла ошибки, 2 сбой или неверный вызов,\n"
        "130 прервано.");
    printHelp(StdText::tr("[--store URL] ДЕЙСТВИЕ ..."), text, parser);
}

/// The verb that the words begin with, and how many of them are its name; null if none.
const Verb* findVerb(const QStringList& words, int* used) {
    for (const int count : {2, 1}) {
        if (words.size() < count)
            continue;
        const QString name = words.mid(0, count).join(QLatin1Char(' '));
        for (const Verb* verb : verbs())
            if (name == QLatin1String(verb->name)) {
                *used = count;
                return verb;
            }
    }
    return nullptr;
}

/// Second words of the verbs that begin with this one.
std::string secondWords(const QString& first) {
    std::string found;
    for (const Verb* verb : verbs()) {
        const QStringList words = QString::fromUtf8(verb->name).split(QLatin1Char(' '));
        if (words.size() == 2 && words[0] == first)
            found += (found.empty() ? "" : ", ") + words[1].toStdString();
    }
    return found;
}

[[noreturn]] void refuseVerb(const QStringList& words) {
    const std::string first = words[0].toStdString();
    const std::string second = secondWords(words[0]);
    if (second.empty()) {
        std::vector<std::string> present;
        for (const Verb* verb : verbs())
            present.push_back(
                QString::fromUtf8(verb->name).section(QLatin1Char(' '), 0, 0).toStdString());
        throw Failure(StdText::tr("неизвестное действие «") + first + StdText::tr("»") +
                      suggestion(first, present) + StdText::tr("; список: orvo-admin --help"));
    }
    if (words.size() > 1 && !words[1].startsWith(QLatin1Char('-')))
        throw Failure(StdText::tr("неизвестное действие «") + first + " " + words[1].toStdString() +
                      StdText::tr("»; после «") + first + StdText::tr("» бывает: ") + second);
    throw Failure(StdText::tr("действие «") + first +
                  StdText::tr("» не закончено; дальше бывает: ") + second);
}

std::string defaultStore() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return (folder + QStringLiteral("/orvo/orvo.db")).toStdString();
}

/// Whether a store is named, and its address.
bool namedStore(const QCommandLineParser& general, const QCommandLineParser& own,
                store::StoreUrl* url) {
    const QString option = QStringLiteral("store");
    for (const QCommandLineParser* parser : {&own, &general})
        if (parser->isSet(option)) {
            if (parser->value(option).isEmpty())
                throw Failure(StdText::tr("адрес хранилища после --store пуст"));
            const store::Status status = url->parse(parser->value(option).toStdString());
            if (!status.ok())
                throw Failure(status.text);
            return true;
        }
    const store::Status status = url->parse(defaultStore());
    if (!status.ok())
        throw Failure(status.text);
    return false;
}

int runVerb(const Verb& verb, const QStringList& words, const QCommandLineParser& general) {
    QCommandLineParser parser;
    const OptionList options = optionsOf(verb);
    parser.addOptions(options);
    const std::string usage =
        std::string(verb.name) + (*verb.arguments ? " " + StdText::tr(verb.arguments) : "");
    const bool good = parser.parse(words);
    if (parser.isSet(QStringLiteral("help"))) {
        printHelp("[--store URL] " + usage,
                  StdText::tr(verb.summary) + "." +
                      (*verb.help ? "\n" + StdText::tr(verb.help) : ""),
                  parser);
        return Done;
    }
    if (!good)
        throw Failure(std::string(verb.name) + ": " + complaint(parser, options));
    const int count = parser.positionalArguments().size();
    if (count < verb.least)
        throw Failure(std::string(verb.name) +
                      StdText::tr(": не хватает аргументов; вызов: orvo-admin ") + usage);
    if (verb.most >= 0 && count > verb.most)
        throw Failure(std::string(verb.name) + StdText::tr(": лишний аргумент «") +
                      parser.positionalArguments().at(verb.most).toStdString() +
                      StdText::tr("»; вызов: orvo-admin ") + usage);
    store::StoreUrl url;
    const bool isNamed = namedStore(general, parser, &url);
    return verb.run(Invocation(std::move(url), !isNamed, parser));
}

} // namespace

int runCommandLine(const QStringList& arguments) {
    ParserTexts texts;
    if (textLocale().language() == QLocale::Russian)
        QCoreApplication::installTranslator(&texts);
    const QString language = language::given(arguments);
    if (!language.isEmpty() && !language::codes().contains(language))
        throw Failure(StdText::tr("языка «") + language.toStdString() +
                      StdText::tr("» нет среди ") +
                      language::codes().join(QStringLiteral(", ")).toStdString());

    QCommandLineParser general;
    general.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const OptionList options = generalOptions();
    general.addOptions(options);
    const bool good = general.parse(arguments);
    if (general.isSet(QStringLiteral("help"))) {
        printGeneralHelp(general);
        return Done;
    }
    if (general.isSet(QStringLiteral("version"))) {
        out("orvo-admin " + QCoreApplication::applicationVersion().toStdString());
        return Done;
    }
    if (!good)
        throw Failure(complaint(general, options));
    if (general.isSet(QStringLiteral("completion"))) {
        printCompletion(general.value(QStringLiteral("completion")));
        return Done;
    }
    const QStringList words = general.positionalArguments();
    if (words.isEmpty())
        throw Failure(StdText::tr("не сказано, что делать; список действий: orvo-admin --help"));
    int used = 0;
    const Verb* verb = findVerb(words, &used);
    if (!verb)
        refuseVerb(words);
    // The parser takes the first word for the program's name.
    return runVerb(*verb, QStringList(QStringLiteral("orvo-admin")) + words.mid(used), general);
}

} // namespace orvo::admin
