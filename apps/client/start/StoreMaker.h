// StoreMaker.h: makes a store in a file by the command that administrators use, so that there is
// one way of making one.
#ifndef ORVO_APPS_CLIENT_START_STOREMAKER_H
#define ORVO_APPS_CLIENT_START_STOREMAKER_H

#include <QObject>
#include <QProcess>
#include <QStringList>

namespace orvo::app {

class StoreMaker : public QObject {
    Q_OBJECT
public:
    /// `program`: the path of orvo-admin.
    explicit StoreMaker(QString program, QObject* parent = nullptr);
    /// Ends the command; what it had not committed is not in the file.
    ~StoreMaker() override;

    /// Makes the store, with the folder for the file if that is missing; then fills it with the
    /// demonstration if wanted. Ends with `made`. One at a time.
    void make(const QString& file, bool withDemonstration);
    bool isRunning() const { return !m_steps.isEmpty(); }

signals:
    /// Comes once for each make, from the event loop. `problem`: one line, empty if all went well.
    void made(const QString& problem);

private:
    void next();
    void ended(const QString& problem);

    const QString m_program;
    QString m_file;
    QStringList m_steps; ///< verbs that are to be done; the first is running
    QProcess m_process;
};

} // namespace orvo::app

#endif
