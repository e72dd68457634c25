// MyFileInfo.h: an entry of the file list that a tree record may carry.
#ifndef ORVO_MODELS_MYFILEINFO_H
#define ORVO_MODELS_MYFILEINFO_H

#include <QString>

#include <cstdint>

/// A plain value. Its meaning is its user's; the records only keep it.
struct MyFileInfo {
    QString firstText;
    QString secondText;
    int32_t number = 0;
};

#endif
