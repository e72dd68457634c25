// ModuleTabs.h: the tabs of the window: editors, which stay, and pages, which the user can close.
//
// What is in a tab belongs to whoever placed it there and takes the tab with it when it goes; the
// tabs delete what is left.
#ifndef ORVO_APPS_CLIENT_MODULETABS_H
#define ORVO_APPS_CLIENT_MODULETABS_H

#include <QPointer>
#include <QTabWidget>

#include <vector>

class COrvoCliMod;
class QToolButton;

namespace orvo::app {

/// The least that a finger hits, in pixels.
constexpr int fingerSize = 44;

class ModuleTabs : public QTabWidget {
    Q_OBJECT
public:
    explicit ModuleTabs(QWidget* parent = nullptr);

    /// A tab for an editor, shown with its title, else with its name.
    void addModule(COrvoCliMod* module, const QString& name);
    /// A tab that the user can close (pageCloseRequested).
    void addPage(QWidget* page, const QString& title);
    /// Marks the tab: what it shows is no longer as it was; `why` in words.
    void markPage(QWidget* page, const QString& why);
    /// False if it is in none of the tabs.
    bool setTitle(QWidget* page, const QString& title);
    /// Asks for the end of the current page; an editor stays.
    void closeCurrent();
    /// Tabs and their buttons are as large as a finger needs from here on.
    void becomeTouchable();

    /// The tabs as they are; for when modules have been reopened.
    struct Order {
        struct Tab {
            QPointer<QWidget> page;
            QString name; ///< of an editor, else the title
            bool isModule = false;
        };
        std::vector<Tab> tabs;
        int current = -1;
    };
    Order order() const;
    /// Puts the tabs into that order again, and the same one to the front of the others; what was
    /// reopened is known by its name. A page that was there all the time stands for itself only.
    void arrange(const Order& as);
    /// To the front; nothing is changed if there is no editor of that name.
    void setCurrentModule(const QString& name);

signals:
    void pageCloseRequested(QWidget* page);

private:
    void addCloseButton(QWidget* page, int index);
    Order::Tab tab(int index) const;

    bool m_isTouchable = false;
};

} // namespace orvo::app

#endif
