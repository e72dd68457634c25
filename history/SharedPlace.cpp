#include "history/SharedPlace.h"

#include "frame/Text.h"
#include "platform/store/Merge.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace orvo::history {

namespace {

using Key = std::pair<const store::TableDef*, std::string>; ///< folded; no table: the top

Key keyOf(const Above& above) {
    return {above.table, store::foldedKey(above.key)};
}

/// What has been moved back stands where it was moved from.
Values standing(const LoggedChange& read, RecordSource& source) {
    Values values = known(read, source);
    if (read.isTakenBack && read.deed == Deed::Moved)
        for (const auto& [field, value] : read.before)
            values[field] = value;
    return values;
}

struct Places {
    std::vector<Above> shared; ///< from the top
    size_t count = 0;          ///< of different ones
};

Places placesOf(const std::vector<const LoggedChange*>& reads, RecordSource& source) {
    std::vector<std::pair<const LoggedChange*, Values>> placed;
    std::map<const store::TableDef*, std::vector<std::string>> direct;
    for (const LoggedChange* read : reads) {
        if (!read->table || linksAbove(*read->table).empty())
            continue;
        placed.emplace_back(read, standing(*read, source));
        if (const Above above = directlyAbove(*read->table, placed.back().second); above.table)
            direct[above.table].push_back(above.key);
    }
    for (const auto& [table, keys] : direct)
        source.prepare(*table, keys);
    std::map<Key, std::vector<Above>> paths; // by what is right above
    std::set<Key> places;
    Places found;
    for (const auto& [read, values] : placed) {
        const auto [path, isNew] = paths.try_emplace(keyOf(directlyAbove(*read->table, values)));
        if (!isNew)
            continue;
        path->second = allAbove(*read->table, values, &source);
        const std::vector<Above>& above = path->second;
        if (places.empty())
            found.shared = above;
        places.insert(above.empty() ? Key() : keyOf(above.back()));
        const auto end = std::mismatch(
            found.shared.begin(), found.shared.end(), above.begin(), above.end(),
            [](const Above& one, const Above& other) { return keyOf(one) == keyOf(other); });
        found.shared.erase(end.first, found.shared.end());
    }
    found.count = places.size();
    return found;
}

} // namespace

QString sharedPlace(const std::vector<const LoggedChange*>& reads, RecordSource& source) {
    const Places places = placesOf(reads, source);
    return places.count < 2 || !places.shared.empty()
               ? joined(places.shared)
               : Text::tr("в %1 %2")
                     .arg(places.count)
                     .arg(numeralForm(places.count, Text::tr("месте"), Text::tr("местах"),
                                      Text::tr("местах")));
}

QString sharedPlaceOfSome(const std::vector<const LoggedChange*>& reads, RecordSource& source) {
    const Places places = placesOf(reads, source);
    return places.count < 2 ? joined(places.shared) : Text::tr("в разных местах");
}

} // namespace orvo::history
