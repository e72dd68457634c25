#include "platform/store/Schema.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

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
            {table::Users,
             {{field::KeyLink, MDX_TEXT},
              {field::login_, MDX_TEXT},
              {field::lastName, MDX_TEXT},
              {field::firstName, MDX_TEXT},
              {field::midlName, MDX_TEXT},
              {field::program, MDX_BOOLEAN}}},
            {table::MenuFileExt, {{field::KeyLink, MDX_TEXT}, {field::fileExt, MDX_TEXT}}},
            {table::MenuResourceFolder,
             {{field::KeyLink, MDX_TEXT},
              {field::ParentKey, MDX_TEXT, true},
              {field::type_, MDX_INTEGER},
              {field::caption, MDX_TEXT}}},
            {table::MenuResource,
             {{field::KeyLink, MDX_TEXT},
              {field::MenuResourceFolderKey, MDX_TEXT, true},
              {field::name_, MDX_TEXT},
              {field::type_, MDX_INTEGER},
              {field::caption, MDX_TEXT},
              {field::params, MDX_TEXT},
              {field::ico, MDX_TEXT},
              {field::UsersKey, MDX_TEXT, true},
              {field::dateTimeEdit, MDX_DATE}}},
            {table::MenuFolder,
             {{field::KeyLink, MDX_TEXT},
              {field::ParentKey, MDX_TEXT, true},
              {field::caption, MDX_TEXT},
              {field::order_, MDX_TEXT},
              {field::isFolder, MDX_BOOLEAN}}},
            {table::Menu,
             {{field::KeyLink, MDX_TEXT},
              {field::parent, MDX_TEXT, true},
              {field::FolderKey, MDX_TEXT},
              {field::caption, MDX_TEXT},
              {field::order_, MDX_INTEGER},
              {field::ico, MDX_TEXT},
              {field::separator, MDX_BOOLEAN},
              {field::oneCopy, MDX_BOOLEAN},
              {field::MenuResourceKey, MDX_TEXT, true},
              {field::params, MDX_TEXT}}},
        },
        {table::MenuResourceFile,
         {{field::KeyLink, MDX_TEXT},
          {field::MenuResourceKey, MDX_TEXT, true},
          {field::name_, MDX_TEXT},
          {field::time, MDX_DATE},
          {field::size, MDX_INTEGER}}}};
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

std::string inTable(const TableDef& table) {
    return "Таблица " + shown(table.name);
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
