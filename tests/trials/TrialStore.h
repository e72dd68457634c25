// TrialStore.h: the demonstration installation on each kind of store, and what must hold of it
// after whatever was done to it.
#ifndef ORVO_TESTS_TRIALS_TRIALSTORE_H
#define ORVO_TESTS_TRIALS_TRIALSTORE_H

#include "Trial.h"

#include "tests/admin/AdminTest.h"
#include "tests/store/LogReplay.h"

#include <QProcess>

namespace orvo::test {

/// The key of one of its desktops.
QString desktopOf(store::Store& store);

/// Gives every case a fresh demonstration installation.
class TrialStore : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

protected:
    QString url() const { return QString::fromStdString(m_kind.url()); }
    QString desktop() const { return m_desktop; }
    /// A command on the store, to be killed or waited for.
    std::unique_ptr<QProcess> start(const QStringList& arguments) const;
    /// Lets it work for that long; its exit code, -1 if it was killed.
    static int killAfter(QProcess& process, int milliseconds);
    /// Whether nothing of a killed program is at work on the server any more.
    bool isQuiet() const;

    enum class Log { GoesOn, IsOfBackup };
    /// What is wrong, in words; empty if the store opens, its tables are what the log tells, and
    /// neither the database nor `check` finds anything that was not there in the beginning.
    QString fault(Log log = Log::GoesOn);

protected slots:
    void init();

private:
    QString m_desktop;
    QStringList m_errors;
    store::test::LogReplay m_replay;
};

} // namespace orvo::test

#endif
