// People.h: how the users of a store are called where their actions are told of.
#ifndef ORVO_HISTORY_PEOPLE_H
#define ORVO_HISTORY_PEOPLE_H

#include "platform/store/Maintenance.h"

#include <QString>

#include <string>
#include <unordered_map>

namespace orvo::history {

/// How people are called, by login; whoever is not in it is called by the login.
using PersonNames = std::unordered_map<std::string, QString>;

/// Adds all users that the store knows: family name and initials, else the login.
store::Status readPeople(store::Store& store, PersonNames* names);

/// "Иванов И."; an empty login: "(вручную)".
QString personName(const std::string& login, const PersonNames& names);
/// "Иванов И., 23.11.2026 10:15"; an empty login: by hand, no time: left out.
QString whoAndWhen(const std::string& login, double time, const PersonNames& names);

} // namespace orvo::history

#endif
