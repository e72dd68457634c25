#pragma once

#include <QByteArray>
#include <QSaveFile>

namespace orvo::client {

/// Opens a file that saveWhole() is to fill. A buffer would lose the reason for which a disk did
/// not take what was in it.
inline bool openWhole(QSaveFile& file) {
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

/// Puts all of these bytes into the opened file's place, or leaves what is there as it is and gives
/// false with the reason in errorString(). A commit alone does not see a disk that became full on
/// the way: it would put the half in place.
inline bool saveWhole(QSaveFile& file, const QByteArray& bytes) {
    qint64 done = 0;
    while (done < bytes.size()) {
        // A full disk takes a part first, and tells the reason only when asked for the rest.
        const qint64 written = file.write(bytes.constData() + done, bytes.size() - done);
        if (written <= 0)
            return false;
        done += written;
    }
    return file.commit();
}

} // namespace orvo::client
