#include "tests/editor/ExtensionEditor.h"

#include "frame/CommonFunctions.h"
#include "frame/Notification.h"
#include "frame/ScratchTable.h"
#include "frame/Siblings.h"
#include "frame/ViewRows.h"
#include "frame/WindowParts.h"

#include <QScopedValueRollback>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>

namespace orvo::test {
namespace {

using editor::AllRows;

const editor::RecordFields& fields() {
    static const editor::RecordFields all{
        {.column = ExtensionColumn::Extension,
         .title = "Расширение",
         .name = field::fileExt,
         .saved = AllRows,
         .passport = {.row = "ext", .caption = "Расширение", .position = 1}},
        {.column = ExtensionColumn::KeyLink,
         .title = "KeyLink",
         .name = field::KeyLink,
         .saved = AllRows,
         .passport = {.row = "keylink", .caption = "Идентификатор", .readOnly = true}},
        {.column = ExtensionColumn::IsNew, .title = "IsNew"},
    };
    return all;
}

} // namespace

ExtensionModel::ExtensionModel(const QStringList& headers)
    : TreeModelCore(headers, ExtensionColumn::KeyLink, Qt::ItemIsEditable) {}

QVariant ExtensionModel::data(const QModelIndex& index, int role) const {
    if (role == KeyRole)
        return itemKey(index);
    const bool isText = role == Qt::DisplayRole || role == Qt::EditRole;
    return index.isValid() && isText ? getItem(index)->data(index.column()) : QVariant();
}

ExtensionEditor::ExtensionEditor(COrvoCliApp* app) : EditorWindow(app) {
    auto* splitter = new QSplitter(this);
    setCentralWidget(splitter);
    m_list = new QTreeView(splitter);
    m_list->setObjectName("tvExt");
    m_passport = new QTreeView(splitter);
    m_passport->setObjectName("tvProp");
    makeEditButtons();
    QToolBar* bar = addToolBar(QString());
    bar->addAction(tr("Создать"), this, &ExtensionEditor::add);
    bar->addAction(tr("Удалить"), this, &ExtensionEditor::askToDelete);
    bar->addWidget(m_btnSave);
    bar->addWidget(m_btnCancel);
    arrangeToolBar(bar);
}

ExtensionEditor::~ExtensionEditor() {
    destroyViews();
}

bool ExtensionEditor::ModuleStart() {
    SetModTitle(tr("Расширения файлов"), QString());
    if (!fetch(table::MenuFileExt, m_table))
        return false;
    setKeys(m_table, {field::fileExt});
    m_edit.end();
    enableEditButtons(false);

    arrangeTree(m_list);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_model = std::make_unique<ExtensionModel>(fields().titles());
    m_list->setModel(m_model.get());
    hideColumns(m_list, ExtensionColumn::KeyLink, ExtensionColumn::IsNew);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ExtensionEditor::currentChanged);
    arrangePassport(m_passport);

    const auto show = [this](const Notification& change) {
        if (const MDRData* record = change.action() == OrvoEventInsert
                                        ? createAndMerge(change.event(), &m_table)
                                        : editAndMerge(change.event(), &m_table))
            showRecord(change, record);
    };
    const auto remove = [this](const Notification& change) {
        removeRecord(change, m_table, m_list, m_model->findIndexByKey(change.key()));
    };
    follow({{table::MenuFileExt, show, show, remove}}, {m_list, m_passport});

    walkAll(m_table, 1, [this](const MDRData* record) {
        const int row = m_model->rowCount();
        m_model->insertRows(row, 1);
        setRow(*m_model, m_model->index(row, 0), fields().values(record));
        return true;
    });
    return true;
}

QString ExtensionEditor::extension(const QModelIndex& row) const {
    return row.siblingAtColumn(ExtensionColumn::Extension).data().toString();
}

void ExtensionEditor::currentChanged(const QModelIndex& current) {
    if (m_moves)
        return;
    m_currentKey = current.siblingAtColumn(ExtensionColumn::KeyLink).data().toString();
    m_propModel->clearRows();
    if (m_edit.isOpen() && !m_edit.isOf(m_currentKey))
        on_save_pressed();
    if (current.isValid())
        m_passport->expand(addPassport(current, fields(), AllRows));
}

