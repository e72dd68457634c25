// Creating rows and editing them in the passport, with the icon picker. What is new or changed
// lives in the tree alone until it is saved.
#include "resources/OrvoResources.h"

#include "ui_OrvoResources.h"

#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "models/Passport.h"
#include "picker/PopObjectList.h"
#include "resources/Columns.h"

#include <QToolButton>

using orvo::resources::ResColumn;

namespace {

constexpr char iconRow[] = "icon";

/// The column of `tvRes` that a passport row shows and changes; -1 for rows that show only.
int columnOf(const QString& rowName) {
    static const std::pair<const char*, int> columns[] = {
        {"caption", ResColumn::Caption},
        {"object", ResColumn::Name},
        {"params", ResColumn::Params},
        {iconRow, ResColumn::Icon},
    };
    for (const auto& [name, column] : columns)
        if (orvo::sameText(rowName, QString::fromLatin1(name)))
            return column;
    return -1;
}

bool isIconRow(const QString& rowName) {
    return orvo::sameText(rowName, QString::fromLatin1(iconRow));
}

} // namespace

void OrvoResources::on_actAddModule_triggered() {
    addRow(tr("новый модуль"), false);
}

void OrvoResources::on_actAddFunction_triggered() {
    addRow(tr("новая функция"), false);
}

void OrvoResources::on_actAddFolder_triggered() {
    addRow(tr("новая папка"), true);
}

void OrvoResources::addRow(const QString& caption, bool isFolder) {
    if (!m_resModel)
        return; // the start failed
    const QModelIndex current = m_resModel->findIndexByKey(m_currentKey);
    if (!current.isValid())
        return;
    const QPersistentModelIndex parent(orvo::resources::isFolder(current) ? current
                                                                          : current.parent());
    if (!parent.isValid())
        return; // beside a resource whose folder is not known
    // There is one edit at a time.
    if (!finishEdit())
        return;
    // A resource takes its kind from its folder.
    const QVariant type = parent.sibling(parent.row(), ResColumn::Type).data();
    const QString folderKey = m_resModel->getItemKeyLink(parent);
    const int row = isFolder ? 0 : m_resModel->rowCount(parent);
    if (!m_resModel->insertRows(row, 1, parent))
        return;
    m_btnSave->setEnabled(true);
    m_btnCancel->setEnabled(true);
    const QModelIndex added = m_resModel->index(row, 0, parent);
    orvo::setRow(*m_resModel, added,
                 {{ResColumn::KeyLink, QString::fromLatin1(GenGuid32())},
                  {ResColumn::FolderKey, folderKey},
                  {ResColumn::Caption, caption},
                  {ResColumn::IsFolder, isFolder},
                  {ResColumn::Type, type},
                  {ResColumn::IsNew, true}});
    m_editCaption = caption;
    m_editObject = isFolder ? QStringLiteral("folder") : QString();
    m_editState = NewRow;
    m_newItemIndex = added;
    setActionsDisabled();
    m_ui->tvRes->scrollTo(added);
    m_ui->tvRes->setCurrentIndex(added);
}

void OrvoResources::on_editor_valueChanged(const QString& rowName, const QVariant& value) {
    const QModelIndex row = m_resModel->findIndexByKey(m_currentKey);
    if (!row.isValid())
        return;
    // Nothing can come of an edit whose row is gone: it must not swallow this one.
    if (editIsLost())
        endEdit();
    // A row without a column opens an edit too.
    if (m_editState == Idle) {
        m_editState = EditRow;
        m_editKey = m_currentKey;
        m_btnSave->setEnabled(true);
        m_btnCancel->setEnabled(true);
    }
    const int column = columnOf(rowName);
    if (column < 0)
        return;
    m_resModel->setData(row.siblingAtColumn(column), value, Qt::DisplayRole);
    if (column == ResColumn::Caption)
        m_editCaption = value.toString();
    else if (column == ResColumn::Name)
        m_editObject = value.toString();
}

void OrvoResources::on_passp_buttonpressed(const QString& rowName) {
    m_popTarget = rowName;
    if (!isIconRow(rowName))
        return;
    CPopObjectList* list = orvo::ownPicker(this, m_popList, &OrvoResources::on_poplist_OK_Pressed);
    list->setWindowTitle(tr("Выбор иконок АРМ"));
    list->objectType = CPopObjectList::KindFile;
    list->sourceName = QStringLiteral("icons");
    // What was chosen last is offered again.
    list->showAnew();
}

void OrvoResources::on_poplist_OK_Pressed() {
    if (m_popList && isIconRow(m_popTarget))
        orvo::editPassportValue(*m_propModel, QString::fromLatin1(iconRow), m_popList->chosenName);
}
