#include "platform/client/Blocks.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/ChangeRecord.h"

namespace orvo::client {

namespace {

using Memory = std::unique_ptr<void, MemFree>;

/// The row's key says which record changed: values that name another one must not move it there.
void keepKey(const MDArray* array, MDRData* record, const std::string& key) {
    const MDRField field = MDRFldByNum(array, 0);
    uint8_t marked = 0;
    if (MDRIsUser(field, record, &marked) != MDX_OK || marked == 0)
        return;
    const std::string bytes = mdx::toCp1251(key);
    MDRVar value{};
    value.type = MDX_TEXT;
    value.value.text.length = static_cast<uint32_t>(bytes.size());
    value.value.text.pointer = bytes.c_str();
    MDRSetVal(field, record, &value);
}

} // namespace

bool ensureKeyLink(MDArray* array, uint32_t flags) {
    if (!array)
        return false;
    if (array->keyCount > 0)
        return true;
    MDAKeyDescription key{};
    std::string_view(field::KeyLink).copy(key.name, sizeof key.name - 1);
    key.flags = flags;
    return MDAKeyAdd(array, 1, &key) == MDX_OK;
}

MDXCliParam* makeReply(const store::Status& status) {
    static constexpr MdxType types[] = {MDX_INTEGER, MDX_TEXT, MDX_BLOCK};
    MDXCliParam* reply = mdx::paramCreate(types, 3);
    if (!reply)
        return nullptr;
    mdx::paramSetInt(reply, 0, status.code);
    if (!status.ok() && !status.text.empty())
        mdx::paramSetBlock(reply, 2, status.text.data(), status.text.size());
    return reply;
}

MDXCliParam* makeReply(MDArray* content) {
    MDXCliParam* reply = makeReply();
    if (reply && mdx::paramSetContent(reply, 2, content) != MDX_OK) {
        mdx::paramFree(reply);
        return makeReply({store::NoMemory, {}});
    }
    return reply;
}

NotificationMaker::NotificationMaker() = default;
NotificationMaker::~NotificationMaker() = default;

MDXCliParam* NotificationMaker::make(const store::Change& change) {
    static constexpr MdxType types[] = {MDX_TEXT, MDX_INTEGER, MDX_DATE,  MDX_TEXT,    MDX_TEXT,
                                        MDX_TEXT, MDX_TEXT,    MDX_BLOCK, MDX_INTEGER, MDX_TEXT};
    MDXCliParam* block = mdx::paramCreate(types, 10);
    if (!block)
        return nullptr;
    const std::string login = mdx::toCp1251(change.login);
    const std::string table = mdx::toCp1251(change.table);
    mdx::paramSetText(block, 0, std::to_string(change.id));
    mdx::paramSetInt(block, 1, change.code);
    mdx::paramSetDate(block, 2, change.time);
    mdx::paramSetText(block, 3, login);
    mdx::paramSetText(block, 4, mdx::toCp1251(change.key));
    mdx::paramSetText(block, 5, "NCI:" + table + "," + login);
    mdx::paramSetText(block, 6, table);
    mdx::paramSetInt(block, 8, 0);
    if (change.code == OrvoEventDelete)
        return block;

    const store::TableDef* definition = store::findTable(change.table);
    if (!definition)
        return block; // a table of the store alone: key and code tell all there is
    auto found = m_scratch.find(change.table);
    if (found == m_scratch.end()) {
        auto array = std::make_unique<CMDArray>();
        if (store::makeStructure(*definition, array->array) != MDX_OK)
            return block;
        found = m_scratch.emplace(change.table, std::move(array)).first;
    }
    MDArray* scratch = found->second->array;
    MDRData* record = MDARecNew(scratch);
    if (!record)
        return block;
    // What is no object, or does not fit, leaves a record in which nothing is marked.
    store::setFromJson(*definition, change.after, record);
    keepKey(scratch, record, change.key);
    int marked = 0;
    for (int i = 0; i < scratch->fieldCount; ++i) {
        uint8_t user = 0;
        MDRIsUser(MDRFldByNum(scratch, i), record, &user);
        marked += user;
    }
    void* raw = nullptr;
    const uint32_t length = mdx::rawRecord(record, &raw);
    const Memory owner(raw);
    MDARecDel(record);
    if (raw && mdx::paramSetBlock(block, 7, raw, length) == MDX_OK)
        mdx::paramSetInt(block, 8, marked);
    return block;
}

} // namespace orvo::client
