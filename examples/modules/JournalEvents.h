// JournalEvents.h: the change log of the store: what was there when the module was opened, and
// every change since.
#ifndef SAMPLE_JOURNALEVENTS_H
#define SAMPLE_JOURNALEVENTS_H

#include <frame/Launch.h>
#include <frame/OrvoClient.h>

class QTreeWidget;

class JournalEvents : public COrvoCliMod {
    Q_OBJECT
public:
    static constexpr int mostRows = 5000;

    explicit JournalEvents(COrvoCliApp* app);

    /// "Глубина": days; what is older is left out. Called before ModuleStart.
    void SetParamMod(QString name, QString value) override;
    /// False, with a line in the log, if the host does not give the changes.
    bool ModuleStart() override;
    /// Something has changed: the rows behind the last one are read. What changed the notifications
    /// tell as well, but not who did it.
    void MessageOn() override;

private:
    bool read();
    void add(const orvo::LogEntry& entry);

    QTreeWidget* m_rows; // child
    qint64 m_last = -1;  ///< of the log; -1: nothing was read
    int m_days = 0;      ///< 0: any age
};

#endif
