// What the host contract has for keys and times.
#include "frame/OrvoClient.h"

#include <QUuid>

QByteArray GenGuid32() {
    // Random version: from the kernel's generator.
    return QUuid::createUuid().toByteArray(QUuid::Id128);
}

double DateTime_To_MdxTime(const QDateTime& time) {
    return time.isValid() ? static_cast<double>(time.toMSecsSinceEpoch()) / 1000.0 : 0.0;
}
