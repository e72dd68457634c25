// HostApp.h: the application object of the modules, as signals.
#ifndef ORVO_APPS_CLIENT_HOSTAPP_H
#define ORVO_APPS_CLIENT_HOSTAPP_H

#include "frame/Launch.h"
#include "frame/OrvoClient.h"

#include <QHash>

#include <utility>

namespace orvo::app {

/// The entry of context menus that shows where records of that table are used; empty for tables of
/// which nothing is used anywhere.
QString usesEntry(const QString& table);

class HostApp : public QObject, public COrvoCliApp {
    Q_OBJECT
public:
    void log(int level, const QString& place, const QString& text) override;
    void moduleTitle(COrvoCliMod* module, const QString& title, const QString& second) override;
    void moduleCall(COrvoCliMod* module, int code, void* data) override;
    bool hasRecordMarks() const override { return !m_marks.isEmpty() || !m_unwritten.isEmpty(); }
    RecordMark recordMark(const QString& table, const QString& key) const override;

    void addRecordActions(QMenu* menu, const QString& table, const QString& key) override;

    /// Marks by markKey.
    using Marks = QHash<QString, RecordMark>;
    static QString markKey(const QString& table, const QString& key);
    void setMarks(Marks marks) { m_marks = std::move(marks); }
    /// Records whose rows may show what was typed here and is not in the store: by markKey what it
    /// is, in words.
    void setUnwritten(QHash<QString, QString> records) { m_unwritten = std::move(records); }
    /// "table/key: label" of each mark, in order.
    QStringList markedRecords() const;

signals:
    void logged(int level, const QString& place, const QString& text);
    void titleChanged(COrvoCliMod* module, const QString& title);
    /// RUN_FILE: the form's name, and behind a ";" its parameters.
    void formRequested(const QString& request);
    /// The history of a record, or of it and everything in it.
    void historyRequested(const QString& table, const QString& key, bool withContent);
    /// The kept versions of a form or file.
    void versionsRequested(const QString& resource);
    /// The calls of Launch.h. Whoever takes one answers in the request, before the signal returns.
    void launchRequested(orvo::LaunchRequest* request);
    void launchChecked(orvo::LaunchRequest* request);
    void handbookRequested(orvo::HandbookRequest* request);
    void previewRequested(orvo::PreviewRequest* request);
    void previewEdited(const orvo::PreviewEdit& edit);
    void logRequested(orvo::LogRequest* request);
    void usesRequested(orvo::UsesRequest* request);
    void showUsesRequested(orvo::ShowUsesRequest* request);

private:
    Marks m_marks; ///< of others
    QHash<QString, QString> m_unwritten;
};

} // namespace orvo::app

#endif
