// CatalogueRows.h: rows of tvRes from the records of the catalogue. Their order is not computed
// here: it comes from key 1 of the two tables, so that each level is one run of records.
//
// Most rows read their values from the record (models/RowValues.h); a form that is locked shows
// more than its record and has values of its own.
//
// Invariants; 1 is asserted in debug builds:
// 1. No row is made before there is a tree.
// 2. A row that reads from a record keeps what it shows, by keepFolders() and keepItems(), before
//    the record changes or goes.
// 3. A folder that is its own ancestor is shown and not entered again.
#ifndef ORVO_RESOURCES_CATALOGUEROWS_H
#define ORVO_RESOURCES_CATALOGUEROWS_H

#include "frame/OrvoMdx.h"
#include "models/models.h"

#include <QModelIndex>
#include <QString>
#include <QVariant>
#include <QVector>

#include <cstdint>
#include <memory>
#include <vector>

namespace orvo {
class Notification;
}

namespace orvo::editor {
class EditorWindow;
}

namespace orvo::resources {

class CatalogueRows {
public:
    /// All of these outlive it; `tree` may still be null. The tables have the keys of
    /// orvo::keylist; `login` is the user's own.
    CatalogueRows(const editor::EditorWindow& window, const CMDArray& resources,
                  const CMDArray& folders, const CMDArray& users, const QString& login,
                  const std::unique_ptr<ResTreeModel>& tree);

    // Filling, below the rows that `parent` has.

    /// A row without a record.
    QModelIndex addFixed(const QModelIndex& parent, const char* key, const QString& caption,
                         int type);
    /// The folders of that parent key with all below them. False if there are none.
    bool addFolders(int type, const QString& parentKey, const QModelIndex& parent);
    void addItems(int type, const QString& folderKey, const QModelIndex& parent);
    /// Forms without a folder: a table of their copies.
    void addOrphans(const CMDArray& orphans, const QModelIndex& parent);
    /// A row for one resource. False if it cannot stand there.
    bool insertItem(const MDRData* record, int number, const QModelIndex& parent);

    // Following the records

    /// Write a record into an existing row. What a record does not tell of a lock stays as it was.
    void fillFolder(const QModelIndex& parent, int row, const MDRData* record);
    void fillItem(const QModelIndex& parent, int row, const MDRData* record);
    /// To be called before the record of a notification changes or goes.
    void keepFolders(const Notification& change);
    void keepItems(const Notification& change);

    // Places

    /// The place of a folder among its sibling folders in table order; -1 if it is not among them.
    int32_t folderPosition(const QString& key, const QString& parentKey, int type) const;
    /// The place of a resource among its sibling resources, behind folderCount() rows.
    int32_t itemPosition(const QString& key, const QString& folderKey, int type) const;
    /// The row of a folder key; the empty key is the top of the file area.
    QModelIndex folderRow(const QString& key) const;
    /// How many folders stand before the resources of a row.
    int folderCount(const QString& key) const;

    /// A time of the server, in local time; a null string for NULL.
    QString timeText(const MDRData* record, MDRField field, const QString& format) const;

private:
    ResTreeModel& tree() const;
    /// Rows for the folders or the resources of a folder, below `parent` or at the top of the
    /// batch; addFolderRows gives the new rows.
    std::vector<TabRec*> addFolderRows(ResTreeModel::Batch& rows, TabRec* parent, int type,
                                       const QString& parentKey) const;
    void addItemRows(ResTreeModel::Batch& rows, TabRec* parent, int type,
                     const QString& folderKey) const;
    void addItemRow(ResTreeModel::Batch& rows, const MDRData* record, TabRec* parent) const;
    /// The columns of a resource's row; invalid where the row keeps what it has.
    QVector<QVariant> itemValues(const MDRData* record) const;
    void addLock(const MDRData* record, QVector<QVariant>& values) const;

    const editor::EditorWindow& m_window;
    const CMDArray& m_resources;
    const CMDArray& m_folders;
    const CMDArray& m_users;
    const QString& m_login;
    const std::unique_ptr<ResTreeModel>& m_tree;
};

} // namespace orvo::resources

#endif
