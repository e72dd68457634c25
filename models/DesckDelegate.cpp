#include "models/DesckDelegate.h"

#include "frame/RecordTextValidator.h"
#include "frame/Text.h"
#include "models/DesckTreeModel.h"
#include "models/EditorCommit.h"

#include <QLineEdit>
#include <QSignalBlocker>

namespace {

bool isNameCell(const QModelIndex& index) {
    return index.isValid() && index.column() == 0;
}

} // namespace

DesckDelegate::DesckDelegate(DesckTreeModel* model, QObject* parent)
    : RowDelegate(parent)
    , m_model(model) {}

QWidget* DesckDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                     const QModelIndex& index) const {
    if (!isNameCell(index))
        return nullptr;
    auto* editor = new QLineEdit(parent);
    editor->setAccessibleName(orvo::Text::tr("Имя"));
    orvo::RecordTextValidator::install(editor);
    connect(editor, &QLineEdit::textChanged, this, &DesckDelegate::commitEditorData);
    return editor;
}

void DesckDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    auto* line = qobject_cast<QLineEdit*>(editor);
    if (!isNameCell(index) || !line)
        return;
    const QString text = m_model->data(index, Qt::EditRole).toString();
    if (line->text() == text) // else the field would forget what was typed, with each letter
        return;
    const QSignalBlocker blocked(line);
    line->setText(text);
}

void DesckDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const {
    const auto* line = qobject_cast<const QLineEdit*>(editor);
    if (isNameCell(index) && line)
        model->setData(index, line->text(), Qt::EditRole);
}

void DesckDelegate::commitEditorData() {
    orvo::commitEditor(*this, sender());
}
