// Siblings.h: the place of a record among its siblings, from the order of a key.
#ifndef ORVO_FRAME_SIBLINGS_H
#define ORVO_FRAME_SIBLINGS_H

#include "frame/Records.h"

#include <cstdint>

namespace orvo {

/// Adds the value of a record's field, NULL as NULL, to the values of a seek.
inline KeyValues& addField(KeyValues& values, const MDRData* record, const char* field) {
    const MDRVar value = valueOf(record, field);
    if (value.type == MDX_TEXT)
        return values.bytes(bytesOf(record, field));
    return value.null ? values.null() : values.integer(integerOf(record, field));
}

/// The place of the record of `keyLink` in a group of siblings, counted from 0 in the order of a
/// key: the group begins at the values `group` and goes on while `isSibling(record)`. For a key
/// that is not in the group that of its last record; -1 for an empty group.
///
/// `own`, the record of that key if there is one, and `exact`, its values in the key, spare
/// counting through the group: siblings may be many, and every notification asks.
template <class IsSibling>
int32_t siblingPosition(const CMDArray& table, int key, const KeyValues& group,
                        const QString& keyLink, const MDRData* own, const KeyValues& exact,
                        IsSibling isSibling) {
    const int32_t start = seekPosition(table, key, group);
    if (own && isSibling(own)) {
        // Records of equal values are told apart by walking over them.
        const int32_t first = seekPosition(table, key, exact);
        int32_t position = first;
        bool found = false;
        walkFrom(table, key, first, [&](const MDRData* record) {
            found = record == own;
            position += found ? 0 : 1;
            return !found && isSibling(record);
        });
        if (found && start >= 0 && position >= start)
            return position - start;
    }
    int32_t count = -1;
    walkFrom(table, key, start, [&](const MDRData* record) {
        if (!isSibling(record))
            return false;
        ++count;
        return !holdsText(record, field::KeyLink, keyLink);
    });
    return count;
}

} // namespace orvo

#endif
