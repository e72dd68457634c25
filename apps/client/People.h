// People.h: how the users of a store are called.
#ifndef ORVO_APPS_CLIENT_PEOPLE_H
#define ORVO_APPS_CLIENT_PEOPLE_H

#include "history/Inverse.h"
#include "platform/store/Maintenance.h"

namespace orvo::app {

/// Adds all users that the store knows: family name and initials, else the login.
store::Status readPeople(store::Store& store, history::PersonNames* names);

} // namespace orvo::app

#endif
