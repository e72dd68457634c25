// Inspector.h: a window into the running client, for support and tests: other programs of the same
// user ask over a local socket what stands on the screen and in the modules' tables. It only reads.
//
// A question is one line, the answer one line of JSON; a question that cannot be answered gets
// {"error": text}. Rectangles are [x, y, width, height] in global coordinates, only of what is
// visible.
//
//     state          whether all is at rest, loop level, the lines on connection and failure
//     windows        top-level windows and open pop-ups, and the widget that has the focus
//     tree NAME      rows of the QTreeView of that object name, depth first
//     control NAME   actions, buttons, menu entries by object name or text; labels by object name
//     table NAME     records of a module's table, as the module prints them
#ifndef ORVO_APPS_CLIENT_INSPECTOR_H
#define ORVO_APPS_CLIENT_INSPECTOR_H

#include <QJsonObject>
#include <QLocalServer>

#include <functional>
#include <vector>

class QLocalSocket;

namespace orvo::app {

class Inspector : public QObject {
    Q_OBJECT
public:
    /// What the inspector asks the client. Both are called from the event loop.
    struct Sources {
        std::function<QJsonObject()> state;
        std::function<std::vector<QObject*>()> modules;
    };

    explicit Inspector(Sources sources, QObject* parent = nullptr);

    /// Opens the socket, for this user only: a name, or the path of a socket file. A socket left
    /// behind by a client that died is taken over; one that answers is not, nor is the place of any
    /// other file. False, with one line in `error`, if it cannot be opened.
    bool listen(const QString& name, QString* error);

    /// The answer to one question.
    QJsonObject answer(const QString& question) const;

private:
    void greet();
    void read(QLocalSocket* socket);

    Sources m_sources;
    QLocalServer m_server;
};

} // namespace orvo::app

#endif
