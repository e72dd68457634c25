// SeededKeys.h: new keys from a seed, so that a random run can be repeated exactly. A test that
// links SeededKeys.cpp puts it in the place of the kernel's random numbers: those of the editors'
// GenGuid32 and those of the store's own keys.
#ifndef ORVO_TESTS_MENU_SEEDEDKEYS_H
#define ORVO_TESTS_MENU_SEEDEDKEYS_H

namespace orvo::test {

/// While one lives, every new key of this process comes from the seed. At most one at a time.
class SeededKeys {
public:
    explicit SeededKeys(unsigned seed);
    ~SeededKeys();
    SeededKeys(const SeededKeys&) = delete;
    SeededKeys& operator=(const SeededKeys&) = delete;
};

} // namespace orvo::test

#endif
