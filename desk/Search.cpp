#include "desk/Search.h"

#include "desk/Columns.h"

#include <algorithm>

namespace orvo::desk {

QString searchText(const QString& text) {
    return text.simplified().toCaseFolded().replace(QChar(0x451), QChar(0x435));
}

void Search::collect() {
    m_entries.clear();
    struct Folder {
        QModelIndex index;
        QString path;
        int next;
    };
    std::vector<Folder> open{{QModelIndex(), QString(), 0}};
    while (!open.empty()) {
        Folder& folder = open.back();
        if (folder.next >= m_model.rowCount(folder.index)) {
            open.pop_back();
            continue;
        }
        const QModelIndex row = m_model.index(folder.next++, 0, folder.index);
        const QString caption = row.data().toString();
        if (DeskModel::isFolder(row)) {
            const QString path =
                folder.path.isEmpty() ? caption : folder.path + QLatin1String(" / ") + caption;
            open.push_back({row, path, 0}); // `folder` is void from here on
            continue;
        }
        const QString name = DeskModel::value(row, DeskColumn::Name).toString();
        m_entries.push_back(
            {{row.data(KeyRole).toString(), caption, folder.path},
             searchText(caption),
             searchText(caption + QLatin1Char(' ') + name + QLatin1Char(' ') + folder.path)});
    }
    m_valid = true;
}

std::vector<Hit> Search::find(const QString& text, size_t limit) {
    const QString wanted = searchText(text);
    if (wanted.isEmpty())
        return {};
    if (!m_valid)
        collect();
    const QStringList words = wanted.split(QLatin1Char(' '));
    std::vector<Hit> first, others;
    for (const Entry& entry : m_entries) {
        if (!std::all_of(words.begin(), words.end(),
                         [&](const QString& word) { return entry.all.contains(word); }))
            continue;
        std::vector<Hit>& group = entry.caption.startsWith(wanted) ? first : others;
        if (group.size() < limit)
            group.push_back(entry.hit);
    }
    const size_t room = limit - first.size();
    first.insert(first.end(), others.begin(),
                 others.begin() + static_cast<ptrdiff_t>(std::min(room, others.size())));
    return first;
}

} // namespace orvo::desk
