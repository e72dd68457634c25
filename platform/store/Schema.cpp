#include "platform/store/Schema.h"

#include "platform/mdx/MdxBuild.h"

#include <strings.h>

namespace orvo::store {

int TableDef::find(std::string_view field) const {
    for (size_t i = 0; i < fields.size(); ++i) {
        const std::string_view own = fields[i].name;
        if (own.size() == field.size() && strncasecmp(own.data(), field.data(), own.size()) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

const Dictionary& dictionary() {
    static const Dictionary all = {
        {
            {"Users",
             {{"KeyLink", MDX_TEXT},
              {"login_", MDX_TEXT},
              {"lastName", MDX_TEXT},
              {"firstName", MDX_TEXT},
              {"midlName", MDX_TEXT},
              {"program", MDX_BOOLEAN}}},
            {"MenuFileExt", {{"KeyLink", MDX_TEXT}, {"fileExt", MDX_TEXT}}},
            {"MenuResourceFolder",
             {{"KeyLink", MDX_TEXT},
              {"ParentKey", MDX_TEXT, true},
              {"type_", MDX_INTEGER},
              {"caption", MDX_TEXT}}},
            {"MenuResource",
             {{"KeyLink", MDX_TEXT},
              {"MenuResourceFolderKey", MDX_TEXT, true},
              {"name_", MDX_TEXT},
              {"type_", MDX_INTEGER},
              {"caption", MDX_TEXT},
              {"params", MDX_TEXT},
              {"ico", MDX_TEXT},
              {"UsersKey", MDX_TEXT, true},
              {"dateTimeEdit", MDX_DATE}}},
            {"MenuFolder",
             {{"KeyLink", MDX_TEXT},
              {"ParentKey", MDX_TEXT, true},
              {"caption", MDX_TEXT},
              {"order_", MDX_TEXT},
              {"isFolder", MDX_BOOLEAN}}},
            {"Menu",
             {{"KeyLink", MDX_TEXT},
              {"parent", MDX_TEXT, true},
              {"FolderKey", MDX_TEXT},
              {"caption", MDX_TEXT},
              {"order_", MDX_INTEGER},
              {"ico", MDX_TEXT},
              {"separator", MDX_BOOLEAN},
              {"oneCopy", MDX_BOOLEAN},
              {"MenuResourceKey", MDX_TEXT, true},
              {"params", MDX_TEXT}}},
        },
        {"MenuResourceFile",
         {{"KeyLink", MDX_TEXT},
          {"MenuResourceKey", MDX_TEXT, true},
          {"name_", MDX_TEXT},
          {"time", MDX_DATE},
          {"size", MDX_INTEGER}}}};
    return all;
}

const TableDef* findTable(std::string_view name) {
    for (const TableDef& table : tables()) {
        if (name == table.name)
            return &table;
    }
    return nullptr;
}

bool isKeyOrLink(const TableDef& table, const FieldDef& field) {
    return field.link || &field == &table.fields.front();
}

int makeStructure(const TableDef& table, MDArray* array) {
    for (const FieldDef& field : table.fields) {
        const int status = mdx::addField(array, field.name, field.type);
        if (status != MDX_OK)
            return status;
    }
    return MDX_OK;
}

} // namespace orvo::store
