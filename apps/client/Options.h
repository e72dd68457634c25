// Options.h: the command line of the client.
#ifndef ORVO_APPS_CLIENT_OPTIONS_H
#define ORVO_APPS_CLIENT_OPTIONS_H

#include <QString>
#include <QStringList>

namespace orvo::app {

struct Options {
    QString store;               ///< URL or absolute path
    bool isDefaultStore = false; ///< nobody named it
    QString login;
    QString workDir;             ///< absolute, with the separator at its end
    bool isWorkDirGiven = false; ///< somebody named it
    QStringList askedModules;    ///< those that the command line names
    QStringList modules;     ///< in the order asked for; all known ones if none was, none beside a
                             ///< desktop
    QStringList moduleDirs;  ///< further directories of module libraries, absolute
    QString desktop;         ///< the operator's desktop that is shown alone; empty: none
    bool isKiosk = false;    ///< it fills the screen
    QString screenshot;      ///< empty: none
    QString inspect;         ///< name of the socket that answers questions; empty: none
    bool isSeparate = false; ///< do not ask a running client to open the modules
    bool help = false;
    bool version = false;
    QString completion; ///< the shell that asks for its script; empty: none
};

/// The file of the embedded store, which is opened where nobody names one.
QString ownStore();
/// The work directory of a store that nobody gave one: each store has its own, since its file area
/// is mirrored there. Absolute, with the separator at its end.
QString usualWorkDir(const QString& store);

/// Reads the arguments (the first is the program's name) and fills in the defaults from the
/// environment. False, with one line in `error`, for what cannot be meant; `screenshot` and
/// `inspect` are read all the same.
bool parseOptions(const QStringList& arguments, Options* options, QString* error);

/// The text of --help, lines ended.
QString helpText();
/// What the shell of the options reads to complete our command line.
QString completionText(const QString& shell);
/// The text of --version, line ended.
QString versionText();

/// Empty if windows can be shown, else one line that says why not and what to do. Looks at the
/// environment only.
QString displayProblem();

/// How to make the store of the options if it is missing and the command that is named would do it,
/// as the end of a line; else empty.
QString adviceOnMissingStore(const Options& options);

} // namespace orvo::app

#endif
