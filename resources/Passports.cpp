// The passport of a folder or a resource. What a form or a file has in the server's stores is asked
// for at that moment: no table holds it.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/CommonFunctions.h"
#include "frame/Records.h"
#include "models/Passport.h"
#include "resources/Columns.h"

#include <QTreeView>

using orvo::resources::ResColumn;

namespace {

constexpr int nameField = 0;
constexpr int timeField = 1;
constexpr int sizeField = 2;
constexpr int captionRow = 2;
constexpr int valueColumn = 1;

void expandTopRows(QTreeView* view) {
    for (int row = 0; row < view->model()->rowCount(); ++row)
        view->expand(view->model()->index(row, 0));
}

} // namespace

void OrvoResources::showPassport(const QModelIndex& index) {
    if (orvo::resources::isFolder(index))
        loadFolderPassport(index);
    else
        loadItemPassport(index);
}

void OrvoResources::loadFolderPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const auto value = [&](int column) { return index.sibling(index.row(), column).data(); };
    const QModelIndex category = orvo::addPassportCategory(
        *m_propModel, QStringLiteral("properties"), tr("Свойства"),
        {{QStringLiteral("keylink"), tr("Идентификатор"), MyEditorLine, true,
          value(ResColumn::KeyLink)},
         {QStringLiteral("type"), tr("Тип"), MyEditorLine, true, tr("папка")},
         {QStringLiteral("caption"), tr("Наименование"), MyEditorLine, false,
          value(ResColumn::Caption)}});
    m_ui->tvProp->expand(category);
    // A new folder can be named at once.
    if (value(ResColumn::IsNew).toBool())
        m_ui->tvProp->edit(m_propModel->index(captionRow, valueColumn, category));
}

void OrvoResources::loadItemPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    const auto value = [&](int column) { return index.sibling(index.row(), column).data(); };
    const int type = value(ResColumn::Type).toInt();
    const QString name = value(ResColumn::Name).toString();
    const QModelIndex category = orvo::addPassportCategory(
        *m_propModel, QStringLiteral("properties"), tr("Свойства"),
        {{QStringLiteral("keylink"), tr("Идентификатор"), MyEditorLine, true,
          value(ResColumn::KeyLink)},
         {QStringLiteral("type"), tr("Тип"), MyEditorLine, true, convertMenuAttributes(type)},
         {QStringLiteral("caption"), tr("Наименование"), MyEditorLine, false,
          value(ResColumn::Caption)},
         {QStringLiteral("object"), tr("Объект"), MyEditorLine, !value(ResColumn::IsNew).toBool(),
          name},
         {QStringLiteral("icon"), tr("Иконка"), MyEditorButton, false, value(ResColumn::Icon)},
         {QStringLiteral("params"), tr("Параметры"), MyEditorLine, false,
          value(ResColumn::Params)}});
    switch (type) {
    case orvo::resources::Module:
    case orvo::resources::Function:
        m_ui->tvProp->expand(category);
        break;
    case orvo::resources::Form: {
        CToolFormGet tool(this);
        tool.formName = name;
        tool.withData = false;
        tool.Perform(false);
        addFileRows(tool.result, QStringLiteral("dd.MM.yyyy hh:mm:ss"));
        expandTopRows(m_ui->tvProp);
        break;
    }
    case orvo::resources::File: {
        CToolFileList tool(this);
        tool.name = name;
        tool.path = getFilePath(index.parent());
        tool.reserved = false;
        tool.Perform(false);
        // The fifth y is no part of the year: it shows as a letter behind it, by which the time of
        // a file is known from that of a form.
        addFileRows(tool.result, QStringLiteral("dd.MM.yyyyy hh:mm:ss"));
        expandTopRows(m_ui->tvProp);
        break;
    }
    default:
        break;
    }
}

void OrvoResources::addFileRows(const CMDArray& files, const QString& timeFormat) {
    int number = -1;
    orvo::walkAll(files, 0, [&](const MDRData* record) {
        // Empty files are counted but not shown.
        ++number;
        const int32_t size = orvo::integerOf(record, sizeField);
        if (size == 0)
            return true;
        const QString time = timeText(record, orvo::fieldOf(record, timeField), timeFormat);
        orvo::addPassportCategory(
            *m_propModel, QStringLiteral("file%1").arg(number), tr("файл"),
            {{QStringLiteral("filename%1").arg(number), tr("имя файла"), MyEditorLine, true,
              orvo::textOf(record, nameField)},
             {QStringLiteral("filedate%1").arg(number), tr("дата изменения"), MyEditorLine, true,
              time.isNull() ? QVariant() : QVariant(time)},
             {QStringLiteral("filesize%1").arg(number), tr("размер"), MyEditorLine, true, size}});
        return true;
    });
}

QString OrvoResources::timeText(const MDRData* record, MDRField field,
                                const QString& format) const {
    const MDRVar time = orvo::valueOf(record, field);
    return time.type == MDX_DATE && !time.null
               ? m_app->m_session->MdxTimeToSesTime(time.value.date).toString(format)
               : QString();
}
