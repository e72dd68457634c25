// Values.h: whether the values that rows show are none, or the same.
#ifndef ORVO_FRAME_VALUES_H
#define ORVO_FRAME_VALUES_H

#include <QVariant>

namespace orvo {

/// Neither a value nor a text. A variant with a null text calls itself null in Qt 5 only.
inline bool isNull(const QVariant& value) {
    return value.isNull() || (value.userType() == QMetaType::QString && value.toString().isNull());
}

/// Not only equal: a number and its text, or no text and an empty one, are two values.
inline bool isSame(const QVariant& a, const QVariant& b) {
    return a.userType() == b.userType() && isNull(a) == isNull(b) && a == b;
}

} // namespace orvo

#endif
