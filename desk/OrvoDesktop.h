// OrvoDesktop.h: the module "Desktop": the menu of one desktop, as operators get it, live.
//
// Before ModuleStart the host names the desktop: SetParamMod("desktop", key, path or caption). What
// an element stands for is opened by the host (frame/Launch.h). The module writes nothing.
#ifndef ORVO_DESK_ORVODESKTOP_H
#define ORVO_DESK_ORVODESKTOP_H

#include "desk/DeskModel.h"
#include "desk/DeskRecords.h"
#include "desk/DeskRows.h"
#include "desk/Recent.h"
#include "desk/Search.h"
#include "frame/OrvoClient.h"

#include <memory>

class QLabel;
class QLineEdit;
class QStackedWidget;

namespace orvo {
class Notification;
}
namespace orvo::desk {
class DeskView;
class ElementList;
} // namespace orvo::desk

class OrvoDesktop : public COrvoCliMod {
    Q_OBJECT
public:
    explicit OrvoDesktop(COrvoCliApp* app);
    ~OrvoDesktop() override;

    /// "desktop": which one; "preview": "1" for an engineer, with marks at what cannot be opened.
    /// Any other name is passed over.
    void SetParamMod(QString name, QString value) override;
    /// False if there is no such desktop, more than one, or the server does not answer; the reason
    /// is shown and logged.
    bool ModuleStart() override;
    void MessageOn() override;
    bool MessageData(MDXCliParam* prm) override;
    void ModSesReconnect() override;

public slots:
    /// "notice": shows the text below the menu until something is opened. "desktop", in a preview:
    /// shows the one of that key instead. "edit": an engineer edits an element, a map of its `key`
    /// (empty: none is edited), `isNew`, and `values` by the names of the fields.
    void slot_modNotify(QString name, QVariant value) override;
    /// Opens what an element stands for; a folder is shown.
    void launch(const QString& key);

private slots:
    void searchChanged(const QString& text);
    void leaveSearch();

private:
    void makeWidgets();
    bool refuseStart(const QString& why);
    void tell(const QString& text);
    void desktopChanged(const orvo::Notification& change);
    void resourceChanged(const QString& key);
    void showRecent();
    bool open(const QString& key, const QString& caption);
    void showTitle(const QString& caption);
    void showEdit(const QVariantMap& edit);
    void checkAgain();
    void rowsChanged();
    bool eventFilter(QObject* watched, QEvent* event) override;

    QString m_wanted; ///< as the host named the desktop
    orvo::desk::DeskRecords m_records;
    std::unique_ptr<orvo::desk::DeskModel> m_model; ///< outlives the views
    std::unique_ptr<orvo::desk::DeskRows> m_rows;
    std::unique_ptr<orvo::desk::Search> m_search;
    std::unique_ptr<orvo::desk::Recent> m_recent; ///< null before the start
    orvo::desk::DeskView* m_view = nullptr;       // these: children of the central widget
    orvo::desk::ElementList* m_hits = nullptr;
    QLabel* m_recentTitle = nullptr;
    orvo::desk::ElementList* m_recentList = nullptr;
    QLineEdit* m_edSearch = nullptr;
    QStackedWidget* m_pages = nullptr;
    QLabel* m_notice = nullptr;
    QLabel* m_nothing = nullptr;
    bool m_isPreview = false;
    QString m_standing;     ///< why what is shown is not followed any more; empty: it is
    bool m_changed = false; ///< rows, since the last look
};

#endif
