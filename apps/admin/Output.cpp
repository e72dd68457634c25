#include "apps/admin/Output.h"

#include "platform/store/Names.h"
#include "platform/store/StoreUrl.h"

#include <cstdio>

namespace orvo::admin {

std::string cell(std::string_view text) {
    return store::withoutControls(text, ' ');
}

std::string placeInBrackets(std::string_view place) {
    return place.empty() ? std::string() : "  (" + cell(place) + ")";
}

void out(std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
}

void complain(std::string_view text) {
    // Whatever word of the command line the message repeats may be an address in a wrong place.
    const std::string line = "orvo-admin: " + store::withoutCredentials(cell(text)) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

bool outputTaken() {
    return std::ferror(stdout) == 0;
}

bool finishOutput() {
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

} // namespace orvo::admin
