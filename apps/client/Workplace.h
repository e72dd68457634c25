// Workplace.h: the operator's desktop in the client: which one is shown, how it is chosen and
// remembered, and how a kiosk ends.
//
// The menu itself is the module "Desktop" of a module library, in a pane of the window.
//
// Invariant: m_desk is null or a module of the registry that shows m_name, or failed to; so are
// m_preview and m_previewed.
#ifndef ORVO_APPS_CLIENT_WORKPLACE_H
#define ORVO_APPS_CLIENT_WORKPLACE_H

#include "frame/Launch.h"
#include "platform/store/Store.h"

#include <QObject>
#include <QPointer>

class COrvoCliApp;
class COrvoCliMod;

namespace orvo::client {
class ModuleRegistry;
}

namespace orvo::app {

class DesktopDialog;
class MainWindow;
class ModuleLibraries;
class WindowMemory;

class Workplace : public QObject {
    Q_OBJECT
public:
    /// What it works with; all of it outlives this object.
    struct Context {
        store::Store& store;
        ModuleLibraries& libraries;
        COrvoCliApp& app;
        client::ModuleRegistry& modules;
        MainWindow& window;
        const WindowMemory* memory; ///< null: nothing is remembered
    };
    explicit Workplace(const Context& context, QObject* parent = nullptr);

    /// Shows a desktop, named by key, path or caption, in place of the one that is shown.
    void open(const QString& name);
    /// Shows the one that the user chose last time, if he left it open.
    void openRemembered();
    /// The module that shows it; null if none does.
    COrvoCliMod* desk() const { return m_desk; }
    /// The modules are about to be stopped; how it was left is known until `reopen`.
    void rememberDesk() const;
    void reopen();
    /// Shows a desktop at the right, for the engineer who edits it: with what is not saved yet, and
    /// with marks at what operators could not open. If that one is on show, closes it.
    void togglePreview(PreviewRequest* request);
    /// The preview, if there is one, follows what the editor shows.
    void followPreview(const PreviewEdit& edit);
    /// Shows a text below the menu, in nobody's way.
    void tell(const QString& text);
    /// Asks for the login of the user and, if it is given, ends the kiosk.
    void askEndOfKiosk();

signals:
    void problem(const QString& place, const QString& text);

private:
    /// False if no module can show a desktop.
    bool openPreview(const QString& desktop);
    void choose();
    void closed(COrvoCliMod* desk);
    COrvoCliMod* makeDesk(const QString& desktop, Qt::DockWidgetArea area, const QString& name);
    void stopDesk(COrvoCliMod* desk);
    void rememberWidth(const COrvoCliMod* desk) const;

    const Context m_context;
    QString m_name; ///< of the desktop, as somebody named it; empty: none is shown
    QPointer<COrvoCliMod> m_desk;
    QString m_previewed; ///< key of the desktop in the preview; empty: there is none
    QPointer<COrvoCliMod> m_preview;
    QPointer<DesktopDialog> m_dialog;
};

} // namespace orvo::app

#endif
