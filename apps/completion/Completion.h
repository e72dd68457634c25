// Completion.h: scripts by which bash, zsh and fish complete a command line, made of the table of
// options that --help is made of.
//
// What may stand for a value or an argument is told by the word for it in the help: "ФАЙЛ", "FILE"
// and "URL" are completed with files, "КАТАЛОГ" and "DIR" with directories, "A|B" with A and B, and
// every other word with nothing.
#ifndef ORVO_APPS_COMPLETION_COMPLETION_H
#define ORVO_APPS_COMPLETION_COMPLETION_H

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

namespace orvo::completion {

/// A verb of one or two words.
struct Verb {
    QString name, summary;
    QString arguments; ///< as the usage line shows them, options in brackets
    QList<QCommandLineOption> options;
};

struct Command {
    QString program;
    QList<QCommandLineOption> options; ///< before the verb, or all of them if there are no verbs
    QList<Verb> verbs;
};

/// The shells that `script` knows.
QStringList shells();
/// A script to be read by that shell, lines ended; empty for a shell that it does not know.
QString script(const QString& shell, const Command& command);

} // namespace orvo::completion

#endif
