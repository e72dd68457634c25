// PageDocks.h: pages that the user has taken out of the tabs: panes beside them, or windows of
// their own.
//
//  1. A page is in one pane here or in a tab, never in both. It belongs to whoever made it, and
//     takes the pane with it when it goes.
//  2. A pane is empty only between keepPlaces and the end of fill.
//  3. The tabs are hidden exactly while all pages are out.
#ifndef ORVO_APPS_CLIENT_PAGEDOCKS_H
#define ORVO_APPS_CLIENT_PAGEDOCKS_H

#include "apps/client/ModuleTabs.h"

#include <QObject>

#include <optional>
#include <vector>

class QDockWidget;
class QMainWindow;

namespace orvo::app {

class PageDock;

class PageDocks : public QObject {
    Q_OBJECT
public:
    enum class Place { Beside, OwnWindow };

    /// Both outlive it. The panes are the window's children, and only this object deletes them
    /// while it lives.
    PageDocks(QMainWindow& window, ModuleTabs& tabs);

    /// The page that the user works with: the one that had the focus last; null: there is none.
    QWidget* current() const;
    /// All that are on show: the tab in front and those taken out.
    std::vector<QWidget*> shown() const;
    /// Nothing for a page in a tab.
    std::optional<Place> placeOf(const QWidget* page) const;

    /// Takes a page out of its tab, or from one place to the other.
    void takeOut(QWidget* page, Place place);
    void putBack(QWidget* page);
    /// What the tabs do for a page of theirs; false if it is none of these.
    bool bringUp(const QWidget* page);
    bool setTitle(QWidget* page);
    /// As the cross of the page's tab or pane: an editor returns to the tabs, any other page is
    /// asked to close.
    void close(QWidget* page);

    /// The editor of that name, in a tab or out; null if there is none.
    QWidget* editor(const QString& name) const;
    /// The names of the editors that are out, for the next time.
    QStringList editors() const;
    /// Takes these editors out, each to where the window's restored state has it.
    void restore(const QStringList& editors);
    /// Before the modules are stopped and opened anew: the panes stay as they are, without them.
    void keepPlaces();
    /// Fills the panes that were kept with the pages of the same names, and takes the others away.
    void fill();

signals:
    /// Another page has become the current one, it was taken elsewhere, or its window has become
    /// active.
    void currentChanged();

private:
    PageDock* dockOf(const QWidget* page) const;
    PageDock* makeDock(const ModuleTabs::Order::Tab& page);
    void followPage(PageDock* dock);
    void drop(PageDock* dock);
    void followFocus(QWidget* now);
    void settle();
    bool invariantsHold() const;

    QMainWindow& m_window;
    ModuleTabs& m_tabs;
    std::vector<PageDock*> m_docks; ///< the window's children, in the order of being taken out
    PageDock* m_current = nullptr;  ///< one of them; null: the tabs have the current page
    bool m_keepsPlaces = false;
};

} // namespace orvo::app

#endif
