// PopTreeModel.h: the tree of the object picker.
#ifndef ORVO_MODELS_POPTREEMODEL_H
#define ORVO_MODELS_POPTREEMODEL_H

#include "frame/IconCache.h"
#include "models/TabRec.h"
#include "models/TreeModelCore.h"

#include <cstdint>

namespace orvo {
/// The columns of the picker's tree.
struct PickColumn {
    enum : int { Name, Caption, UserBlock, DateBlock, KeyLink, IsFolder, Blocked };
};
} // namespace orvo

class PopTreeModel : public orvo::TreeModelCore<TabRec> {
    Q_OBJECT
public:
    /// `filesPath` ends with the separator. `parent`: Unused; the published interface has this
    /// parameter.
    PopTreeModel(const QStringList& headers, const QString& filesPath, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// The kind being listed: 1 module, 2 function, 3 form, 4 file. 0 at the start.
    void setObjectType(int32_t type) { m_objectType = type; }
    int32_t objectType() const { return m_objectType; }
    /// Whether files show their own image, from the initial folder. False at the start.
    void setShowFileIcons(bool show) { m_showFileIcons = show; }
    bool showFileIcons() const { return m_showFileIcons; }
    /// The folder below the files path whose files are listed.
    void setInitialFolder(const QString& folder);
    QString initialFolderPath() const { return m_initialFolderPath; }

    /// False for an invalid index.
    bool itemIsFolder(const QModelIndex& index) const;
    /// A null string for an invalid index.
    QString getItemKeyLink(const QModelIndex& index) const { return itemKey(index); }

public slots:
    void setItemExpanded(const QModelIndex& index) { setItemExpandedFlag(index, true); }
    void setItemCollapsed(const QModelIndex& index) { setItemExpandedFlag(index, false); }

private:
    QVariant decoration(const TabRec& row) const;

    int32_t m_objectType = 0;
    bool m_showFileIcons = false;
    const QString m_filesPath;
    QString m_initialFolderPath;
    mutable orvo::IconCache m_icons;
};

#endif
