// Exercise.h: what the fuzz targets do with an array that came out of hostile bytes.
#ifndef ORVO_FUZZ_EXERCISE_H
#define ORVO_FUZZ_EXERCISE_H

#include "frame/OrvoMdx.h"

#include <memory>

namespace fuzz {

struct Destroy {
    void operator()(MDArray* array) const { MDADestroy(array); }
};
using ArrayPtr = std::unique_ptr<MDArray, Destroy>;

ArrayPtr emptyArray();
/// Stops the program if something that must hold does not.
void require(bool condition, const char* what);
/// Reads all fields of a record by these handles.
void readAll(const MDRType* type, const MDRData* record);
/// Reads everything, seeks, changes and deletes; checks that keys and records agree throughout.
void exercise(MDArray* array);

} // namespace fuzz

#endif
