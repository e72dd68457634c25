// What the host asks of the editor: its open edit, before it closes the editor or reopens it,
// and to show a record.
#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "menu/DesckRows.h"

using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

QString OrvoMenu::ModEditText() const {
    const auto named = [](const QString& what, const QModelIndex& row, int column) {
        const QString name = row.siblingAtColumn(column).data().toString();
        return what.arg(name.isEmpty() ? tr("без имени") : name);
    };
    switch (m_editMode) {
    case orvo::menu::NewDesck:
        return named(m_editDesckIndex.isValid() && m_desckModel->isItemFolder(m_editDesckIndex)
                         ? tr("новая папка «%1»")
                         : tr("новый рабочий стол «%1»"),
                     m_editDesckIndex, DesckColumn::Name);
    case orvo::menu::RenameDesck:
        return named(tr("новое имя «%1»"), m_editDesckIndex, DesckColumn::Name);
    case orvo::menu::NewElement:
        return named(tr("новая папка меню «%1»"), m_elementEdit.row(*m_menuModel),
                     MenuColumn::Caption);
    case orvo::menu::EditElement:
        return named(tr("элемент «%1»"), m_elementEdit.row(*m_menuModel), MenuColumn::Caption);
    default:
        return {};
    }
}

QPair<QString, QString> OrvoMenu::ModEditRecord() const {
    switch (m_editMode) {
    case orvo::menu::NewDesck:
        return {orvo::table::MenuFolder, QString()};
    case orvo::menu::RenameDesck:
        return {orvo::table::MenuFolder, m_desckEdit.key()};
    case orvo::menu::NewElement:
        return {orvo::table::Menu, QString()};
    case orvo::menu::EditElement:
        return {orvo::table::Menu, m_elementEdit.key()};
    default:
        return {};
    }
}

bool OrvoMenu::ModEditSave() {
    return finishEdit();
}

void OrvoMenu::ModEditCancel() {
    on_cancel_pressed();
}

bool OrvoMenu::ModShowRecord(const QString& table, const QString& key, const QString& desktop) {
    const bool isElement = table == QLatin1String(orvo::table::Menu);
    if (!m_desckModel || (!isElement && table != QLatin1String(orvo::table::MenuFolder)))
        return false;
    const QString desckKey = isElement ? desktop : key;
    const QModelIndex desck =
        desckKey.isEmpty() ? QModelIndex() : orvo::menu::desckRow(*m_desckModel, desckKey);
    if (!desck.isValid())
        return false;
    orvo::makeCurrent(m_ui->tvDesck, desck);
    // The current desktop need not be the one whose menu is open.
    if (isElement && !orvo::sameText(m_openMenu.desckKey(), desckKey)) {
        clearMenuModel();
        loadMenuTree(desckKey);
    }
    const QModelIndex element = isElement ? m_openMenu.recordRow(key) : QModelIndex();
    if (isElement && !element.isValid())
        return false;
    QTreeView* view = isElement ? m_ui->tvMenu : m_ui->tvDesck;
    orvo::makeCurrent(view, isElement ? element : desck);
    view->scrollTo(view->currentIndex());
    view->setFocus();
    return true;
}
