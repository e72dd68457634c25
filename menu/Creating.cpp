// New elements of a menu, and the picker rows of the passport. Modules, functions and files are
// chosen in the picker and go to the server at once; a folder stands in the tree as a placeholder
// until it is saved.
#include "menu/OrvoMenu.h"

#include "ui_OrvoMenu.h"

#include "frame/CommonFunctions.h"
#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "models/DragKeys.h"
#include "models/Passport.h"
#include "picker/PopObjectList.h"

#include <QDropEvent>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QToolButton>

#include <algorithm>

using orvo::editor::FieldType;
using orvo::editor::RecordField;
using orvo::menu::MenuColumn;
using orvo::menu::nextOrderAfter;

namespace {

bool isRow(const QString& rowName, const char* name) {
    return orvo::sameText(rowName, QString::fromLatin1(name));
}

/// The `order_` of a new last child of a row.
int nextOrder(const MenuTreeModel& model, const QModelIndex& parent) {
    const int children = model.rowCount(parent);
    return children == 0 ? 0
                         : nextOrderAfter(
                               model.index(children - 1, MenuColumn::Order, parent).data().toInt());
}

/// The keys of what is dragged out of the palette, or out of a resource editor beside: of its kinds
/// those that stand in a menu.
QStringList draggedResources(const QMimeData& dragged) {
    const auto keysOf = [&](const char* format) {
        return orvo::dragkeys::keys(orvo::dragkeys::payload(&dragged, QLatin1String(format)));
    };
    QStringList keys = keysOf(pickedMime);
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.attribute)
            keys += keysOf(kind.dragFormat);
    return keys;
}

} // namespace

void OrvoMenu::on_actNewElemModul_triggered() {
    chooseNewElements(CPopObjectList::KindModule);
}

void OrvoMenu::on_actNewElemFunction_triggered() {
    chooseNewElements(CPopObjectList::KindFunction);
}

void OrvoMenu::on_actNewElemFile_triggered() {
    chooseNewElements(CPopObjectList::KindForm);
}

void OrvoMenu::chooseNewElements(int32_t kind) {
    if (!m_menuModel)
        return; // the start failed
    CPopObjectList* list = m_palette && m_palette->isVisible() ? m_palette : picker();
    list->multipleChoice = true;
    list->objectType = kind;
    list->chosenName = QString();
    list->reloadAndShow();
}

void OrvoMenu::showPalette() {
    if (!m_menuModel)
        return; // the start failed
    if (m_palette && m_palette->isVisible()) {
        m_palette->hide();
        return;
    }
    if (!m_palette) {
        m_palette = new CPopObjectList(this); // the window's child
        m_palette->becomePalette();
        m_palette->multipleChoice = true;
        m_palette->objectType = CPopObjectList::KindModule;
        connect(m_palette, &CPopObjectList::btnOK_pressed, this,
                [this] { addChosenElements(*m_palette); });
    }
    m_palette->chosenName = QString();
    m_palette->reloadAndShow();
}

void OrvoMenu::on_poplist_OK_Pressed() {
    if (!m_popList)
        return;
    if (m_popList->multipleChoice)
        addChosenElements(*m_popList);
    else
        takeChosenValue();
}

void OrvoMenu::addChosenElements(CPopObjectList& list) {
    const orvo::ResourceKind* kind = orvo::resourceKind(list.objectType);
    if (!kind || !kind->attribute) // stands in no menu
        return;
    std::vector<Picked> picked;
    for (const QModelIndex& chosen : list.tvObj()->selectionModel()->selectedRows(0))
        if (chosen.isValid() && !chosen.siblingAtColumn(orvo::PickColumn::IsFolder).data().toBool())
            picked.push_back({chosen.siblingAtColumn(orvo::PickColumn::KeyLink).data().toString(),
                              chosen.siblingAtColumn(orvo::PickColumn::Caption).data().toString()});
    // A new folder is written before what is put into it.
    if (list.isPalette() && !finishEdit())
        return;
    const QModelIndex entered = list.isPalette() ? elementRow(m_paletteTarget) : QModelIndex();
    const QModelIndex target = entered.isValid() ? entered : elementRow(m_currentMenuKey);
    if (list.isPalette() && target.isValid() && target != entered && !m_paletteTarget.isEmpty()) {
        // What became current in its place was chosen by nobody.
        m_paletteTarget = m_currentMenuKey;
        const QModelIndex folder = m_menuModel->itemIsFolder(target) ? target : target.parent();
        refuse(tr("Не добавлено: строки, к которой вы добавляли, в этом меню больше нет.\n"
                  "Ещё раз — добавить в «%1».")
                   .arg(folder.siblingAtColumn(orvo::menu::MenuColumn::Caption).data().toString()));
        return;
    }
    if (list.isPalette() && !target.isValid())
        refuse(tr("Добавить некуда: сначала выберите рабочий стол, в меню которого это нужно."));
    else if (!addElements(target, std::move(picked)))
        refusesChosenFolder(list);
}

