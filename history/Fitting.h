// Fitting.h: which records can hold which others, as the editors show them and `orvo-admin check`
// wants them.
#ifndef ORVO_HISTORY_FITTING_H
#define ORVO_HISTORY_FITTING_H

#include "history/RecordSource.h"

namespace orvo::history {

/// The table of the records above those of this one, by that field; null for another field.
const store::TableDef* targetTable(const store::TableDef& table, int field);

enum class Misfit {
    None,
    NoFolder,  ///< an element that opens something; a desktop as a folder, or a folder as a desktop
    Elsewhere, ///< on another desktop; for resources of another kind
};

/// The field in which a record agrees with the one that holds it by the link `field`, which has it
/// as well: the desktop of an element, the kind of a resource; -1: none.
int bondField(const store::TableDef& table, int field);
/// Why a record of `table`, which has `bond` in that field, cannot be below `above`, of which all
/// fields are known, by that link.
Misfit misfitOf(const store::TableDef& table, int field, const store::Value& bond,
                const Values& above);
/// Whether a record of `table`, with that bond, can be without a record above it by the link.
bool canBeAtTop(const store::TableDef& table, int field, const store::Value& bond);
/// Whether the folder holds all resources of a kind: without it no editor loads their tree.
bool isTopFolder(const store::TableDef& table, const Values& values);
/// The field of a record of `above` that decides on this.
int decisiveField(const store::TableDef& above, Misfit misfit);

} // namespace orvo::history

#endif
