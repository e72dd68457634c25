// TableText.h: local tables as text, for support and tests.
#ifndef ORVO_FRAME_TABLETEXT_H
#define ORVO_FRAME_TABLETEXT_H

#include "frame/OrvoMdx.h"

#include <QString>
#include <QStringList>

namespace orvo {

/// The records of a table in the order of key 0: a line of the field names, then a line per record,
/// values split by tabs, NULL as \\N. Backslashes, tabs and line ends in a text are written as in a
/// C string; a value that is neither a flag, a number nor a text is \\?.
QString tableText(const CMDArray& table, const QStringList& fields);

} // namespace orvo

#endif
