// Rows of the change log, as any hand may have written them into the database: made into the block
// of a notification, parsed, and merged into a table, as a module does it. Whatever the rows say,
// a key names one record at most, an update makes none, and keys and records agree.
#include "Exercise.h"

#include "frame/Notification.h"
#include "frame/Records.h"
#include "platform/client/Blocks.h"
#include "platform/mdx/MdxBuild.h"

#include <memory>
#include <string_view>
#include <vector>

using namespace orvo;

namespace {

constexpr char rowEnd = '\x1d';
constexpr char valueEnd = '\x1e';

/// What stands before the separator; `rest` goes on behind it.
std::string_view next(std::string_view& rest, char separator) {
    const size_t end = rest.find(separator);
    const std::string_view piece = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return piece;
}

store::Change changeIn(std::string_view row) {
    constexpr int codes[] = {601, 602, 603, 631, 0, -1};
    store::Change change;
    change.id = 7;
    const std::string_view code = next(row, valueEnd);
    change.code = codes[code.empty() ? 0 : static_cast<uint8_t>(code.front()) % std::size(codes)];
    change.table = next(row, valueEnd);
    change.key = next(row, valueEnd);
    change.login = next(row, valueEnd);
    change.after = row;
    return change;
}

struct FreeBlock {
    void operator()(MDXCliParam* block) const { mdx::paramFree(block); }
};

/// A local table as the editors keep it.
std::unique_ptr<CMDArray> makeTable() {
    auto table = std::make_unique<CMDArray>();
    fuzz::require(store::makeStructure(*store::findTable("Menu"), table->array) == MDX_OK,
                  "a structure");
    table->KeyAdd("KeyLink", MDX_KEY_UNIQUE);
    table->KeyAdd("parent;order_", MDX_KEY_MULTI);
    table->KeyAdd("MenuResourceKey", MDX_KEY_MULTI);
    return table;
}

void merge(const Notification& notification, CMDArray& table) {
    const uint32_t before = table.array->recordCount;
    MDRData* known = findRecord(notification.event(), &table);
    bool done = false;
    switch (notification.action()) {
    case OrvoEventInsert:
        done = insertToBaseTable(notification.event(), &table);
        fuzz::require(!(known && done), "no second record of a key");
        fuzz::require(table.array->recordCount == before + (done ? 1 : 0), "one record more");
        break;
    case OrvoEventUpdate:
        done = updateBaseTable(notification.event(), &table);
        fuzz::require(known || !done, "no update of what is not there");
        fuzz::require(table.array->recordCount <= before, "no record made by an update");
        break;
    case OrvoEventDelete:
        table.RecDel(known);
        fuzz::require(table.array->recordCount == before - (known ? 1 : 0), "one record less");
        break;
    default:
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rows(reinterpret_cast<const char*>(data), size);
    client::NotificationMaker maker;
    const std::unique_ptr<CMDArray> table = makeTable();
    while (!rows.empty()) {
        const store::Change change = changeIn(next(rows, rowEnd));
        const std::unique_ptr<MDXCliParam, FreeBlock> block(maker.make(change));
        fuzz::require(block != nullptr, "a block");
        const Notification notification(block.get());
        fuzz::require(notification.isTableEvent(), "a table notification");
        if (notification.isFor("Menu"))
            merge(notification, *table);
    }
    fuzz::exercise(table->array);
    return 0;
}
