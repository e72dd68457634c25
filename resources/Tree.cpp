// The tree of folders and resources, by resources/CatalogueRows.h. A row's path in the stores is
// read off it.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Kinds.h"
#include "frame/Records.h"
#include "resources/Columns.h"

#include <QTreeView>

using orvo::Kind;
using orvo::resources::ResColumn;

namespace {

QString captionOf(const QModelIndex& index) {
    return orvo::resources::textAt(index, ResColumn::Caption);
}

} // namespace

void OrvoResources::loadResTreeUpper() {
    const QModelIndex root =
        m_rows.addFixed(QModelIndex(), orvo::rowkey::resources, tr("Ресурсы меню"), Kind::None);
    const QModelIndex files =
        m_rows.addFixed(QModelIndex(), orvo::rowkey::files, tr("Файловые ресурсы"), Kind::File);
    // The folders of these kinds come from the server. A catalogue without one of them is not
    // whole, and what would follow stays away.
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.topFolder && !m_rows.addFolders(kind.number, QString(), root))
            return;
    if (orvo::recordCount(m_tabOrphans) != 0)
        m_rows.addOrphans(m_tabOrphans,
                          m_rows.addFixed(root, orvo::rowkey::orphans, tr("Непривязанные объекты"),
                                          Kind::Orphans));
    loadSysRootFolders(files);
    loadSysRootItems(files);
    m_ui->tvRes->expand(root);
    m_ui->tvRes->expand(files);
}

void OrvoResources::loadFolders(int type, QModelIndex parent) {
    m_rows.addFolders(type, m_resModel->getItemKeyLink(parent), parent);
}

void OrvoResources::loadItems(int type, QModelIndex parent) {
    m_rows.addItems(type, m_resModel->getItemKeyLink(parent), parent);
}

void OrvoResources::loadSysRootFolders(const QModelIndex& parent) {
    m_rows.addFolders(Kind::File, QString(), parent);
}

void OrvoResources::loadSysRootItems(const QModelIndex& parent) {
    m_rows.addItems(Kind::File, QString(), parent);
}

void OrvoResources::loadResFolderRow(const QModelIndex& parent, int row, MDRData* rec) {
    m_rows.fillFolder(parent, row, rec);
}

void OrvoResources::loadResItemRow(const QModelIndex& parent, int row, MDRData* rec) {
    m_rows.fillItem(parent, row, rec);
}

int32_t OrvoResources::getResFolderPosition(const QString& key, const QString& parentKey,
                                            int type) const {
    return m_rows.folderPosition(key, parentKey, type);
}

int32_t OrvoResources::getResItemPosition(const QString& key, const QString& folderKey,
                                          int type) const {
    return m_rows.itemPosition(key, folderKey, type);
}

int OrvoResources::getFolderCount(const QString& key) const {
    return m_rows.folderCount(key);
}

QString OrvoResources::getFormPath(const QModelIndex& index) const {
    if (m_resModel->getItemLevel(index) == 1)
        return {};
    QString path = captionOf(index);
    for (QModelIndex at = index; m_resModel->getItemLevel(at) >= 3;) {
        at = at.parent();
        path.prepend(captionOf(at) + QLatin1Char('/'));
    }
    return path;
}

QString OrvoResources::getFilePath(const QModelIndex& index) const {
    QString path;
    const auto join = [](const QString& above, const QString& below) {
        return below.isEmpty() ? above : above + QLatin1Char('/') + below;
    };
    for (QModelIndex at = index; m_resModel->getItemLevel(at) > 1;) {
        at = at.parent();
        path = join(captionOf(at), path);
    }
    if (orvo::resources::isFolder(index) && m_resModel->getItemLevel(index) > 0)
        path = path.isEmpty() ? captionOf(index) : path + QLatin1Char('/') + captionOf(index);
    return path;
}
