#include "platform/store/Schema.h"

#include "frame/StdText.h"
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
              {field::login_, MDX_TEXT, ORVO_TEXT("orvo", "Вход")},
              {field::lastName, MDX_TEXT, ORVO_TEXT("orvo", "Фамилия")},
              {field::firstName, MDX_TEXT, ORVO_TEXT("orvo", "Имя")},
              {field::midlName, MDX_TEXT, ORVO_TEXT("orvo", "Отчество")},
              {field::program, MDX_BOOLEAN, ORVO_TEXT("orvo", "Программа")}}},
            {table::MenuFileExt,
             {{field::KeyLink, MDX_TEXT},
              {field::fileExt, MDX_TEXT, ORVO_TEXT("orvo", "Расширение")}}},
            {table::MenuResourceFolder,
             {{field::KeyLink, MDX_TEXT},
              {field::ParentKey, MDX_TEXT, ORVO_TEXT("orvo", "Папка"), true},
              {field::type_, MDX_INTEGER, ORVO_TEXT("orvo", "Вид")},
              {field::caption, MDX_TEXT, ORVO_TEXT("orvo", "Название")}}},
            {table::MenuResource,
             {{field::KeyLink, MDX_TEXT},
              {field::MenuResourceFolderKey, MDX_TEXT, ORVO_TEXT("orvo", "Папка"), true},
              {field::name_, MDX_TEXT, ORVO_TEXT("orvo", "Имя")},
              {field::type_, MDX_INTEGER, ORVO_TEXT("orvo", "Вид")},
              {field::caption, MDX_TEXT, ORVO_TEXT("orvo", "Название")},
              {field::params, MDX_TEXT, ORVO_TEXT("orvo", "Параметры")},
              {field::ico, MDX_TEXT, ORVO_TEXT("orvo", "Значок")},
              {field::UsersKey, MDX_TEXT, ORVO_TEXT("orvo", "Кем занята"), true},
              {field::dateTimeEdit, MDX_DATE, ORVO_TEXT("orvo", "Когда занята")}}},
            {table::MenuFolder,
             {{field::KeyLink, MDX_TEXT},
              {field::ParentKey, MDX_TEXT, ORVO_TEXT("orvo", "Папка"), true},
              {field::caption, MDX_TEXT, ORVO_TEXT("orvo", "Название")},
              {field::order_, MDX_TEXT, ORVO_TEXT("orvo", "Порядок")},
              {field::isFolder, MDX_BOOLEAN, ORVO_TEXT("orvo", "Папка")}}},
            {table::Menu,
             {{field::KeyLink, MDX_TEXT},
              {field::parent, MDX_TEXT, ORVO_TEXT("orvo", "Папка меню"), true},
              {field::FolderKey, MDX_TEXT, ORVO_TEXT("orvo", "Рабочий стол")},
              {field::caption, MDX_TEXT, ORVO_TEXT("orvo", "Название")},
              {field::order_, MDX_INTEGER, ORVO_TEXT("orvo", "Порядок")},
              {field::ico, MDX_TEXT, ORVO_TEXT("orvo", "Значок")},
              {field::separator, MDX_BOOLEAN, ORVO_TEXT("orvo", "Разделитель")},
              {field::oneCopy, MDX_BOOLEAN, ORVO_TEXT("orvo", "Одна копия")},
              {field::MenuResourceKey, MDX_TEXT, ORVO_TEXT("orvo", "Ресурс"), true},
              {field::params, MDX_TEXT, ORVO_TEXT("orvo", "Параметры")}}},
        },
        {table::MenuResourceFile,
         {{field::KeyLink, MDX_TEXT},
          {field::MenuResourceKey, MDX_TEXT, ORVO_TEXT("orvo", "Ресурс"), true},
          {field::name_, MDX_TEXT, ORVO_TEXT("orvo", "Имя")},
          {field::time, MDX_DATE, ORVO_TEXT("orvo", "Время файла")},
          {field::size, MDX_INTEGER, ORVO_TEXT("orvo", "Размер")}}}};
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
    return ORVO_TEXT("orvo", "Таблица ") + shown(table.name);
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
