// ResourceNames.h: what the rows of the catalogue are called, and which names are taken. Folders
// are told apart without regard to case; so are resources, but for files, of which every letter
// counts.
//
// Invariants; 1 is asserted in debug builds:
// 1. No row is named before there is a tree.
// 2. A name counts as taken by the rows and by the records: what this window has saved a moment ago
//    is in its rows before it is in a table, and what others have put elsewhere is in a table only.
// 3. The top of the file area has two keys by which records name it, and all of this knows both.
#ifndef ORVO_RESOURCES_RESOURCENAMES_H
#define ORVO_RESOURCES_RESOURCENAMES_H

#include "frame/OrvoMdx.h"
#include "models/models.h"

#include <QCoreApplication>
#include <QModelIndex>
#include <QString>
#include <QStringList>

#include <memory>

namespace orvo::resources {

class ResourceEdit;

class ResourceNames {
    Q_DECLARE_TR_FUNCTIONS(OrvoResources)
public:
    /// All of these outlive it; `tree` may still be null. The tables have the keys of
    /// orvo::keylist.
    ResourceNames(const CMDArray& resources, const CMDArray& folders, const ResourceEdit& edit,
                  const std::unique_ptr<ResTreeModel>& tree);

    /// A row in words: what it is, its caption, and the resource if that is another word.
    QString describe(const QModelIndex& row) const;
    /// Why a resource may not be named so in that row; empty if it may. Names are unique among the
    /// resources of a kind, in whatever folder.
    QString resourceRefusal(const QString& name, const QModelIndex& row) const;
    /// The same of a folder. Captions are unique among the folders of a parent, the folder itself
    /// included.
    QString folderRefusal(const QString& caption, const QModelIndex& row) const;
    /// Whether a folder of the file area has another sub-folder or file of that name.
    bool hasNamesake(const QModelIndex& folder, bool isFolder, const QString& name,
                     const QString& exceptKey) const;
    /// Whether another record bears the name by which the tools would find that one.
    bool isAmbiguous(const QModelIndex& row) const;

private:
    /// Keys by which the records of a folder name it.
    static QStringList folderLinks(const QString& folderKey, int type);
    /// Whether a sub-folder with another key has that caption: among the rows below a folder, and
    /// among the records with one of these links.
    bool hasFolderRow(const QModelIndex& parent, const QString& caption,
                      const QString& exceptKey) const;
    bool hasFolderRecord(const QStringList& links, const QString& caption,
                         const QString& exceptKey) const;
    ResTreeModel& tree() const;

    const CMDArray& m_resources;
    const CMDArray& m_folders;
    const ResourceEdit& m_edit;
    const std::unique_ptr<ResTreeModel>& m_tree;
};

} // namespace orvo::resources

#endif
