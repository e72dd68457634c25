#include "tests/menu/SeededKeys.h"

#include "frame/OrvoClient.h"

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <optional>
#include <random>

namespace {

std::optional<std::mt19937> source;

} // namespace

namespace orvo::test {

SeededKeys::SeededKeys(unsigned seed) {
    if (source)
        qFatal("two sources of keys");
    source.emplace(seed);
}

SeededKeys::~SeededKeys() {
    source.reset();
}

} // namespace orvo::test

// An executable's own definitions come before those of the libraries.

QByteArray GenGuid32() {
    QByteArray random(16, '\0');
    if (getrandom(random.data(), static_cast<size_t>(random.size()), 0) != random.size())
        qFatal("no random bytes");
    return random.toHex();
}

extern "C" ssize_t getrandom(void* buffer, size_t length, unsigned flags) {
    if (!source)
        return syscall(SYS_getrandom, buffer, length, flags);
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (size_t i = 0; i < length; ++i)
        bytes[i] = static_cast<unsigned char>((*source)());
    return static_cast<ssize_t>(length);
}
