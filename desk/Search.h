// Search.h: finds elements of a menu by words, in whatever order they are typed.
#ifndef ORVO_DESK_SEARCH_H
#define ORVO_DESK_SEARCH_H

#include "desk/DeskModel.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace orvo::desk {

struct Hit {
    QString key;
    QString caption;
    QString path; ///< captions of the folders above, " / " between them; empty at the top
};

/// A text as it is compared: without regard to case, ё as е, blanks as one.
QString searchText(const QString& text);

class Search {
public:
    explicit Search(const DeskModel& model) : m_model(model) {}

    /// The elements, folders left out, whose caption, name or folders contain every word of `text`;
    /// those whose caption begins with it come first, then by their order in the menu. None for an
    /// empty text.
    std::vector<Hit> find(const QString& text, size_t limit);
    /// The rows have changed.
    void invalidate() { m_valid = false; }

private:
    struct Entry {
        Hit hit;
        QString caption; ///< as compared
        QString all;
    };
    void collect();

    const DeskModel& m_model;
    std::vector<Entry> m_entries;
    bool m_valid = false;
};

} // namespace orvo::desk

#endif
