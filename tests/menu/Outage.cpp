#include "tests/menu/Outage.h"

#include "frame/OrvoClient.h"

#include <cstring>
#include <dlfcn.h>

namespace {

int outages = 0;

} // namespace

// The test's own definition comes before that of the host library, and passes on to it.
int COrvoCliSes::PacketExec(const char* name, const void* data, int length, MDXCliParam** prm) {
    using Exec = int (*)(COrvoCliSes*, const char*, const void*, int, MDXCliParam**);
    static const auto exec = reinterpret_cast<Exec>(
        dlsym(RTLD_NEXT, "_ZN11COrvoCliSes10PacketExecEPKcPKviPP11MDXCliParam"));
    if (outages > 0 && std::strcmp(name, "TableStructure") == 0)
        return 0;
    return exec(this, name, data, length, prm);
}

namespace orvo::test {

StructureOutage::StructureOutage() {
    ++outages;
}
StructureOutage::~StructureOutage() {
    --outages;
}

} // namespace orvo::test
