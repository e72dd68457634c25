// ChangeLines.h: changes in words, as lines of the output.
#ifndef ORVO_ADMIN_CHANGELINES_H
#define ORVO_ADMIN_CHANGELINES_H

#include "history/GroupWords.h"

#include <QString>

#include <string>
#include <vector>

namespace orvo::admin {

/// The text as one line.
std::string line(const QString& text);
/// "Название: «А» -> «Б»" for each; of a record made or deleted the one value that it has.
void printFields(const std::vector<history::FieldWords>& fields, const std::string& indent);
/// What is done to a record, `more` about it, and where it stands; below, of one that is only
/// changed, its fields.
void printChange(const store::Change& change, history::RecordSource& source,
                 const std::string& indent = {}, const QString& more = {});

} // namespace orvo::admin

#endif
