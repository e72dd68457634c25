#include "tests/menu/Notices.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Schema.h"

namespace orvo::test {

namespace {

std::string_view view(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

} // namespace

QByteArray rawRecordOf(const char* table, Fields fields) {
    CMDArray records;
    store::makeStructure(*store::findTable(table), records.array);
    MDRData* record = MDARecNew(records.array);
    setFields(records, record, fields);
    void* raw = nullptr;
    const uint32_t length = mdx::rawRecord(record, &raw);
    const QByteArray bytes(static_cast<const char*>(raw), static_cast<int>(length));
    MDMemFree(raw);
    return bytes;
}

MDXCliParam* Notice::make() const {
    static const MdxType types[] = {MDX_TEXT,    MDX_INTEGER, MDX_DATE, MDX_TEXT,
                                    MDX_TEXT,    MDX_TEXT,    MDX_TEXT, MDX_BLOCK,
                                    MDX_INTEGER, MDX_TEXT,    MDX_TEXT};
    MDXCliParam* block = mdx::paramCreate(types, fieldCount);
    mdx::paramSetInt(block, 1, code);
    mdx::paramSetText(block, 4, view(key));
    mdx::paramSetText(block, 5, view(source.isNull() ? "NCI:" + table + ",tester" : source));
    mdx::paramSetText(block, 6, view(table));
    if (!raw.isEmpty())
        mdx::paramSetBlock(block, 7, raw.constData(), static_cast<size_t>(raw.size()));
    return block;
}

void notify(COrvoCliMod& module, const Notice& notice) {
    module.messagePut(notice.make());
    module.MessageOn();
}

} // namespace orvo::test
