#include "apps/client/FileKind.h"

#include "apps/formview/Channel.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <string_view>

namespace orvo::app {

namespace {

constexpr size_t lookedAt = 1 << 16;

/// Control characters beyond those of lines, pages and terminals make no text.
bool looksLikeText(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](char letter) {
        const auto code = static_cast<unsigned char>(letter);
        return code < 32 && (code < '\t' || code > '\r') && code != 27;
    });
}

} // namespace

bool canBeShown(const store::StoredFile& file) {
    if (file.bytes.size() > size_t{formview::largestFile})
        return false;
    const QString suffix = QFileInfo(QString::fromStdString(file.name)).suffix().toLower();
    if (QImageReader::supportedImageFormats().contains(suffix.toLatin1()))
        return true;
    const std::string_view bytes = std::string_view(file.bytes).substr(0, lookedAt);
    return bytes.substr(0, 1024).find("%PDF-") != std::string_view::npos || looksLikeText(bytes);
}

} // namespace orvo::app