void OrvoMenu::refuseDeleted(std::vector<Picked>& picked) {
    QStringList names;
    const auto isDeleted = [&](const Picked& one) {
        const bool deleted = m_deletedResources.contains(one.key.toCaseFolded());
        if (deleted)
            names << one.caption;
        return deleted;
    };
    picked.erase(std::remove_if(picked.begin(), picked.end(), isDeleted), picked.end());
    if (names.isEmpty())
        return;
    refuse(tr("Не взято: этого ресурса больше нет, его удалили.\n%1")
               .arg(names.join(QLatin1Char('\n'))));
}

bool OrvoMenu::addElements(QModelIndex target, std::vector<Picked> picked) {
    const bool isEmpty = picked.empty();
    refuseDeleted(picked);
    if (!isEmpty && picked.empty())
        return true;
    // While the picker stood open another client's element may have become current.
    if (!m_menuModel->itemIsFolder(target))
        target = target.parent();
    if (!target.isValid())
        return true;
    // Empty text for the top of the menu, where a saved folder has NULL.
    const QString parentKey =
        m_menuModel->getItemLevel(target) == 0 ? QString() : m_menuModel->getItemKeyLink(target);
    int order = nextOrder(*m_menuModel, target);

    orvo::ScratchTable out(*m_app->m_session, orvo::table::Menu);
    if (!out.fetch())
        return true;
    for (const Picked& one : picked) {
        const MDRData* resource = orvo::seekKey(m_tabResource, one.key);
        orvo::RowWriter row = out.add(MDX_INSERT);
        row.text(orvo::field::KeyLink, QString::fromLatin1(GenGuid32()))
            .text(orvo::field::parent, parentKey)
            .text(orvo::field::MenuResourceKey, one.key)
            .text(orvo::field::caption, one.caption)
            .text(orvo::field::FolderKey, openDesckKey())
            .integer(orvo::field::order_, order);
        for (const RecordField& field : m_elementFields)
            if (field.type == FieldType::Flag)
                field.write(row, false);
        if (resource && !orvo::isNull(resource, orvo::field::ico))
            row.copy(orvo::field::ico, resource);
        order = nextOrderAfter(order);
    }
    const bool any = !out.isEmpty();
    out.send();
    return any;
}

bool OrvoMenu::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_menuViewport ||
        (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove &&
         event->type() != QEvent::Drop))
        return EditorWindow::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event);
    const QStringList keys = draggedResources(*drop->mimeData());
    if (keys.isEmpty())
        return EditorWindow::eventFilter(watched, event);
    std::vector<Picked> picked;
    for (const QString& key : keys)
        if (const MDRData* resource = orvo::seekKey(m_tabResource, key)) // a folder is none
            picked.push_back({key, orvo::textOf(resource, orvo::field::caption)});
    const QModelIndex target = m_ui->tvMenu->indexAt(drop->pos()).siblingAtColumn(0);
    const bool isGood = m_app->m_mayWrite && target.isValid() && !picked.empty();
    const bool isDrop = event->type() == QEvent::Drop;
    // The tree of the resource editor offers its rows for moving only, and would take those out
    // whose drop is accepted.
    const bool mayCopy = drop->possibleActions().testFlag(Qt::CopyAction);
    drop->setDropAction(!isGood ? Qt::IgnoreAction : mayCopy ? Qt::CopyAction : Qt::MoveAction);
    drop->setAccepted((isGood && (mayCopy || !isDrop)) || event->type() == QEvent::DragEnter);
    const QPersistentModelIndex row(target);
    if (isGood && isDrop && finishEdit() && row.isValid())
        addElements(row, std::move(picked));
    return true;
}

