#include "menu/Fields.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include "menu/Columns.h"

#include <QCoreApplication>

namespace orvo::menu {

using editor::AllRows;
using editor::Copied;
using editor::FieldType;
using editor::FolderRows;
using editor::ItemRows;
using editor::RecordFields;

// Titles and captions are translated where they are shown.

const RecordFields& elementFields() {
    static const RecordFields fields{
        {.column = MenuColumn::KeyLink,
         .title = "KeyLink",
         .name = orvo::field::KeyLink,
         .saved = AllRows},
        // By the row above; see ElementEdit.
        {.column = MenuColumn::ParentKey, .title = "ParentKey", .name = orvo::field::parent},
        {.column = MenuColumn::FolderKey,
         .title = "FolderKey",
         .name = orvo::field::FolderKey,
         .saved = AllRows},
        {.column = MenuColumn::Caption,
         .title = " ",
         .name = orvo::field::caption,
         .saved = AllRows,
         .copied = Copied::Place,
         .passport = {.row = "name",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Наименование"),
                      .position = 3}},
        {.column = MenuColumn::Order,
         .title = "order",
         .name = orvo::field::order_,
         .type = FieldType::Integer,
         .saved = AllRows,
         .copied = Copied::Place},
        {.column = MenuColumn::Icon,
         .title = "Icon",
         .name = orvo::field::ico,
         .saved = AllRows,
         .copied = Copied::Value,
         .passport = {.row = "icon",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Иконка"),
                      .editor = MyEditorButton,
                      .position = 7}},
        {.column = MenuColumn::Separator,
         .title = "Separator",
         .name = orvo::field::separator,
         .type = FieldType::Flag,
         .saved = AllRows,
         .copied = Copied::Value,
         .passport = {.row = "separator",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Разделитель"),
                      .editor = MyEditorCheck,
                      .position = 8}},
        {.column = MenuColumn::OneCopy,
         .title = "OneCopy",
         .name = orvo::field::oneCopy,
         .type = FieldType::Flag,
         .saved = AllRows,
         .copied = Copied::Value,
         .passport = {.row = "onecopy",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Один эжкземпляр"),
                      .editor = MyEditorCheck,
                      .position = 6,
                      .on = ItemRows}},
        // NULL on a folder, which is what makes it one.
        {.column = MenuColumn::MenuResKey,
         .title = "MenuResKey",
         .name = orvo::field::MenuResourceKey,
         .saved = ItemRows,
         .copied = Copied::Value,
         .copiedOn = ItemRows,
         .passport = {.row = "keylink",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Идентификатор"),
                      .readOnly = true,
                      .position = 1,
                      .on = ItemRows}},
        {.column = MenuColumn::Params,
         .title = "Params",
         .name = orvo::field::params,
         .saved = ItemRows,
         .copied = Copied::Value,
         .passport = {.row = "params",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Параметры"),
                      .position = 5,
                      .on = ItemRows}},
        // Told by the element's resource.
        {.column = MenuColumn::Type,
         .title = QT_TRANSLATE_NOOP("orvo", "тип"),
         .passport = {.row = "type",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Тип"),
                      .readOnly = true,
                      .position = 2}},
        {.column = MenuColumn::Command,
         .title = QT_TRANSLATE_NOOP("orvo", "команда"),
         .passport = {.row = "object",
                      .caption = QT_TRANSLATE_NOOP("orvo", "Объект"),
                      .editor = MyEditorButton,
                      .position = 4,
                      .on = ItemRows}},
        {.column = MenuColumn::IsNew, .title = "IsNew"},
    };
    return fields;
}

const RecordFields& desckFields() {
    static const RecordFields fields{
        {.column = DesckColumn::KeyLink,
         .title = "KeyLink",
         .name = orvo::field::KeyLink,
         .saved = AllRows},
        // NULL below the root row; see DesckEdit.
        {.column = DesckColumn::ParentKey, .title = "ParentKey", .name = orvo::field::ParentKey},
        {.column = DesckColumn::Name,
         .title = "Name",
         .name = orvo::field::caption,
         .saved = AllRows},
        {.column = DesckColumn::Order,
         .title = "Order",
         .name = orvo::field::order_,
         .saved = AllRows},
        {.column = DesckColumn::IsFolder,
         .title = "IsFolder",
         .name = orvo::field::isFolder,
         .type = FieldType::Flag,
         .saved = AllRows,
         .copied = Copied::Value},
        {.column = DesckColumn::IsNew, .title = "IsNew"},
    };
    return fields;
}

} // namespace orvo::menu
