// Block.cpp: reply and notification blocks.
#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/Table.h"

#include <string>
#include <utility>

namespace orvo::mdx {
namespace {

int setField(MDXCliParam* param, int field, MdxType type, MDRVar value) {
    if (!param)
        return MDX_E_ARG;
    value.type = type;
    return MDRSetVal(MDRFldByNum(param->array, field), param->record, &value);
}

int setBytes(MDXCliParam* param, int field, MdxType type, const void* bytes, size_t length) {
    if (length > maxText)
        return MDX_E_LIMIT;
    MDRVar value{};
    value.value.text.length = static_cast<uint32_t>(length);
    value.value.text.pointer = static_cast<const char*>(bytes);
    return setField(param, field, type, value);
}

} // namespace

MDXCliParam* paramCreate(const MdxType* types, int count) {
    if (count < 0 || (count > 0 && !types))
        return nullptr;
    MDXCliParam* result = nullptr;
    guarded([&]() -> int {
        auto array = makeArray();
        auto param = std::make_unique<MDXCliParam>();
        std::vector<std::string> names;
        std::vector<FieldSpec> specs;
        names.reserve(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            names.push_back(std::to_string(i));
            specs.push_back({names.back(), types[i]});
        }
        Structure* structure = nullptr;
        if (const int status = Structure::make(specs, structure); status != MDX_OK)
            return status;
        if (count > 0) {
            array->table->setStructure(StructureRef(structure));
            param->record = array->table->createEmpty();
        } else {
            structure->unref();
        }
        array->publish();
        param->array = array.release();
        result = param.release();
        return MDX_OK;
    });
    return result;
}

void paramFree(MDXCliParam* param) {
    if (!param)
        return;
    MDADestroy(param->array);
    delete param;
}

int paramSetInt(MDXCliParam* param, int field, int32_t number) {
    MDRVar value{};
    value.value.integer = number;
    return setField(param, field, MDX_INTEGER, value);
}

int paramSetDate(MDXCliParam* param, int field, double date) {
    MDRVar value{};
    value.value.date = date;
    return setField(param, field, MDX_DATE, value);
}

int paramSetText(MDXCliParam* param, int field, std::string_view text1251) {
    return setBytes(param, field, MDX_TEXT, text1251.data(), text1251.size());
}

int paramSetBlock(MDXCliParam* param, int field, const void* bytes, size_t length) {
    return setBytes(param, field, MDX_BLOCK, bytes, length);
}

int paramSetContent(MDXCliParam* param, int field, MDArray* array) {
    if (!param || !array || param->array == array)
        return MDX_E_ARG;
    return guarded([&]() -> int {
        auto handover = std::make_unique<Handover>();
        auto empty = std::make_unique<Table>(array);
        const auto& ticket = handover->ticket();
        if (const int status = paramSetBlock(param, field, ticket.data(), ticket.size());
            status != MDX_OK)
            return status;
        const char* place = nullptr;
        MDRGetTextPtr(MDRFldByNum(param->array, field), param->record, &place);
        Array* source = arrayOf(array);
        handover->offer(place, std::exchange(source->table, std::move(empty)));
        source->publish();
        arrayOf(param->array)->handover = std::move(handover);
        return MDX_OK;
    });
}

} // namespace orvo::mdx
