#include "apps/completion/Completion.h"

#include <QRegularExpression>

#include <functional>
#include <map>

namespace orvo::completion {

namespace {

enum class Kind { Nothing, Files, Directories, Words };

Kind kindOf(const QString& word) {
    for (const char* files : {"ФАЙЛ", "FILE", "URL"})
        if (word.contains(QString::fromUtf8(files)))
            return Kind::Files;
    for (const char* directories : {"КАТАЛОГ", "DIR"})
        if (word.contains(QString::fromUtf8(directories)))
            return Kind::Directories;
    return word.contains(QLatin1Char('|')) ? Kind::Words : Kind::Nothing;
}

/// What the positional arguments of a usage line are.
Kind kindOfArguments(const Verb& verb) {
    QString words = verb.arguments;
    words.remove(QRegularExpression(QStringLiteral("\\[[^\\]]*\\]|--\\S+ \\S+")));
    const Kind kind = kindOf(words);
    return kind == Kind::Words ? Kind::Nothing : kind;
}

QString quoted(QString text) {
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("'\\''")) +
           QLatin1Char('\'');
}

QString flag(const QString& name) {
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

QStringList flags(const QList<QCommandLineOption>& options) {
    QStringList all;
    for (const QCommandLineOption& option : options)
        for (const QString& name : option.names())
            all << flag(name);
    return all;
}

QString functionName(const Command& command) {
    return QLatin1Char('_') + QString(command.program).replace(QLatin1Char('-'), QLatin1Char('_'));
}

/// A group of options that mean the same to a completion, in the pattern of a shell's "case".
using Patterns = std::map<QString, QStringList>; // by what follows

/// Every option with a value, of the command and its verbs: their patterns by the word for it.
Patterns valueOptions(const Command& command) {
    Patterns patterns;
    const auto add = [&](const QList<QCommandLineOption>& options) {
        for (const QCommandLineOption& option : options)
            for (const QString& name : option.names())
                if (!option.valueName().isEmpty() &&
                    !patterns[option.valueName()].contains(flag(name)))
                    patterns[option.valueName()] << flag(name);
    };
    add(command.options);
    for (const Verb& verb : command.verbs)
        add(verb.options);
    return patterns;
}

QString allValueFlags(const Command& command) {
    QStringList all;
    for (const auto& [word, names] : valueOptions(command))
        all += names;
    return all.join(QLatin1Char('|'));
}

struct Next {
    QString word, summary;
};

/// The words that may follow these: first words of verbs behind nothing, second ones behind a
/// first.
QList<Next> nextWords(const Command& command, const QString& behind) {
    QList<Next> next;
    QStringList seen;
    for (const Verb& verb : command.verbs) {
        const QString first = verb.name.section(QLatin1Char(' '), 0, 0);
        const QString second = verb.name.section(QLatin1Char(' '), 1);
        if (!behind.isEmpty() && (first != behind || second.isEmpty()))
            continue;
        const QString word = behind.isEmpty() ? first : second;
        if (seen.contains(word))
            continue;
        seen << word;
        QStringList more;
        for (const Verb& other : command.verbs)
            if (behind.isEmpty() && other.name.startsWith(first + QLatin1Char(' ')))
                more << other.name.section(QLatin1Char(' '), 1);
        next << Next{word, more.isEmpty() ? verb.summary : more.join(QStringLiteral(", "))};
    }
    return next;
}

QStringList firstOfTwo(const Command& command) {
    QStringList all;
    for (const Verb& verb : command.verbs)
        if (const QString first = verb.name.section(QLatin1Char(' '), 0, 0);
            first != verb.name && !all.contains(first))
            all << first;
    return all;
}

// The shells -------------------------------------------------------------------------------------

/// What bash and zsh have in common: the verb found among the words, then a "case" over it. `begin`
/// opens the function, `value` completes the value of an option, `branch` fills one branch.
struct Dialect {
    QString begin, previous, end;
    std::function<QString(Kind kind, const QString& word)> value;
    std::function<QString(const QList<QCommandLineOption>& options, const QList<Next>& next,
                          Kind arguments)>
        branch;
};

QString inDialect(const Command& command, const Dialect& dialect) {
    QString text = dialect.begin;
    text += QStringLiteral("  case %1 in\n").arg(dialect.previous);
    for (const auto& [word, names] : valueOptions(command))
        text += QStringLiteral("    %1) %2return ;;\n")
                    .arg(names.join(QLatin1Char('|')), dialect.value(kindOf(word), word));
    text += QStringLiteral("  esac\n  case $verb in\n");
    if (!command.verbs.isEmpty()) {
        text += QStringLiteral("    '')\n") +
                dialect.branch(command.options, nextWords(command, {}), Kind::Nothing);
        for (const Verb& verb : command.verbs)
            text += QStringLiteral("    %1|%1' '*)\n").arg(quoted(verb.name)) +
                    dialect.branch(verb.options, {}, kindOfArguments(verb));
        for (const QString& first : firstOfTwo(command))
            text += QStringLiteral("    %1)\n").arg(quoted(first)) +
                    dialect.branch({}, nextWords(command, first), Kind::Nothing);
    } else {
        text += QStringLiteral("    *)\n") + dialect.branch(command.options, {}, Kind::Nothing);
    }
    return text + QStringLiteral("  esac\n") + dialect.end;
}

QString bash(const Command& command) {
    const auto compgen = [](const QString& how) {
        return QStringLiteral("mapfile -t COMPREPLY < <(compgen %1 -- \"$cur\")").arg(how);
    };
    const auto paths = [&](Kind kind) {
        return QStringLiteral("compopt -o filenames; ") +
               compgen(kind == Kind::Files ? QStringLiteral("-f") : QStringLiteral("-d"));
    };
    Dialect dialect;
    dialect.begin = QStringLiteral("# bash completion of %1, made of the table behind its --help.\n"
                                   "%2() {\n"
                                   "  local cur=${COMP_WORDS[COMP_CWORD]} verb='' i\n"
                                   "  COMPREPLY=()\n"
                                   "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
                                   "    case ${COMP_WORDS[i]} in\n"
                                   "      %3) i=$((i + 1)) ;;\n"
                                   "      -*) ;;\n"
                                   "      *) verb+=\"${verb:+ }${COMP_WORDS[i]}\" ;;\n"
                                   "    esac\n"
                                   "  done\n")
                        .arg(command.program, functionName(command), allValueFlags(command));
    dialect.previous = QStringLiteral("${COMP_WORDS[COMP_CWORD-1]}");
    dialect.value = [=](Kind kind, const QString& word) {
        switch (kind) {
        case Kind::Nothing:
            return QString();
        case Kind::Words:
            return compgen(QStringLiteral("-W ") + quoted(QString(word).replace('|', ' '))) +
                   QStringLiteral("; ");
        default:
            return paths(kind) + QStringLiteral("; ");
        }
    };
    dialect.branch = [=](const QList<QCommandLineOption>& options, const QList<Next>& next,
                         Kind arguments) {
        QStringList words;
        for (const Next& one : next)
            words << one.word;
        QString text = QStringLiteral("      if [[ $cur == -* ]]; then ") +
                       compgen(QStringLiteral("-W ") + quoted(flags(options).join(' ')));
        if (!words.isEmpty())
            text += QStringLiteral("\n      else ") +
                    compgen(QStringLiteral("-W ") + quoted(words.join(' ')));
        else if (arguments != Kind::Nothing)
            text += QStringLiteral("\n      else ") + paths(arguments);
        return text + QStringLiteral("\n      fi ;;\n");
    };
    dialect.end =
        QStringLiteral("}\ncomplete -F %1 %2\n").arg(functionName(command), command.program);
    return inDialect(command, dialect);
}

QString zsh(const Command& command) {
    const auto described = [](const QString& word, QString summary) {
        return quoted(word + QLatin1Char(':') +
                      summary.replace(QLatin1Char(':'), QLatin1String("\\:")));
    };
    const auto paths = [](Kind kind) {
        return kind == Kind::Files ? QStringLiteral("_files") : QStringLiteral("_files -/");
    };
    Dialect dialect;
    dialect.begin = QStringLiteral("#compdef %1\n"
                                   "# Made of the table behind its --help.\n"
                                   "%2() {\n"
                                   "  local verb='' i\n"
                                   "  local -a options next\n"
                                   "  for ((i = 2; i < CURRENT; i++)); do\n"
                                   "    case $words[i] in\n"
                                   "      %3) i=$((i + 1)) ;;\n"
                                   "      -*) ;;\n"
                                   "      *) verb+=\"${verb:+ }${words[i]}\" ;;\n"
                                   "    esac\n"
                                   "  done\n")
                        .arg(command.program, functionName(command), allValueFlags(command));
    dialect.previous = QStringLiteral("$words[CURRENT-1]");
    dialect.value = [=](Kind kind, const QString& word) {
        switch (kind) {
        case Kind::Nothing:
            return QString();
        case Kind::Words:
            return QStringLiteral("compadd -- %1; ").arg(QString(word).replace('|', ' '));
        default:
            return paths(kind) + QStringLiteral("; ");
        }
    };
    dialect.branch = [=](const QList<QCommandLineOption>& options, const QList<Next>& next,
                         Kind arguments) {
        QString text = QStringLiteral("      options=(");
        for (const QCommandLineOption& option : options)
            for (const QString& name : option.names())
                text += QStringLiteral("\n        ") + described(flag(name), option.description());
        text += QStringLiteral(")\n      next=(");
        for (const Next& one : next)
            text += QStringLiteral("\n        ") + described(one.word, one.summary);
        text += QStringLiteral(")\n      if [[ $PREFIX == -* ]]; then _describe -o option options\n"
                               "      else _describe word next");
        if (arguments != Kind::Nothing)
            text += QStringLiteral(" || ") + paths(arguments);
        return text + QStringLiteral("\n      fi ;;\n");
    };
    dialect.end = QStringLiteral("}\n%1 \"$@\"\n").arg(functionName(command));
    return inDialect(command, dialect);
}

QString fish(const Command& command) {
    const QString program = command.program;
    const QString words = QLatin1String("_") + functionName(command) + QStringLiteral("_words");
    QStringList valueFlags = allValueFlags(command).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    QString text = QStringLiteral("# fish completion of %1, made of the table behind its --help.\n"
                                  "function %2\n"
                                  "  set -l words\n"
                                  "  set -l skip 0\n"
                                  "  for word in (commandline -opc)[2..-1]\n"
                                  "    if test $skip = 1\n"
                                  "      set skip 0\n"
                                  "    else if contains -- $word %3\n"
                                  "      set skip 1\n"
                                  "    else if not string match -q -- '-*' $word\n"
                                  "      set words $words $word\n"
                                  "    end\n"
                                  "  end\n"
                                  "  string join ' ' -- $words\n"
                                  "end\n"
                                  "complete -c %1 -f\n")
                       .arg(program, words, valueFlags.join(QLatin1Char(' ')));
    const auto line = [&](const QString& condition, const QString& what, const QString& summary) {
        text += QStringLiteral("complete -c %1").arg(program) +
                (condition.isEmpty() ? QString() : QStringLiteral(" -n ") + quoted(condition)) +
                what + (summary.isEmpty() ? QString() : QStringLiteral(" -d ") + quoted(summary)) +
                QLatin1Char('\n');
    };
    const auto values = [](Kind kind, const QString& word) {
        switch (kind) {
        case Kind::Nothing:
            return QStringLiteral(" -x");
        case Kind::Files:
            return QStringLiteral(" -r -F");
        case Kind::Directories:
            return QStringLiteral(" -x -a '(__fish_complete_directories)'");
        case Kind::Words:
            break;
        }
        return QStringLiteral(" -x -a ") + quoted(QString(word).replace('|', ' '));
    };
    const auto optionLines = [&](const QString& condition,
                                 const QList<QCommandLineOption>& options) {
        for (const QCommandLineOption& option : options) {
            QString what;
            for (const QString& name : option.names())
                what += (name.size() == 1 ? QStringLiteral(" -s ") : QStringLiteral(" -l ")) + name;
            if (!option.valueName().isEmpty())
                what += values(kindOf(option.valueName()), option.valueName());
            line(condition, what, option.description());
        }
    };
    const auto behind = [&](const QString& verb) {
        return QStringLiteral("test (%1) = \"%2\"").arg(words, verb);
    };
    const auto within = [&](const QString& verb) {
        return QStringLiteral("string match -q -- \"%2 *\" (%1)\" \"").arg(words, verb);
    };
    optionLines(command.verbs.isEmpty() ? QString() : behind({}), command.options);
    for (const Next& next : nextWords(command, {}))
        line(behind({}), QStringLiteral(" -a ") + quoted(next.word), next.summary);
    for (const QString& first : firstOfTwo(command))
        for (const Next& next : nextWords(command, first))
            line(behind(first), QStringLiteral(" -a ") + quoted(next.word), next.summary);
    for (const Verb& verb : command.verbs) {
        optionLines(within(verb.name), verb.options);
        if (kindOfArguments(verb) == Kind::Files)
            line(within(verb.name), QStringLiteral(" -F"), {});
        else if (kindOfArguments(verb) == Kind::Directories)
            line(within(verb.name), QStringLiteral(" -a '(__fish_complete_directories)'"), {});
    }
    return text;
}

const std::map<QString, QString (*)(const Command&)>& makers() {
    static const std::map<QString, QString (*)(const Command&)> all = {
        {QStringLiteral("bash"), bash},
        {QStringLiteral("fish"), fish},
        {QStringLiteral("zsh"), zsh},
    };
    return all;
}

} // namespace

QStringList shells() {
    QStringList names;
    for (const auto& [name, make] : makers())
        names << name;
    return names;
}

QString script(const QString& shell, const Command& command) {
    const auto found = makers().find(shell);
    return found == makers().end() ? QString() : found->second(command);
}

} // namespace orvo::completion
