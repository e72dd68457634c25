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
/// The property of an editor's action that stands in a menu of the window: in which one.
constexpr char entryProperty[] = "orvoMenu";

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
    /// Gives the page its title, and its tab, if it is in one; false if it is in none of them.
    bool setTitle(QWidget* page, const QString& title);
    /// As the tab shows it, with the mark; also of a page that is in none.
    static QString titleOf(const QWidget* page);
    bool isModule(QWidget* page) const;
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
    /// The first of that name; null if there is none.
    QWidget* find(const QString& name, bool isModule) const;
    /// Takes a page of a tab out; it is the caller's to place.
    Order::Tab takePage(QWidget* page);
    /// Puts it back, an editor among those that are there in the order in which they came.
    void putPage(const Order::Tab& page);
    /// Puts the tabs into that order again, and the same one to the front of the others; what was
    /// reopened is known by its name. A page that was there all the time stands for itself only.
    void arrange(const Order& as);

signals:
    void pageCloseRequested(QWidget* page);

private:
    void insertModule(int index, QWidget* module, const QString& name);
    void addCloseButton(QWidget* page, int index);
    Order::Tab tab(int index) const;

    bool m_isTouchable = false;
    QStringList m_moduleNames; ///< as they were added first
};

} // namespace orvo::app

#endif
