// Instance.h: one running client for each user, store, login and work directory. A second one that
// is started for the same asks the first to open its modules, and ends.
//
// The first holds a lock on a file for as long as it lives, so that a client that was killed is in
// nobody's way, and listens on a local socket beside it. Both lie in $XDG_RUNTIME_DIR/orvo, or in
// /tmp/orvo-UID: a directory that only this user may enter.
//
// A request is one line of JSON, {"open": [module, ...]}; the answer is the line "ok" or "no".
#ifndef ORVO_APPS_CLIENT_INSTANCE_H
#define ORVO_APPS_CLIENT_INSTANCE_H

#include "apps/client/Options.h"

#include <QLocalServer>
#include <QObject>

#include <optional>

class QLocalSocket;

namespace orvo::app {

class Instance : public QObject {
    Q_OBJECT
public:
    /// The longest request that is read.
    static constexpr qint64 longestRequest = 4096;

    enum class Role {
        First,   ///< no other client runs for this; further ones will ask this one
        Further, ///< the running client has taken the request
        Alone,   ///< one runs, but does not answer, or none can be asked: go on without
    };

    explicit Instance(const Options& options, QObject* parent = nullptr);
    ~Instance() override;

    /// Finds the role of this process; asks the running client to open the modules of the options,
    /// if they may be handed over. To be called once, after the application object is made.
    Role take(bool mayHandOver);
    /// Where the running client listens.
    QString socketPath() const { return m_path + QStringLiteral(".socket"); }

    /// The modules that a request asks for; none for what is no request.
    static std::optional<QStringList> parse(const QByteArray& line);

signals:
    /// Another process asks for these modules, known ones, perhaps none; the window is to come
    /// forward.
    void requested(const QStringList& modules);

private:
    bool lock();
    bool ask() const;
    void greet();
    void read(QLocalSocket* socket);

    const QStringList m_modules;
    QString m_path; ///< of lock and socket, without their endings; empty: there is no safe place
    int m_lock = -1;
    QLocalServer m_server;
};

} // namespace orvo::app

#endif
