// Raw records, as a server brings them. The head is read before the check too: MDRRecSet must not
// trust it.
#include "Exercise.h"

#include "platform/mdx/MdxBuild.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (MDRRecCheck(data, static_cast<uint32_t>(size)) != MDX_OK)
        return 0;
    MDRData record;
    MDRType type;
    MDRRecInit(&record);
    MDRTypInit(&type);
    fuzz::require(MDRRecSet(&record, data) == MDX_OK, "a checked record");
    fuzz::require(MDRTypGen(&type, "NCI", &record) == MDX_OK, "its description");
    fuzz::readAll(&type, &record);
    MDRTypFree(&type);
    return 0;
}
