// FileTools.h: what the tools for stored files share: the largest content that a record carries,
// and how a file is named in messages.
#ifndef ORVO_PLATFORM_CLIENT_FILETOOLS_H
#define ORVO_PLATFORM_CLIENT_FILETOOLS_H

#include "frame/StdText.h"
#include "platform/client/SessionPrivate.h"
#include "platform/mdx/Body.h"
#include "platform/store/Names.h"

namespace orvo::client {

/// Refuses a content that no record carries. A store may hold it all the same: the administrator's
/// command brings it in and out.
inline store::Status checkCarried(const std::string& name, uint64_t size) {
    if (size <= mdx::maxText)
        return {};
    return {store::Refused,
            StdText::tr("Файл ") + store::shown(name) + StdText::tr(" не меньше ") +
                std::to_string((mdx::maxText + 1) >> 20) +
                StdText::tr(" МиБ: редакторы таких не переносят, это делает orvo-admin (put, "
                            "get).")};
}

/// Folder path and name as one text for messages.
inline QString storedPath(const QString& path, const QString& name) {
    return path.isEmpty() ? name : path + QLatin1Char('/') + name;
}

} // namespace orvo::client

#endif
