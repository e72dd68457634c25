// The passport of a folder or a resource. What a form or a file has in the server's stores is asked
// for at that moment: no table holds it.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/CommonFunctions.h"
#include "frame/Kinds.h"
#include "models/Passport.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QTreeView>

using orvo::resources::FileField;
using orvo::resources::ResColumn;

namespace {

constexpr int captionRow = 2;

void expandTopRows(QTreeView* view) {
    for (int row = 0; row < view->model()->rowCount(); ++row)
        view->expand(view->model()->index(row, 0));
}

} // namespace

void OrvoResources::showPassport(const QModelIndex& index) {
    m_passportUses.reset();
    if (orvo::resources::isFolder(index)) {
        loadFolderPassport(index);
    } else {
        loadItemPassport(index);
        addUses(index);
    }
}

void OrvoResources::addUses(const QModelIndex& index) {
    if (!index.isValid() || index.siblingAtColumn(ResColumn::IsNew).data().toBool())
        return;
    const QString key = orvo::resources::textAt(index, ResColumn::KeyLink);
    m_passportUses =
        watchUses(orvo::table::MenuResource, {key}, [this, key](const orvo::UsesAnswer& answer) {
            // The passport may have been emptied since.
            if (!answer.isKnown || m_propModel->rowCount() == 0 || m_currentKey != key)
                return;
            const QString row = QStringLiteral("uses");
            const QString desktops = QStringLiteral("usesDesktops");
            if (m_propModel->findIndexByKey(row).isValid()) {
                m_propModel->setRowValue(row, answer.brief);
                m_propModel->setRowValue(desktops, answer.desktops);
                return;
            }
            m_ui->tvProp->expand(orvo::addPassportCategory(
                *m_propModel, QStringLiteral("usesGroup"), tr("где используется"),
                {{row, tr("в меню"), MyEditorLine, true, answer.brief},
                 {desktops, tr("рабочих столов"), MyEditorLine, true, answer.desktops}}));
        });
}

void OrvoResources::addPassportRows(const QModelIndex& index) {
    const bool folder = orvo::resources::isFolder(index);
    const bool isNew = index.siblingAtColumn(ResColumn::IsNew).data().toBool();
    const auto adjust = [&](const orvo::editor::RecordField& field, orvo::PassportRow& shown) {
        if (field.column == ResColumn::Type)
            shown.value = folder ? tr("папка") : convertMenuAttributes(shown.value.toInt());
        // A resource is named once and for all.
        else if (field.column == ResColumn::Name && !isNew)
            shown.readOnly = true;
    };
    addPassport(index, orvo::resources::fieldsOf(index),
                folder ? orvo::editor::FolderRows : orvo::editor::ItemRows, adjust);
}

void OrvoResources::loadFolderPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    addPassportRows(index);
    const QModelIndex category = m_propModel->index(m_propModel->rowCount() - 1, 0);
    m_ui->tvProp->expand(category);
    // A new folder can be named at once.
    if (index.siblingAtColumn(ResColumn::IsNew).data().toBool())
        m_ui->tvProp->edit(m_propModel->index(captionRow, PropColumn::Value, category));
}

void OrvoResources::loadItemPassport(const QModelIndex& index) {
    if (!index.isValid())
        return;
    addPassportRows(index);
    const QModelIndex category = m_propModel->index(m_propModel->rowCount() - 1, 0);
    const QString name = orvo::resources::nameOf(index);
    switch (orvo::resources::kindOf(index)) {
    case orvo::Kind::Form: {
        CToolFormGet tool(this);
        tool.formName = name;
        tool.withData = false;
        tool.Perform(false);
        addFileRows(tool.result, QStringLiteral("dd.MM.yyyy hh:mm:ss"));
        expandTopRows(m_ui->tvProp);
        break;
    }
    case orvo::Kind::File: {
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
        if (orvo::resourceKind(orvo::resources::kindOf(index)))
            m_ui->tvProp->expand(category);
    }
}

void OrvoResources::addFileRows(const CMDArray& files, const QString& timeFormat) {
    int number = -1;
    orvo::walkAll(files, 0, [&](const MDRData* record) {
        // Empty files are counted but not shown.
        ++number;
        const int32_t size = orvo::integerOf(record, FileField::Size);
        if (size == 0)
            return true;
        const QString time =
            m_rows.timeText(record, orvo::fieldOf(record, FileField::Time), timeFormat);
        orvo::addPassportCategory(
            *m_propModel, QStringLiteral("file%1").arg(number), tr("файл"),
            {{QStringLiteral("filename%1").arg(number), tr("имя файла"), MyEditorLine, true,
              orvo::textOf(record, FileField::Name)},
             {QStringLiteral("filedate%1").arg(number), tr("дата изменения"), MyEditorLine, true,
              time.isNull() ? QVariant() : QVariant(time)},
             {QStringLiteral("filesize%1").arg(number), tr("размер"), MyEditorLine, true, size}});
        return true;
    });
}
