// DeletionChecks.h: what is looked up before a deletion: whether a folder is empty, and whether
// menus start a resource. The server is asked, which knows what others have put there.
//
// Invariants:
// 1. Nothing is deleted here, and nothing is kept: each answer is that of the moment.
// 2. A server that does not answer has nothing: its own refusal is the last word.
#ifndef ORVO_RESOURCES_DELETIONCHECKS_H
#define ORVO_RESOURCES_DELETIONCHECKS_H

#include "frame/OrvoMdx.h"

#include <QCoreApplication>
#include <QModelIndex>
#include <QString>

#include <functional>

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::resources {

class ResourceNames;

class DeletionChecks {
    Q_DECLARE_TR_FUNCTIONS(OrvoResources)
public:
    /// All of these outlive it. The tables have the keys of orvo::keylist.
    DeletionChecks(editor::EditorWindow& window, const ResourceNames& names,
                   const CMDArray& resources, const CMDArray& folders);

    /// Whether a folder is empty by the rows, by the tables and by the server.
    bool isEmptyFolder(const QModelIndex& folder) const;
    /// Whether elements of any menu start that resource. The log names them.
    bool isInMenus(const QModelIndex& row) const;

private:
    bool hasRecords(const char* table, int keyNumber, const QString& key) const;
    /// What the server has of a table by one of its keys.
    void lookUp(const char* table, int keyNumber, const QString& key,
                const std::function<void(const CMDArray& found)>& use) const;

    editor::EditorWindow& m_window;
    const ResourceNames& m_names;
    const CMDArray& m_resources;
    const CMDArray& m_folders;
};

} // namespace orvo::resources

#endif
