// MenuClipboard.h: copy, cut and paste of menu elements. The clipboard carries whole records with
// everything below them, so that a paste works in another desktop and in another client.
//
// What is cut stays where it is until it is pasted; a cut lives only in the editor that made it,
// and whoever else learns of it takes it off the clipboard.
//
// Invariants; 1 is asserted in debug builds:
// 1. The own cut is empty or the bytes of a payload that was cut.
// 2. cutPending() is set by an own cut alone, and cleared by an own copy or by the next change of
//    the clipboard that brings a cut.
// 3. What comes from the clipboard is untrusted: lengths are checked, keys are looked up before
//    use, and each record goes out once however often the payload names it.
#ifndef ORVO_MENU_MENUCLIPBOARD_H
#define ORVO_MENU_MENUCLIPBOARD_H

#include "editor/RecordFields.h"
#include "frame/OrvoMdx.h"
#include "menu/MenuPayload.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QMap>
#include <QModelIndex>
#include <QString>
#include <QStringList>

class QClipboard;

namespace orvo {
class RowWriter;
class ScratchTable;
} // namespace orvo

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::menu {

class OpenMenu;

class MenuClipboard {
    Q_DECLARE_TR_FUNCTIONS(OrvoMenu)
public:
    /// All of these outlive it. Without a clipboard nothing happens.
    MenuClipboard(editor::EditorWindow& window, const OpenMenu& menu, QClipboard* const& clipboard);

    /// Whether the change that an own cut makes on the clipboard is still to be told. Of this
    /// object, as long as it lives.
    const bool& cutPending() const { return m_cutPending; }
    /// Whether the last own cut is still what a paste takes, though the clipboard is empty: another
    /// editor that learns of a cut takes it off, and here it is good until something else is
    /// offered.
    bool ownCutIsGood() const;

    /// Offers those rows with all that lies below them. Nothing if no record is among them.
    void put(MenuPayload::Mode mode, const QModelIndexList& rows);
    /// The clipboard has changed.
    void noteChange();
    /// Writes what is offered into the row of that key, or the folder it stands in, and deletes
    /// what was cut. Refuses a cut in words that goes into itself, or that others have changed.
    void paste(const QString& target);

    // What put() and paste() are made of. A caption that is not the null string marks a chosen
    // element, to be placed under `parent`; the null string one that comes with its folder and
    // keeps its relative place.

    struct Paste {
        QString desck;          ///< key of the desktop that it goes into
        const CMDArray& source; ///< key 0 KeyLink, key 1 parent;order_
        ScratchTable& out;
        const QMap<QString, QString>& newKeys; ///< as newKeysFor() gives them
    };
    void copyElement(const QString& key, ScratchTable& copies) const;
    void copyFolder(const QString& key, ScratchTable& copies) const;
    void pasteElement(const Paste& paste, const QString& parent, const QString& key,
                      const QString& caption) const;
    void pasteFolder(const Paste& paste, const QString& parent, const QString& key,
                     const QString& caption) const;
    /// Asks the server to delete the elements of these keys, with what the source has below them.
    void deleteCut(const CMDArray& source, const QStringList& keys) const;
    void deleteFolder(const QString& key, const CMDArray& source, ScratchTable& out) const;

private:
    /// The payload that a paste would take.
    QByteArray toPaste() const;
    /// Whether a row is, or lies below, what was cut; says so in a box.
    bool refusesCutInto(const QModelIndex& target, const MenuPayload& payload) const;
    /// Whether others have changed what was cut, or put something into it; says so in a box.
    bool refusesOldCut(const MenuPayload& payload) const;
    bool isChanged(const MDRData* cut, const MDRData* stored, bool isChosen) const;
    bool isStored(const CMDArray& records) const;
    /// The fields that are copied so on such rows.
    void copyFields(RowWriter& row, const MDRData* source, editor::Copied how,
                    editor::Rows kind) const;
    void pasteFolderRow(const Paste& paste, const QString& parent, const QString& key,
                        const QString& caption, const MDRData* record) const;
    void check() const;

    editor::EditorWindow& m_window;
    const OpenMenu& m_menu;
    QClipboard* const& m_clipboard;
    bool m_cutPending = false;
    QByteArray m_ownCut; ///< the last cut, as long as nothing else has been offered since
};

} // namespace orvo::menu

#endif
