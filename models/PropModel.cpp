#include "models/PropModel.h"

#include "frame/Text.h"

#include <QBrush>
#include <QColor>
#include <QScopedValueRollback>

namespace {

bool isEditRow(const PaspRec& row) {
    return row.data(PropColumn::IsEditRow).toBool();
}

bool isCombo(const PaspRec& row) {
    return row.data(PropColumn::Editor).toInt() == MyEditorCombo;
}

} // namespace

PropModel::PropModel(const QStringList& headers, const QString& iconsPath, QObject*)
    : TreeModelCore(headers, PropColumn::Name, Qt::ItemIsEditable)
    , m_iconsPath(iconsPath) {}

QVariant PropModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const PaspRec& row = *getItem(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return row.data(index.column());
    case Qt::BackgroundRole:
        return isEditRow(row) ? QVariant() : QBrush(QColor(235, 235, 235));
    case Qt::ForegroundRole:
        return index.column() == PropColumn::Value && row.data(PropColumn::ReadOnly).toBool()
                   ? QColor(0x80, 0x80, 0x80)
                   : QVariant();
    case Qt::AccessibleTextRole:
        if (index.column() == PropColumn::Value && isMixed(index))
            return orvo::Text::tr("разные значения");
        if (index.column() != PropColumn::Value ||
            row.data(PropColumn::Editor).toInt() != MyEditorCheck || !isEditRow(row))
            return {};
        return row.data(PropColumn::Value).toBool() ? orvo::Text::tr("да") : orvo::Text::tr("нет");
    case orvo::KeyRole:
        return row.data(PropColumn::Name);
    default:
        return {};
    }
}

QVariant PropModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::AccessibleTextRole && orientation == Qt::Horizontal &&
        section <= PropColumn::Value)
        return section == PropColumn::Caption ? orvo::Text::tr("Свойство")
                                              : orvo::Text::tr("Значение");
    return TreeModelCore::headerData(section, orientation, role);
}

bool PropModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (m_clearing)
        return false;
    const QVariant old = getItem(index)->data(index.column());
    // Taken first: a slot of dataChanged may remove the row.
    const QString name = getItem(index)->data(PropColumn::Name).toString();
    const bool setsName = index.column() == PropColumn::Name;
    if (!TreeModelCore::setData(index, value, role))
        return false;
    if (value != old)
        emit editorRowValueChanged(setsName ? value.toString() : name, value);
    return true;
}

bool PropModel::addRow(const QVector<QVariant>& values, const QModelIndex& parent) {
    if (parent.isValid() && parent.column() != 0)
        return false;
    Batch rows = newRows(parent);
    rows.add(values);
    return insertFilledRows(rowCount(parent), std::move(rows), parent);
}

bool PropModel::AddEditorRow(const QString& name, const QString& caption, MyEditorType editor,
                             const QModelIndex& parent, bool readOnly) {
    return addRow({caption, QVariant(), static_cast<int>(editor), readOnly, name, true}, parent);
}

bool PropModel::AddCategoryRow(const QString& name, const QString& caption,
                               const QModelIndex& parent) {
    return addRow({caption, QVariant(), QVariant(), QVariant(), name, false}, parent);
}

PaspRec* PropModel::editorRow(const QString& name) const {
    const QModelIndex index = findIndexByKey(name);
    return isEditorRow(index) ? item(index) : nullptr;
}

bool PropModel::setRowValue(const QString& name, const QVariant& value) {
    PaspRec* row = editorRow(name);
    return row && store(row, PropColumn::Value, value);
}

QVariant PropModel::getRowValue(const QString& name) const {
    const PaspRec* row = editorRow(name);
    return row ? row->data(PropColumn::Value) : QVariant();
}

bool PropModel::isEditorRow(const QModelIndex& index) const {
    return index.isValid() && isEditRow(*getItem(index));
}

bool PropModel::clearRows() {
    const QScopedValueRollback<bool> clearing(m_clearing, true);
    return rowCount() > 0 && removeRows(0, rowCount());
}

bool PropModel::setSelected(int count, const QSet<QString>& mixed) {
    if (count == m_selectedCount && mixed == m_mixed)
        return false;
    m_selectedCount = count;
    m_mixed = mixed;
    return true;
}

bool PropModel::isMixed(const QModelIndex& index) const {
    return !m_mixed.isEmpty() && isEditorRow(index) &&
           m_mixed.contains(getItem(index)->data(PropColumn::Name).toString().toLower());
}

void PropModel::setComboBox(const QString& name, QComboBox* comboBox) {
    PaspRec* row = editorRow(name);
    if (row && isCombo(*row))
        row->setComboBox(comboBox);
}

QComboBox* PropModel::getComboBox(const QModelIndex& index) const {
    if (!index.isValid())
        return nullptr;
    const PaspRec& row = *getItem(index);
    return isCombo(row) ? row.comboBox() : nullptr;
}
