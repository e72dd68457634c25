// Packed images, as the clipboard brings them from anywhere.
#include "Exercise.h"

#include "platform/mdx/MdxBuild.h"

#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::ArrayPtr array = fuzz::emptyArray();
    if (MDAUnpackN(array.get(), data, static_cast<uint32_t>(size)) != MDX_OK) {
        fuzz::require(array->fieldCount == 0 && array->keyCount == 0 && array->recordCount == 0 &&
                          orvo::mdx::postedCount(array.get()) == 0,
                      "an empty array after a failure");
        return 0;
    }
    // There is one image of each content.
    void* image = nullptr;
    const uint32_t length = MDAPack(array.get(), &image);
    fuzz::require(length > 0 && length <= size && std::memcmp(image, data, length) == 0,
                  "the same image");
    MDMemFree(image);
    fuzz::exercise(array.get());
    return 0;
}
