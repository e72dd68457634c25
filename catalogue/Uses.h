// Uses.h: where something is used: which elements of which desktops open a resource or bear an
// icon, and which forms a person holds locked.
//
// In the thread of the catalogue.
#ifndef ORVO_CATALOGUE_USES_H
#define ORVO_CATALOGUE_USES_H

#include "catalogue/Search.h"

#include <vector>

namespace orvo::catalogue {

/// What is asked about. Of an element of a menu the resource that it opens is meant, of one without
/// a resource its icon; of a person what he has locked.
struct Subject {
    QString table, key;
    QString login = {}; ///< of a person of whom the key is not known
    QString icon = {};  ///< instead of all these: the file name of an icon
    bool operator==(const Subject&) const = default;
};

struct Uses {
    Subject meant;       ///< what the last one stands for: an element for its resource
    bool exists = false; ///< one of the records asked about is there
    QString what; ///< that one in words, "форма «Насосы»"; empty if it is not there
    QVector<Found> places; ///< ordered by where they are
    int count = 0;         ///< of all places
    int desktops = 0;      ///< on so many desktops
    int forms = 0;         ///< resources among the places: locked, or bearing the icon
    bool isPerson = false; ///< the places are what he has locked
    bool operator==(const Uses&) const = default;
};

/// Tells at most `most` places, and counts all. Of a record that is gone: who still names its key.
Uses usesOf(const Catalogue& catalogue, const std::vector<Subject>& subjects, int most);
/// "5 элементов меню на 2 рабочих столах", "нигде не используется"; of a person "заблокирован 1
/// ресурс".
QString usesWords(const Uses& uses);
/// The same where there is little room, without the desktops: "5 элементов", "не используется".
QString usesBrief(const Uses& uses);
/// "элемент меню «Насосы» (КС-1 / Схемы)".
QString placeWords(const Found& place);

/// Whether the files in that folder of resources are the icons.
bool isIconFolder(const Record& folder);

} // namespace orvo::catalogue

#endif
