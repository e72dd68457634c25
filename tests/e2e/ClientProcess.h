// ClientProcess.h: a running orvo-client, and the questions a test asks it through --inspect.
#ifndef ORVO_TESTS_E2E_CLIENTPROCESS_H
#define ORVO_TESTS_E2E_CLIENTPROCESS_H

#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QRect>
#include <QStringList>

#include <vector>

namespace orvo::test {

struct TreeRow {
    int depth = 0;
    QStringList cells;
    bool expanded = false;
    bool current = false;
    bool selected = false;
    std::vector<QRect> rects; ///< per column; empty for a row that is not on the screen
};

struct Tree {
    std::vector<TreeRow> rows;
    QRect rect;
    bool focus = false;

    /// The number of the first row with that text in a column, -1 if there is none.
    int find(const QString& text, int column = 0) const;
    /// The number of the row above which `row` hangs; -1 at the top.
    int parentOf(int row) const;
    int current() const;
    /// Rows with their depth, for messages.
    QString text() const;
};

struct Control {
    QString text;
    QString type;
    bool enabled = false;
    bool visible = false;
    QRect rect;
};

class ClientProcess {
public:
    /// Starts a client with these modules, or none for an operator's desktop, and further
    /// arguments; the window is at `place` soon after, or where it wants to be for an empty one.
    /// Everything it writes goes below `directory`.
    ClientProcess(const QString& directory, const QString& store, const QString& login,
                  const QRect& place, const QStringList& modules = {"Menu"},
                  const QStringList& more = {});
    ~ClientProcess();

    /// Waits until the window is up and the module loaded; moves the window to its place.
    bool waitUp();
    /// As a power cut does it.
    void killHard();
    bool isRunning();
    /// What it wrote to standard error, Qt's notes included.
    QString errors();

    QJsonObject ask(const QString& question);
    bool settled() { return ask("state")["settled"].toBool(); }
    QString failure() { return ask("state")["failure"].toString(); }
    Tree tree(const char* name);
    /// Those on the screen that bear the name or text.
    std::vector<Control> controls(const QString& nameOrText);
    /// Whether the action or button is enabled, wherever it is.
    bool isEnabled(const char* name);
    /// The lines of a table, without that of the names, sorted.
    QStringList table(const char* name);

    const QString login;
    const QStringList modules;

private:
    bool isInPlace();
    void moveIntoPlace();

    QProcess m_process;
    QLocalSocket m_socket;
    QString m_socketPath;
    QRect m_place;
};

} // namespace orvo::test

#endif
