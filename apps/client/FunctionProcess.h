// FunctionProcess.h: a function of a module library, carried out in a process of its own: this same
// program, started with an argument that no user gives (FunctionHost.h). Whatever a function does,
// the client only learns that it has ended. It ends with the client.
//
// The process reads one line of JSON, {store, login, workDir, modules, name, parameters,
// isConnected}, then lines "raise". It writes lines of JSON, {"log": [level, place, text]}; other
// output of the function is passed over.
#ifndef ORVO_APPS_CLIENT_FUNCTIONPROCESS_H
#define ORVO_APPS_CLIENT_FUNCTIONPROCESS_H

#include "frame/QtCompat.h"

#include <QStringList>

namespace orvo::app {

/// What a function's process stands on.
struct FunctionContext {
    QString program; ///< of the client
    QString store;   ///< as the client's options name it
    QString login;
    QString workDir;
    QStringList moduleDirs; ///< beyond the program's own
};

/// Exit codes of the process.
enum FunctionExit : int {
    FunctionExitDone = 0,
    FunctionExitFailed = 1, ///< why is in the log
    FunctionExitUnknown = 3 ///< no library knows the function
};

class FunctionProcess : public qt::SetUpProcess {
    Q_OBJECT
public:
    explicit FunctionProcess(QObject* parent = nullptr);
    /// Ends the process without waiting for what it does.
    ~FunctionProcess() override;

    /// Called once. `isConnected`: whether the store is worth asking; else the function gets no
    /// session.
    void run(const FunctionContext& context, const QString& name, const QString& params,
             bool isConnected);
    /// The windows of the function come forward.
    void raiseWindows();
    /// Whether the function is done and its windows are closed, though the process may still be
    /// there.
    bool isClosing() const { return m_isClosing; }

signals:
    void logged(int level, const QString& place, const QString& text);
    /// The process is no more. `failure` in Russian; empty if the function has done its work. Comes
    /// once.
    void ended(const QString& failure);

protected:
    void setUpChild() override;

private:
    void readLog();
    void end(const QString& failure);
    QString failure() const;

    QString m_name;
    bool m_hasEnded = false;
    bool m_isClosing = false;
};

} // namespace orvo::app

#endif
