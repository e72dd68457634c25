#include "models/IconCache.h"

#include <QFileInfo>

QIcon IconCache::icon(const QString& path) {
    // Icon names come from records: a tree full of names without files must not fill the memory.
    constexpr int limit = 4096;
    const bool onDisk = !path.startsWith(QLatin1Char(':'));
    const auto known = m_entries.constFind(path);
    if (!onDisk && known != m_entries.constEnd())
        return known->icon;
    Entry entry;
    if (onDisk) {
        const QFileInfo file(path);
        entry.changed = file.lastModified();
        entry.size = file.isFile() ? file.size() : -1;
        if (known != m_entries.constEnd() && known->changed == entry.changed &&
            known->size == entry.size)
            return known->icon;
    }
    entry.icon = QIcon(path);
    if (m_entries.size() >= limit)
        m_entries.clear();
    m_entries.insert(path, entry);
    return entry.icon;
}
