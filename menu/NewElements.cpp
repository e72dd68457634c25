#include "menu/NewElements.h"

#include "editor/EditorWindow.h"
#include "frame/CommonFunctions.h"
#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"
#include "menu/Columns.h"
#include "menu/OpenMenu.h"
#include "models/DragKeys.h"
#include "picker/PopObjectList.h"

#include <QApplication>
#include <QDropEvent>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QTreeView>

#include <algorithm>
#include <cassert>
#include <utility>

namespace orvo::menu {
namespace {

/// The keys of what is dragged out of the palette, or out of a resource editor beside: of its kinds
/// those that stand in a menu.
QStringList draggedResources(const QMimeData& dragged) {
    const auto keysOf = [&](const char* format) {
        return dragkeys::keys(dragkeys::payload(&dragged, QLatin1String(format)));
    };
    QStringList keys = keysOf(pickedMime);
    for (const ResourceKind& kind : resourceKinds)
        if (kind.attribute)
            keys += keysOf(kind.dragFormat);
    return keys;
}

} // namespace

NewElements::NewElements(editor::EditorWindow& window, const OpenMenu& menu, const QString& current,
                         std::function<bool()> finishEdit)
    : m_window(window)
    , m_menu(menu)
    , m_current(current)
    , m_finishEdit(std::move(finishEdit)) {}

void NewElements::takeDrops(QTreeView& view) {
    m_view = &view;
    view.viewport()->installEventFilter(this);
}

void NewElements::noteCurrent() {
    // Who works in the palette has chosen no other row: what others add becomes current.
    if (!m_palette || QApplication::activeWindow() != m_palette)
        m_paletteTarget = m_current;
}

void NewElements::noteStored(const QString& resource) {
    m_deleted.remove(resource.toCaseFolded());
}

void NewElements::noteDeleted(const QString& resource) {
    m_deleted.insert(resource.toCaseFolded());
}

void NewElements::choose(int32_t kind) {
    if (!m_menu.hasTree())
        return; // the start failed
    CPopObjectList* list = m_palette && m_palette->isVisible() ? m_palette : m_window.picker();
    list->multipleChoice = true;
    list->objectType = kind;
    list->chosenName = QString();
    list->reloadAndShow();
}

void NewElements::togglePalette() {
    if (!m_menu.hasTree())
        return; // the start failed
    if (m_palette && m_palette->isVisible()) {
        m_palette->hide();
        return;
    }
    if (!m_palette) {
        m_palette = new CPopObjectList(&m_window);
        m_palette->becomePalette();
        m_palette->multipleChoice = true;
        m_palette->objectType = Kind::Module;
        connect(m_palette, &CPopObjectList::btnOK_pressed, this, [this] { addChosen(*m_palette); });
    }
    m_palette->chosenName = QString();
    m_palette->reloadAndShow();
}

void NewElements::addChosen(CPopObjectList& list) {
    assert(!list.isPalette() || &list == m_palette);
    const ResourceKind* kind = resourceKind(list.objectType);
    if (!kind || !kind->attribute) // stands in no menu
        return;
    std::vector<Picked> picked;
    for (const QModelIndex& chosen : list.tvObj()->selectionModel()->selectedRows(0))
        if (chosen.isValid() && !chosen.siblingAtColumn(PickColumn::IsFolder).data().toBool())
            picked.push_back({chosen.siblingAtColumn(PickColumn::KeyLink).data().toString(),
                              chosen.siblingAtColumn(PickColumn::Caption).data().toString()});
    // A new folder is written before what is put into it.
    if (list.isPalette() && !m_finishEdit())
        return;
    const QModelIndex entered =
        list.isPalette() ? m_menu.elementRow(m_paletteTarget) : QModelIndex();
    const QModelIndex target = entered.isValid() ? entered : m_menu.elementRow(m_current);
    if (list.isPalette() && target.isValid() && target != entered && !m_paletteTarget.isEmpty()) {
        // What became current in its place was chosen by nobody.
        m_paletteTarget = m_current;
        const QModelIndex folder = m_menu.tree().itemIsFolder(target) ? target : target.parent();
        m_window.refuse(tr("Не добавлено: строки, к которой вы добавляли, в этом меню больше нет.\n"
                           "Ещё раз — добавить в «%1».")
                            .arg(folder.siblingAtColumn(MenuColumn::Caption).data().toString()));
        return;
    }
    if (list.isPalette() && !target.isValid())
        m_window.refuse(
            tr("Добавить некуда: сначала выберите рабочий стол, в меню которого это нужно."));
    else if (!add(target, std::move(picked)))
        m_window.refusesChosenFolder(list);
}

void NewElements::refuseDeleted(std::vector<Picked>& picked) {
    QStringList names;
    const auto isDeleted = [&](const Picked& one) {
        const bool deleted = m_deleted.contains(one.key.toCaseFolded());
        if (deleted)
            names << one.caption;
        return deleted;
    };
    picked.erase(std::remove_if(picked.begin(), picked.end(), isDeleted), picked.end());
    if (names.isEmpty())
        return;
    m_window.refuse(tr("Не взято: этого ресурса больше нет, его удалили.\n%1")
                        .arg(names.join(QLatin1Char('\n'))));
}

bool NewElements::add(QModelIndex target, std::vector<Picked> picked) {
    const bool isEmpty = picked.empty();
    refuseDeleted(picked);
    if (!isEmpty && picked.empty())
        return true;
    // While the picker stood open another client's element may have become current.
    if (!m_menu.tree().itemIsFolder(target))
        target = target.parent();
    if (!target.isValid())
        return true;
    // Empty text for the top of the menu, where a saved folder has NULL.
    const QString parentKey =
        m_menu.tree().getItemLevel(target) == 0 ? QString() : m_menu.tree().getItemKeyLink(target);
    int order = m_menu.nextOrder(target);

    ScratchTable out(*m_window.m_app->m_session, table::Menu);
    if (!out.fetch())
        return true;
    for (const Picked& one : picked) {
        const MDRData* resource = seekKey(m_menu.resources(), one.key);
        RowWriter row = out.add(MDX_INSERT);
        row.text(field::KeyLink, QString::fromLatin1(GenGuid32()))
            .text(field::parent, parentKey)
            .text(field::MenuResourceKey, one.key)
            .text(field::caption, one.caption)
            .text(field::FolderKey, m_menu.desckKey())
            .integer(field::order_, order);
        for (const editor::RecordField& field : m_menu.fields())
            if (field.type == editor::FieldType::Flag)
                field.write(row, false);
        if (resource && !isNull(resource, field::ico))
            row.copy(field::ico, resource);
        order = nextOrderAfter(order);
    }
    const bool any = !out.isEmpty();
    out.send();
    return any;
}

bool NewElements::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove &&
        event->type() != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event);
    const QStringList keys = draggedResources(*drop->mimeData());
    if (keys.isEmpty())
        return QObject::eventFilter(watched, event);
    std::vector<Picked> picked;
    for (const QString& key : keys)
        if (const MDRData* resource = seekKey(m_menu.resources(), key)) // a folder is none
            picked.push_back({key, textOf(resource, field::caption)});
    const QModelIndex target = m_view->indexAt(drop->pos()).siblingAtColumn(0);
    const bool isGood = m_window.m_app->m_mayWrite && target.isValid() && !picked.empty();
    const bool isDrop = event->type() == QEvent::Drop;
    // The tree of the resource editor offers its rows for moving only, and would take those out
    // whose drop is accepted.
    const bool mayCopy = drop->possibleActions().testFlag(Qt::CopyAction);
    drop->setDropAction(!isGood ? Qt::IgnoreAction : mayCopy ? Qt::CopyAction : Qt::MoveAction);
    drop->setAccepted((isGood && (mayCopy || !isDrop)) || event->type() == QEvent::DragEnter);
    const QPersistentModelIndex row(target);
    if (isGood && isDrop && m_finishEdit() && row.isValid())
        add(row, std::move(picked));
    return true;
}

} // namespace orvo::menu