void OrvoMenu::takeChosenValue() {
    if (refusesChosenFolder(*m_popList))
        return;
    const QString name = m_popList->chosenName;
    const QString key = m_popList->chosenKey;
    std::vector<Picked> chosen{{key, name}};
    if (isRow(m_popTarget, "object"))
        refuseDeleted(chosen);
    if (chosen.empty())
        return;
    if (isIconRow(m_popTarget)) {
        takeChosenIcon();
    } else if (isRow(m_popTarget, "object")) {
        orvo::editPassportValue(*m_propModel, QStringLiteral("object"), name);
        orvo::editPassportValue(*m_propModel, QStringLiteral("keylink"), key);
    }
}

void OrvoMenu::on_passp_buttonpressed(const QString& rowName) {
    m_popTarget = rowName;
    const auto valueOf = [this](const char* row) {
        return m_propModel->getRowValue(QString::fromLatin1(row)).toString();
    };
    // What would be chosen for the top row could be written nowhere.
    if (m_menuModel->getItemLevel(m_menuModel->findIndexByKey(m_currentMenuKey)) == 0) {
        refuse(tr("Это не элемент меню: выбрать для него ничего нельзя."));
        return;
    }
    if (isIconRow(rowName)) {
        CPopObjectList* list = iconPicker();
        list->chosenName = valueOf("icon");
        list->reloadAndShow();
    } else if (isRow(rowName, "object")) {
        CPopObjectList* list = picker();
        list->multipleChoice = false;
        list->chosenName = valueOf("object");
        const int kind = getMenuAttributes(valueOf("type"));
        if (kind == CPopObjectList::KindFunction)
            list->setWindowTitle(tr("Выбор функций АРМ"));
        else if (kind == CPopObjectList::KindForm)
            list->setWindowTitle(tr("Выбор форм отображения АРМ"));
        else if (kind == CPopObjectList::KindModule)
            list->setWindowTitle(tr("Выбор модулей АРМ"));
        else
            return;
        list->objectType = kind;
        list->sourceName = QString();
        list->reloadAndShow();
    }
}

void OrvoMenu::on_passp_returnPressed(const QString& rowName) {
    if (!isIconRow(rowName))
        return;
    const QString none; // null, which the tree takes for "no icon" at once
    m_propModel->setRowValue(rowName, none);
    // Setting a row's value is no edit of the user's: the change is handed on here.
    noteTyped(rowName);
    on_editor_valueChanged(rowName, none);
}

void OrvoMenu::on_actNewElemFolder_triggered() {
    if (!m_menuModel)
        return; // the start failed
    const QModelIndex current = m_ui->tvMenu->currentIndex().siblingAtColumn(0);
    const QPersistentModelIndex parent(m_menuModel->itemIsFolder(current) ? current
                                                                          : current.parent());
    if (!parent.isValid() || !finishEdit() || !parent.isValid())
        return;
    const int row = m_menuModel->rowCount(parent);
    const int order = nextOrder(*m_menuModel, parent);
    if (!m_menuModel->insertRows(row, 1, parent))
        return;
    const QString key = QString::fromLatin1(GenGuid32());
    const QModelIndex folder = m_menuModel->index(row, 0, parent);
    orvo::setRow(*m_menuModel, folder,
                 {{MenuColumn::KeyLink, key},
                  {MenuColumn::Caption, tr("Новая папка")},
                  {MenuColumn::FolderKey, openDesckKey()},
                  {MenuColumn::ParentKey, m_menuModel->getItemKeyLink(parent)},
                  {MenuColumn::Type, convertMenuAttributes(0)},
                  {MenuColumn::IsNew, true},
                  {MenuColumn::Order, order}});
    for (const RecordField& field : m_elementFields)
        if (field.type == FieldType::Flag)
            orvo::setRow(*m_menuModel, folder, {{field.column, false}});
    m_elementEdit.beginNew(folder, key);
    enableEditButtons(true);
    m_ui->tvMenu->scrollTo(folder);
    m_ui->tvMenu->selectionModel()->select(folder, QItemSelectionModel::ClearAndSelect);
    orvo::makeCurrent(m_ui->tvMenu, folder);
}
