// Json.h: a listing for programs: one JSON object a line.
#ifndef ORVO_ADMIN_JSON_H
#define ORVO_ADMIN_JSON_H

#include "apps/admin/Verb.h"

#include <QJsonObject>

#include <string>

namespace orvo::admin {

/// Adds --json.
void jsonOption(OptionList& options);
/// Prints the object on a line of its own.
void outJson(const QJsonObject& object);
/// A text of a record as JSON holds it.
inline QString jsonText(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

} // namespace orvo::admin

#endif
