// NewElements.h: resources become elements of the open menu: those that are chosen in the picker or
// in the palette, and those that are dragged out of the palette or of a resource editor. They go to
// the server at once, as the last elements of a folder.
//
// Who works in the palette goes by the row that was current when he entered it, whatever others
// make current meanwhile.
//
// Invariants; 1 is asserted in debug builds:
// 1. There is one palette at most, a child of the window beside its picker.
// 2. The row that the palette adds to is the current one, as long as the palette is not the active
//    window.
// 3. A resource that others have deleted becomes no element, until it is stored again.
#ifndef ORVO_MENU_NEWELEMENTS_H
#define ORVO_MENU_NEWELEMENTS_H

#include <QCoreApplication>
#include <QModelIndex>
#include <QObject>
#include <QSet>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

class CPopObjectList;
class QTreeView;

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::menu {

class OpenMenu;

class NewElements : public QObject {
    Q_DECLARE_TR_FUNCTIONS(OrvoMenu)
public:
    struct Picked {
        QString key; ///< of the resource
        QString caption;
    };

    /// All of these outlive it. `current` is the key of the current row of tvMenu; `finishEdit`
    /// saves the open edit and is false if it stays open.
    NewElements(editor::EditorWindow& window, const OpenMenu& menu, const QString& current,
                std::function<bool()> finishEdit);

    /// Takes what is dropped on the rows of the menu's view.
    void takeDrops(QTreeView& view);

    // These do nothing before the window has started.
    /// Shows the picker, or the palette if it is open, with the resources of a kind.
    void choose(int32_t kind);
    /// Opens the palette beside the menu, or closes it; while it is open new elements are chosen
    /// in it.
    void togglePalette();

    /// Adds what is chosen in the picker or in the palette. A folder of it is no resource: its
    /// choice is refused in a box.
    void addChosen(CPopObjectList& list);
    /// Takes out what others have deleted since the picker was filled, and says so in a box.
    void refuseDeleted(std::vector<Picked>& picked);

    /// Another row has become current.
    void noteCurrent();
    /// A resource is stored, or no longer; the table of resources goes on having the record of one
    /// that is deleted.
    void noteStored(const QString& resource);
    void noteDeleted(const QString& resource);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// New last elements of a folder, or of that in which the row stands. False if there are none.
    bool add(QModelIndex target, std::vector<Picked> picked);

    editor::EditorWindow& m_window;
    const OpenMenu& m_menu;
    const QString& m_current;
    const std::function<bool()> m_finishEdit;
    CPopObjectList* m_palette = nullptr; ///< the window's child, made on first use
    QString m_paletteTarget;             ///< the row that it adds to
    QTreeView* m_view = nullptr;         ///< whose viewport it filters; null before takeDrops()
    QSet<QString> m_deleted;             ///< folded keys of resources
};

} // namespace orvo::menu

#endif
