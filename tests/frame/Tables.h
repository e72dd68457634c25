// Tables.h: record tables and notification blocks for the tests of the frame.
#ifndef ORVO_TESTS_FRAME_TABLES_H
#define ORVO_TESTS_FRAME_TABLES_H

#include "frame/Records.h"
#include "platform/mdx/MdxBuild.h"

#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

namespace tables {

using Fields = std::vector<std::pair<const char*, MdxType>>;

/// Fields of a table much like `Menu`: KeyLink, parent, caption (texts), order_ (integer), flag
/// (boolean), stamp (date).
inline Fields menuFields() {
    return {{"KeyLink", MDX_TEXT},   {"parent", MDX_TEXT},  {"caption", MDX_TEXT},
            {"order_", MDX_INTEGER}, {"flag", MDX_BOOLEAN}, {"stamp", MDX_DATE}};
}

inline void define(CMDArray& table, const Fields& fields = menuFields()) {
    for (const auto& [name, type] : fields)
        orvo::mdx::addField(table.array, name, type);
}

/// A posted record; a null parent or caption is NULL.
inline MDRData* add(CMDArray& table, const QString& key, const QString& parent,
                    const QString& caption, int order) {
    MDRData* record = MDARecNew(table.array);
    const auto setText = [&](const char* field, const QString& text) {
        const QByteArray bytes = orvo::toRecord(text);
        table.SetValF(record, field, text.isNull() ? orvo::nullVar() : orvo::textVar(bytes));
    };
    setText("KeyLink", key);
    setText("parent", parent);
    setText("caption", caption);
    table.SetValF(record, "order_", orvo::integerVar(order));
    table.RecPost(record);
    return record;
}

/// KeyLinks in the order of a key.
inline QString order(const CMDArray& table, int key) {
    QStringList keys;
    orvo::walkAll(table, key, [&](MDRData* record) {
        keys.append(orvo::textOf(record, "KeyLink"));
        return true;
    });
    return keys.join(' ');
}

struct ParamFree {
    void operator()(MDXCliParam* param) const { orvo::mdx::paramFree(param); }
};
using ParamPtr = std::unique_ptr<MDXCliParam, ParamFree>;

inline ParamPtr makeParam(const std::vector<MdxType>& types) {
    return ParamPtr(orvo::mdx::paramCreate(types.data(), static_cast<int>(types.size())));
}

} // namespace tables

#endif
