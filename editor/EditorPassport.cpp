// The passport of an editor's window, and the picker of its icon row.
#include "editor/EditorWindow.h"

#include "frame/CommonFunctions.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "picker/PopObjectList.h"

#include <QCoreApplication>
#include <QMenu>
#include <QTreeView>

namespace orvo::editor {
namespace {

constexpr char iconRow[] = "icon";

} // namespace

void EditorWindow::arrangePassport(QTreeView* view) {
    m_passportView = view;
    m_propModel = std::make_unique<PropModel>(passportColumns(), iconsPath(*this), this);
    view->setModel(m_propModel.get());
    orvo::arrangePassport(view);
    followExpansion(view, m_propModel.get());
    m_passpDelegate = std::make_unique<PasspDelegate>(m_propModel.get(), this);
    view->setItemDelegate(m_passpDelegate.get());
    m_passportKeys = new PassportKeys(view);
    connect(m_propModel.get(), &PropModel::editorRowValueChanged, this, &EditorWindow::noteTyped);
    connect(m_propModel.get(), &PropModel::editorRowValueChanged, this,
            &EditorWindow::on_editor_valueChanged);
    connect(m_passpDelegate.get(), &PasspDelegate::buttonPressed, this,
            &EditorWindow::on_passp_buttonpressed);
}

QString EditorWindow::translated(const char* text) const {
    return QCoreApplication::translate(metaObject()->className(), text);
}

QModelIndex EditorWindow::addPassport(const QModelIndex& row, const RecordFields& fields, Rows kind,
                                      const Adjust& adjust) {
    std::vector<PassportRow> rows;
    for (const RecordField* field : fields.passport(kind)) {
        const PassportCell& cell = field->passport;
        PassportRow shown{QString::fromLatin1(cell.row), translated(cell.caption), cell.editor,
                          cell.readOnly, row.siblingAtColumn(field->column).data()};
        if (adjust)
            adjust(*field, shown);
        rows.push_back(std::move(shown));
    }
    return addPassportCategory(*m_propModel, QStringLiteral("properties"),
                               translated(QT_TRANSLATE_NOOP("orvo", "Свойства")), rows);
}

void EditorWindow::refreshPassport(const QModelIndex& row, const RecordFields& fields) {
    for (const RecordField& field : fields) {
        if (!field.isEditable())
            continue;
        const QString name = QString::fromLatin1(field.passport.row);
        const QModelIndex cell =
            m_propModel->findIndexByKey(name).siblingAtColumn(PropColumn::Value);
        const QVariant value = row.siblingAtColumn(field.column).data();
        if (cell.data() == value || !m_propModel->setRowValue(name, value))
            continue;
        if (QWidget* editor = m_passportView->indexWidget(cell))
            m_passpDelegate->setEditorData(editor, cell);
    }
    m_passportView->viewport()->update();
}

void EditorWindow::bindSelection(QTreeView* tree, std::function<SelectedRecords()> selected,
                                 const QStringList& own, const QStringList& singular) {
    m_selected = std::move(selected);
    m_selectionEdit = std::make_unique<SelectionEdit>(own + singular);
    bindApplyToAll(singular);
    m_showSelected.setSingleShot(true);
    m_showSelected.setInterval(0);
    connect(&m_showSelected, &QTimer::timeout, this, &EditorWindow::showSelected);
    const auto soon = [this] { m_showSelected.start(); };
    connect(tree->selectionModel(), &QItemSelectionModel::selectionChanged, &m_showSelected, soon);
    connect(tree->model(), &QAbstractItemModel::dataChanged, &m_showSelected, soon);
    connect(m_propModel.get(), &QAbstractItemModel::rowsInserted, &m_showSelected, soon);
    connect(this, &EditorWindow::editStateChanged, &m_showSelected, soon);
}

void EditorWindow::bindRecord(QTreeView* pane, const std::function<RecordName()>& record) {
    for (const char* id : keys::recordCommands)
        commands().bind(
            id, pane, nullptr, [this, record, id] { runForRecord(*m_app, record(), id); },
            [this, record, id] { return offersForRecord(*m_app, record(), id); }, true);
}

void EditorWindow::bindPassportRecord(const std::function<RecordName()>& record) {
    QTreeView* view = m_passportView;
    bindRecord(view, record);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(view, &QTreeView::customContextMenuRequested, this,
            [this, view, record](const QPoint& point) {
                QMenu menu;
                addRecordActions(*m_app, menu, record());
                if (!menu.isEmpty())
                    execMenu(menu, view->viewport()->mapToGlobal(point));
            });
}

void EditorWindow::showSelected() {
    if (!m_passportView || !m_commands) // the views are gone
        return;
    const SelectedRecords all = m_selected();
    const QSet<QString> mixed = m_selectionEdit->mixed(all, !ModEditText().isEmpty());
    const int count = all.areSeveral() ? static_cast<int>(all.rows.size()) : 1;
    if (m_propModel->setSelected(count, mixed))
        m_passportView->viewport()->update();
}

void EditorWindow::noteTyped(const QString& rowName) {
    if (m_selected)
        m_selectionEdit->type(m_selected(), rowName, ModEditText().isEmpty());
}

void EditorWindow::writeToSelected(ScratchTable& out, const QString& key, const QModelIndex& row) {
    if (m_selected)
        m_selectionEdit->write(out, key, row);
}

void EditorWindow::bindApplyToAll(const QStringList& singular) {
    const auto rowName = [this] {
        return m_passportView->currentIndex().siblingAtColumn(PropColumn::Name).data().toString();
    };
    const auto may = [this, singular, rowName] {
        const SelectedRecords all = m_selected();
        return m_app->m_mayWrite && all.rows.size() > 1 &&
               !singular.contains(rowName(), Qt::CaseInsensitive) &&
               SelectionEdit::editedField(*all.fields, rowName());
    };
    const auto apply = [this, rowName] {
        const SelectedRecords all = m_selected();
        const RecordField* field = SelectionEdit::editedField(*all.fields, rowName());
        const QVariant value = m_propModel->getRowValue(rowName());
        if (!ModEditText().isEmpty() && !ModEditSave())
            return;
        ScratchTable out(*m_app->m_session, all.table);
        if (!out.fetch())
            return;
        for (const SelectedRecords::One& one : all.rows)
            if ((field->passport.on & one.kind) != 0) {
                RowWriter record = out.add(MDX_UPDATE);
                record.text(orvo::field::KeyLink, one.key);
                field->write(record, value);
            }
        if (!out.isEmpty())
            out.send();
    };
    m_commands->bind(keys::applyToAll, m_passportView, nullptr, apply, may, true);
}

CPopObjectList* EditorWindow::picker() {
    if (!m_popList) {
        m_popList = new CPopObjectList(this);
        m_popList->moveToCenter();
        m_popList->m_popup = true;
        connect(m_popList, &CPopObjectList::btnOK_pressed, this,
                &EditorWindow::on_poplist_OK_Pressed);
    }
    return m_popList;
}

CPopObjectList* EditorWindow::iconPicker() {
    CPopObjectList* list = picker();
    list->setWindowTitle(translated(QT_TRANSLATE_NOOP("orvo", "Выбор иконок АРМ")));
    list->objectType = Kind::File;
    list->multipleChoice = false;
    list->sourceName = QString::fromLatin1(iconFolder);
    return list;
}

bool EditorWindow::isIconRow(const QString& rowName) {
    return sameText(rowName, QString::fromLatin1(iconRow));
}

bool EditorWindow::refusesChosenFolder(const CPopObjectList& list) {
    const QModelIndexList rows = list.tvObj()->selectionModel()->selectedRows(0);
    if (rows.isEmpty() || !rows.first().siblingAtColumn(PickColumn::IsFolder).data().toBool())
        return false;
    refuse(translated(QT_TRANSLATE_NOOP("orvo", "Выбрана папка \"%1\", а нужно то, что в ней."))
               .arg(list.chosenName));
    return true;
}

void EditorWindow::takeChosenIcon() {
    if (refusesChosenFolder(*m_popList))
        return;
    editPassportValue(*m_propModel, QString::fromLatin1(iconRow), m_popList->chosenName);
}

} // namespace orvo::editor
