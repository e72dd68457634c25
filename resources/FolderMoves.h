// FolderMoves.h: rows go to another folder: cut and paste, and drops. Only the folder link of the
// records goes out; the rows move when the notifications come, and a cut changes nothing at all
// until the paste.
//
// Invariants; 1 is asserted in debug builds:
// 1. What the last cut named is known as long as its bytes are: both or neither.
// 2. A paste that is refused leaves the cut on the clipboard; any other takes it off.
// 3. Each row goes out once, however often a payload names it; a key without a row does nothing.
// 4. The row that was sent last gets the focus when its own change has come, not before.
#ifndef ORVO_RESOURCES_FOLDERMOVES_H
#define ORVO_RESOURCES_FOLDERMOVES_H

#include "frame/OrvoMdx.h"
#include "models/models.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QModelIndex>
#include <QString>
#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

class QClipboard;

namespace orvo {
class RowWriter;
class ScratchTable;
} // namespace orvo

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::resources {

class ResourceEdit;
class ResourceNames;

class FolderMoves {
    Q_DECLARE_TR_FUNCTIONS(OrvoResources)
public:
    /// What outlives it; `tree` may still be null. The tables have the keys of orvo::keylist.
    struct Parts {
        editor::EditorWindow& window;
        const ResourceNames& names;
        const ResourceEdit& edit;
        const CMDArray& resources;
        const CMDArray& folders;
        const std::unique_ptr<ResTreeModel>& tree;
        QClipboard* const& clipboard;
        QString& focusKey; ///< of the row to make current
        bool& focusCame;   ///< whether its change has come since
    };
    explicit FolderMoves(const Parts& parts) : m_parts(parts) {}

    /// Whether it is a folder that the records of a kind hang on, at the top of the menu area.
    bool isTopFolder(const QModelIndex& row) const;
    /// Whether the clipboard holds rows of that kind, cut by a resource editor.
    bool isOffered(int kind) const;

    /// Offers the rows, which are of one kind, on the clipboard. Nothing without a record; refuses
    /// a top folder in a box.
    void cut(const QModelIndexList& rows);
    /// Moves what was cut into a folder. Says in a box why it does not, and what was deleted since.
    void paste(const QModelIndex& target);
    /// Moves the rows of these keys, which were dropped on a row. Says in a box why it does not.
    void drop(const QModelIndex& target, const QStringList& keys);

    /// Copies of the records of a resource, and of a folder with all below it.
    void copyItem(const QString& key, ScratchTable& resources) const;
    void copyFolder(const QString& key, ScratchTable& resources, ScratchTable& folders) const;

private:
    /// How the link to a folder is written, which tells by what the empty key goes out.
    using LinkWriter = RowWriter& (RowWriter::*)(const char* field, const QString& key);
    void sendToFolder(const QStringList& keys, const QString& folder, LinkWriter writeLink);
    /// Why a row may not go into a folder; empty if it may. Of several rows: the first reason.
    QString refusal(const QModelIndex& row, const QModelIndex& target) const;
    QString refusal(const QStringList& keys, const QModelIndex& target) const;
    /// What was cut here and has been deleted since, in words.
    QStringList goneSinceCut() const;

    const Parts m_parts;
    QByteArray m_cutBytes; ///< what was cut here last, as it went to the clipboard
    std::vector<std::pair<QString, QString>> m_cutNames; ///< its keys, and what they name
};

} // namespace orvo::resources

#endif
