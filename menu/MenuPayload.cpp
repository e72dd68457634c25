#include "menu/MenuPayload.h"

#include "frame/ClipboardRows.h"
#include "frame/Records.h"
#include "frame/Vocabulary.h"

#include <memory>

namespace orvo::menu {
namespace {

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
    return ClipboardRows{
        mode, keys,
        QByteArray::fromRawData(static_cast<const char*>(image), static_cast<int>(length))}
        .bytes();
}

int MenuPayload::mode(const QByteArray& bytes) {
    return ClipboardRows::numberOf(bytes).value_or(Copy);
}

bool MenuPayload::read(const QByteArray& bytes) {
    const std::optional<ClipboardRows> rows = ClipboardRows::read(bytes);
    if (!rows)
        return false;
    cut = rows->number == Cut;
    keys = rows->keys;
    const QByteArray& image = rows->rest;
    if (MDAUnpackN(table.array, image.constData(), static_cast<uint32_t>(image.size())) != MDX_OK)
        return false;
    // An image of ours has just these keys; another may have any, or records that share one
    // identifier, below which a walk could branch without end.
    while (table.array->keyCount > 0 && MDAKeyDel(table.array, 0) == MDX_OK) {
    }
    table.KeyAdd(orvo::field::KeyLink, MDX_KEY_UNIQUE);
    if (table.status != MDX_OK)
        return false;
    table.KeyAdd(*keylist::Menu.begin(), MDX_KEY_MULTI);
    return table.status == MDX_OK && recordCount(table) > 0;
}

} // namespace orvo::menu
