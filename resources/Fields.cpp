#include "resources/Fields.h"

#include "frame/Text.h"
#include "resources/Columns.h"

namespace orvo::resources {

using editor::Copied;
using editor::FieldType;
using editor::RecordFields;

constexpr auto asText = FieldType::Text;
constexpr auto integer = FieldType::Integer;
constexpr auto ofItems = editor::ItemRows;
constexpr auto ofFolders = editor::FolderRows;
constexpr auto never = Copied::Never; // rows of this tree move, none is copied
constexpr auto all = editor::AllRows;

const RecordFields& itemFields() {
    // clang-format off
    static const RecordFields fields{
        {ResColumn::KeyLink, "KeyLink", field::KeyLink, asText, ofItems, never, all,
         {"keylink", QT_TRANSLATE_NOOP("orvo", "Идентификатор"), MyEditorLine, true, 0}},
        {ResColumn::FolderKey, "FolderKey", field::MenuResourceFolderKey, asText, ofItems},
        {ResColumn::Name, QT_TRANSLATE_NOOP("orvo", "Ресурс"), field::name_, asText, ofItems, never, all,
         {"object", QT_TRANSLATE_NOOP("orvo", "Объект"), MyEditorLine, false, 3}},
        {ResColumn::Type, "type", field::type_, integer, ofItems, never, all,
         {"type", QT_TRANSLATE_NOOP("orvo", "Тип"), MyEditorLine, true, 1}},
        {ResColumn::Caption, QT_TRANSLATE_NOOP("orvo", "Наименование"), field::caption, asText, ofItems, never, all,
         {"caption", QT_TRANSLATE_NOOP("orvo", "Наименование"), MyEditorLine, false, 2}},
        {ResColumn::Params, "params", field::params, asText, ofItems, never, all,
         {"params", QT_TRANSLATE_NOOP("orvo", "Параметры"), MyEditorLine, false, 5}},
        {ResColumn::Icon, QT_TRANSLATE_NOOP("orvo", "Иконка"), field::ico, asText, ofItems, never, all,
         {"icon", QT_TRANSLATE_NOOP("orvo", "Иконка"), MyEditorButton, false, 4}},
        {ResColumn::Lock, QT_TRANSLATE_NOOP("orvo", "Заблокировано")},
        {ResColumn::LockTime, QT_TRANSLATE_NOOP("orvo", "Дата блокировки")},
        {ResColumn::IsFolder, "IsFolder"},
        {ResColumn::Date, "Date"},
        {ResColumn::Size, "Size"},
        {ResColumn::Blocked, "Blocked"},
        {ResColumn::IsNew, "IsNew"},
    };
    // clang-format on
    return fields;
}

const RecordFields& folderFields() {
    // clang-format off
    static const RecordFields fields{
        {ResColumn::KeyLink, "KeyLink", field::KeyLink, asText, ofFolders, never, all,
         {"keylink", QT_TRANSLATE_NOOP("orvo", "Идентификатор"), MyEditorLine, true, 0}},
        {ResColumn::FolderKey, "FolderKey", field::ParentKey, asText, ofFolders},
        {ResColumn::Type, "type", field::type_, integer, ofFolders, never, all,
         {"type", QT_TRANSLATE_NOOP("orvo", "Тип"), MyEditorLine, true, 1}},
        {ResColumn::Caption, QT_TRANSLATE_NOOP("orvo", "Наименование"), field::caption, asText, ofFolders, never, all,
         {"caption", QT_TRANSLATE_NOOP("orvo", "Наименование"), MyEditorLine, false, 2}},
    };
    // clang-format on
    return fields;
}

const editor::RecordFields& fieldsOf(const QModelIndex& row) {
    return isFolder(row) ? folderFields() : itemFields();
}

const editor::RecordRows& itemRows() {
    static const editor::RecordRows rows(
        itemFields(), ResColumn::Count,
        {{ResColumn::IsFolder, false}, {ResColumn::Blocked, NotLocked}});
    return rows;
}

const editor::RecordRows& folderRows() {
    static const editor::RecordRows rows(folderFields(), ResColumn::Count,
                                         {{ResColumn::IsFolder, true}, {ResColumn::IsNew, false}});
    return rows;
}

} // namespace orvo::resources