void ExtensionEditor::showRecord(const Notification& change, const MDRData* record) {
    const QString key = change.key();
    const int place = siblingPosition(m_table, 1, KeyValues(), key, record,
                                      KeyValues().text(textOf(record, field::fileExt)),
                                      [](const MDRData*) { return true; });
    QModelIndex row = m_model->findIndexByKey(key);
    if (!row.isValid() && m_model->insertRows(place, 1))
        row = m_model->index(place, 0);
    setRow(*m_model, row, fields().values(record));
    setRow(*m_model, row, {{ExtensionColumn::IsNew, false}});
    m_edit.merge(*m_model, row, change, record, fields());
    if (row.row() != place) {
        const QScopedValueRollback<bool> moving(m_moves, true);
        const bool wasCurrent = currentStandsIn(m_list, row);
        m_model->move(row.row(), std::min(place, m_model->rowCount() - 1));
        if (m_edit.isOf(key))
            m_edit.follow(m_model->findIndexByKey(key));
        if (wasCurrent)
            m_list->setCurrentIndex(m_model->findIndexByKey(key));
    }
    if (sameText(key, m_currentKey))
        refreshPassport(m_model->findIndexByKey(key), fields());
}

void ExtensionEditor::add() {
    if (!m_model)
        return;
    if (m_edit.isOpen())
        on_save_pressed();
    const int row = m_model->rowCount();
    const QString key = QString::fromLatin1(GenGuid32());
    m_model->insertRows(row, 1);
    const QModelIndex added = m_model->index(row, 0);
    setRow(*m_model, added,
           {{ExtensionColumn::KeyLink, key},
            {ExtensionColumn::Extension, tr("новое")},
            {ExtensionColumn::IsNew, true}});
    m_edit.beginNew(added, key);
    enableEditButtons(true);
    m_list->setCurrentIndex(added);
}

void ExtensionEditor::on_editor_valueChanged(const QString& rowName, const QVariant& value) {
    const QModelIndex row = m_model->findIndexByKey(m_currentKey);
    if (!row.isValid())
        return;
    if (!m_edit.isOpen()) {
        m_edit.begin(row, m_currentKey);
        enableEditButtons(true);
    }
    const int column = fields().editedColumn(rowName);
    if (column >= 0)
        m_edit.change(*m_model, column, value);
}

void ExtensionEditor::on_save_pressed() {
    const QModelIndex row = m_edit.index();
    ScratchTable out(*m_app->m_session, table::MenuFileExt);
    if (row.isValid() && out.fetch()) {
        RowWriter record = out.add(m_edit.isNew() ? MDX_INSERT : MDX_UPDATE);
        fields().write(record, row, AllRows);
        m_edit.markSent();
    }
    m_edit.end();
    enableEditButtons(false);
    out.send();
}

void ExtensionEditor::on_cancel_pressed() {
    const QPersistentModelIndex row = m_edit.index();
    const bool isNew = m_edit.isNew();
    m_edit.end();
    enableEditButtons(false);
    if (!row.isValid())
        return;
    if (isNew)
        removePlaceholder(m_list, row);
    else if (const MDRData* record = seekKey(m_table, m_edit.key()))
        setRow(*m_model, row, fields().values(record));
    if (sameText(m_edit.key(), m_currentKey))
        refreshPassport(row, fields());
}

void ExtensionEditor::askToDelete() {
    const QModelIndex row = m_list->currentIndex();
    if (row.isValid())
        ask({.text = tr("Удалить расширение \"%1\"?").arg(extension(row)),
             .slot = SLOT(deleteAnswered(QAbstractButton*)),
             .table = table::MenuFileExt,
             .keys = {m_currentKey}});
}

void ExtensionEditor::deleteAnswered(QAbstractButton* button) {
    if (answeredYes(button))
        deleteRecords(table::MenuFileExt, {m_currentKey});
}

QString ExtensionEditor::ModEditText() const {
    return m_edit.isOpen() ? tr("расширение \"%1\"").arg(extension(m_edit.index())) : QString();
}

bool ExtensionEditor::ModEditSave() {
    on_save_pressed();
    return true;
}

void ExtensionEditor::ModEditCancel() {
    on_cancel_pressed();
}

} // namespace orvo::test
