// What the keys and the client's menu entries do in the tree of the resource editor.
#include "ui_OrvoResources.h"

#include "resources/OrvoResources.h"

#include "frame/Kinds.h"
#include "frame/Vocabulary.h"
#include "resources/Columns.h"
#include "resources/Fields.h"

#include <QComboBox>
#include <QLineEdit>
#include <QToolButton>
#include <QTreeView>

using orvo::resources::ResColumn;
namespace keys = orvo::keys;

void OrvoResources::enableActions(QTreeView* pane) {
    const QModelIndex row = m_ui->tvRes->currentIndex();
    if (pane != m_ui->tvRes || m_edit.isOpen() || !row.isValid())
        return;
    setActionsDisabled();
    if (m_resModel->itemInSystemArea(row))
        setActionsEnabledSystem(row);
    else
        setActionsEnabledMenuRes(row);
}

QAction* OrvoResources::creatorHere() const {
    const QModelIndex row = m_ui->tvRes->currentIndex();
    if (!m_app->m_mayWrite || !row.isValid())
        return nullptr;
    for (QAction* action : creators() + QList<QAction*>{m_ui->actLoadFiles})
        if (action != m_ui->actAddFolder && permits(action, row))
            return action;
    return nullptr;
}

void OrvoResources::explainLock() {
    const QModelIndex row = m_ui->tvRes->currentIndex().siblingAtColumn(0);
    const QString who = orvo::resources::textAt(row, ResColumn::Lock);
    const QString text =
        tr("Здесь блокировка не снимается: её снимает %1 там, где поставил, или администратор "
           "командой orvo-admin unlock %2.")
            .arg(who.isEmpty() ? tr("тот, кто её поставил,") : who, orvo::resources::nameOf(row));
    tell(tr("Снять блокировку"), text);
}

void OrvoResources::bindCommands() {
    orvo::editor::Commands& all = commands();
    QTreeView* tree = m_ui->tvRes;
    bindEditCommands({tree});

    all.bind(
        keys::newItem, tree, nullptr, [this] { creatorHere()->trigger(); },
        [this] { return creatorHere() != nullptr; });
    const std::pair<const char*, QAction*> actions[] = {
        {keys::newFolder, m_ui->actAddFolder}, {keys::cut, m_ui->actCut},
        {keys::paste, m_ui->actPaste},         {keys::extract, m_ui->actExtractFiles},
        {keys::unlock, m_ui->actUnBlock},      {keys::openForm, m_ui->actOpenScheme}};
    for (const auto& [id, action] : actions)
        all.bind(id, tree, action);
    for (const orvo::ResourceKind& kind : orvo::resourceKinds)
        if (kind.topFolder) // the file area has the same action as the forms
            all.bind(keys::newOf(kind.number), tree, creator(kind.number));
    all.bind(
        keys::rename, tree, nullptr,
        [this] { passportKeys().editRow(QString::fromLatin1(orvo::field::caption)); },
        [this, tree] { return m_app->m_mayWrite && tree->currentIndex().isValid(); }, true);
    const auto isNew = [this, tree] {
        return m_editState == NewRow && tree->currentIndex().siblingAtColumn(0) == m_newItemIndex;
    };
    all.bind(
        keys::remove, tree, m_ui->actDelete,
        [this, isNew, tree] {
            if (isNew()) {
                on_cancel_pressed();
            } else if (finishEdit()) {
                enableActions(tree);
                m_ui->actDelete->trigger();
            }
        },
        [this, isNew, tree] {
            return isNew() || (m_app->m_mayWrite && tree->currentIndex().isValid() &&
                               permits(m_ui->actDelete, tree->currentIndex()));
        },
        true);
    // Rows of one kind are selected together, and resources differ by their names.
    bindSelection(
        tree,
        [this, tree] {
            orvo::editor::SelectedRecords chosen{orvo::table::MenuResource,
                                                 &orvo::resources::itemFields(), m_currentKey};
            for (const QModelIndex& row : tree->selectionModel()->selectedRows(0))
                if (!orvo::resources::isFolder(row))
                    chosen.rows.push_back({orvo::resources::textAt(row, ResColumn::KeyLink),
                                           orvo::editor::ItemRows, row});
            return chosen;
        },
        {QString::fromLatin1(orvo::field::caption)}, {QStringLiteral("object")});
    for (QTreeView* pane : {tree, m_ui->tvProp})
        all.bind(
            keys::uses, pane, nullptr,
            [this, tree] {
                showUses(orvo::table::MenuResource,
                         orvo::resources::textAt(tree->currentIndex(), ResColumn::KeyLink));
            },
            [tree] {
                const QModelIndex row = tree->currentIndex();
                return row.isValid() && !orvo::resources::isFolder(row);
            },
            true);
    const auto record = [tree] { return orvo::resources::recordOf(tree->currentIndex()); };
    bindRecord(tree, record);
    bindPassportRecord(record);
    tree->setAccessibleName(tr("Каталог ресурсов"));
    nameForReaders(tr("Паспорт ресурса"));
    m_edSearch->setAccessibleName(tr("Поиск в каталоге"));
    m_btnSearchDown->setAccessibleName(tr("Следующее найденное"));
    m_btnSearchUp->setAccessibleName(tr("Предыдущее найденное"));
    m_cmbSearch->setAccessibleName(tr("Искать по"));
    all.addKeys(m_btnCreate, m_btnCreate->text(), keys::newItem);

    connect(m_ui->actUnBlock, &QAction::triggered, this, &OrvoResources::explainLock);
    all.addKeys(m_cmbSearch, tr("Искать по"), keys::searchBy);
}
