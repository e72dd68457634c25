// Menu elements on the clipboard, as any program may put them there: taken apart, walked as a paste
// walks them, and put together again.
#include "Exercise.h"

#include "frame/Records.h"
#include "menu/ElementWalk.h"
#include "menu/MenuPayload.h"

#include <QByteArray>

using orvo::menu::Element;
using orvo::menu::MenuPayload;

// The host library's, which is not linked here.
QByteArray GenGuid32() {
    static int made = 0;
    return "new" + QByteArray::number(++made);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int mode = MenuPayload::mode(bytes);
    MenuPayload payload;
    if (!payload.read(bytes))
        return 0;
    const int records = orvo::recordCount(payload.table);
    fuzz::require(records > 0 && payload.table.array->keyCount == 2, "records with two keys");
    fuzz::require(payload.cut == (mode == MenuPayload::Cut), "the mode");

    const QMap<QString, QString> keys = orvo::menu::newKeysFor(payload.table);
    fuzz::require(keys.size() <= records, "a new key for each record");
    constexpr int chosen = 16;
    for (const QString& key : payload.keys.mid(0, chosen)) {
        fuzz::require(!key.isEmpty(), "a key");
        if (orvo::seekKey(payload.table, key))
            fuzz::require(!orvo::menu::newKeyOf(keys, key).isNull(), "the new key of a record");
        int met = 0;
        orvo::menu::walkElements(payload.table, key, [&](const Element&) {
            fuzz::require(++met <= records + 1, "each record once");
            return true;
        });
    }

    const QByteArray again = MenuPayload::write(mode, payload.keys, payload.table);
    MenuPayload read;
    fuzz::require(read.read(again), "what was written");
    fuzz::require(orvo::recordCount(read.table) == records, "as many records");
    fuzz::exercise(payload.table.array);
    return 0;
}
