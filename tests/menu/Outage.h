// Outage.h: a server that stops giving table structures, as when the connection is lost between
// two calls. Linked into the tests that need it.
#ifndef ORVO_TESTS_MENU_OUTAGE_H
#define ORVO_TESTS_MENU_OUTAGE_H

namespace orvo::test {

/// While one lives, no session answers a request for a structure.
class StructureOutage {
public:
    StructureOutage();
    ~StructureOutage();
    StructureOutage(const StructureOutage&) = delete;
    StructureOutage& operator=(const StructureOutage&) = delete;
};

} // namespace orvo::test

#endif
