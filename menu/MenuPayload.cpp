#include "menu/MenuPayload.h"

#include "frame/Records.h"

#include <memory>

namespace orvo::menu {
namespace {

constexpr char lineFeed = '\n';

struct ImageFree {
    void operator()(void* image) const { MDMemFree(image); }
};

} // namespace

QByteArray MenuPayload::write(int mode, const QStringList& keys, const CMDArray& table) {
    void* image = nullptr;
    const uint32_t length = MDAPack(table.array, &image);
    const std::unique_ptr<void, ImageFree> guard(image);
    if (!image || length == 0)
        return {};
    QByteArray bytes = QByteArray::number(mode) + lineFeed;
    for (const QString& key : keys)
        bytes += key.toUtf8() + ';';
    bytes += lineFeed;
    bytes.append(static_cast<const char*>(image), static_cast<int>(length));
    return bytes;
}

int MenuPayload::mode(const QByteArray& bytes) {
    const int end = bytes.indexOf(lineFeed);
    return (end < 0 ? bytes : bytes.left(end)).toInt();
}

bool MenuPayload::read(const QByteArray& bytes) {
    const int modeEnd = bytes.indexOf(lineFeed);
    const int keysEnd = modeEnd < 0 ? -1 : bytes.indexOf(lineFeed, modeEnd + 1);
    if (keysEnd < 0)
        return false;
    cut = mode(bytes) == Cut;
    keys = QString::fromUtf8(bytes.mid(modeEnd + 1, keysEnd - modeEnd - 1))
               .split(QLatin1Char(';'), Qt::SkipEmptyParts);
    const QByteArray image = bytes.mid(keysEnd + 1);
    if (MDAUnpackN(table.array, image.constData(), static_cast<uint32_t>(image.size())) != MDX_OK)
        return false;
    // An image of ours has just these keys; another may have any, or records that share one
    // identifier, below which a walk could branch without end.
    while (table.array->keyCount > 0 && MDAKeyDel(table.array, 0) == MDX_OK) {
    }
    table.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
    if (table.status != MDX_OK)
        return false;
    table.KeyAdd("parent;order_", MDX_KEY_MULTI);
    return table.status == MDX_OK && recordCount(table) > 0;
}

} // namespace orvo::menu
