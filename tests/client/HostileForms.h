// HostileForms.h: stored files made to hold up or end whoever shows them.
#ifndef ORVO_TESTS_CLIENT_HOSTILEFORMS_H
#define ORVO_TESTS_CLIENT_HOSTILEFORMS_H

#include "platform/store/Store.h"

#include <QByteArray>

#include <functional>
#include <vector>

namespace orvo::test {

struct HostileForm {
    QByteArray name;                                      ///< what is wrong with it
    std::function<std::vector<store::StoredFile>()> make; ///< the first one is looked at
    bool isUsual = false;                                 ///< one of a kind: part of every run
};

/// More than a hundred, in the order of their kinds.
std::vector<HostileForm> hostileForms();

} // namespace orvo::test

#endif
