#include "models/PasspDelegate.h"

#include "frame/RecordTextValidator.h"
#include "frame/Values.h"
#include "models/EditorCommit.h"
#include "models/MyButtonEdit.h"
#include "models/PropModel.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QPersistentModelIndex>
#include <QSignalBlocker>
#include <QStyle>
#include <QToolButton>

namespace {

QVariant cell(const QModelIndex& index, int column) {
    return index.sibling(index.row(), column).data(Qt::DisplayRole);
}

int editorType(const QModelIndex& index) {
    return cell(index, PropColumn::Editor).toInt();
}

QString rowName(const QModelIndex& index) {
    return cell(index, PropColumn::Name).toString();
}

/// Left edge of a check indicator in the middle of a cell.
int indicatorLeft(const QRect& rect) {
    const QStyleOptionButton plain;
    const int width = QApplication::style()
                          ->subElementRect(QStyle::SE_CheckBoxIndicator, &plain, nullptr)
                          .width();
    return rect.left() + rect.width() / 2 - width / 2;
}

} // namespace

PasspDelegate::PasspDelegate(PropModel* model, QObject*) : m_model(model) {}

bool PasspDelegate::isValueCell(const QModelIndex& index) const {
    return index.isValid() && index.column() == 1 && m_model->isEditorRow(index);
}

// ---------------------------------------------------------------------------------------------
// Editors

QWidget* PasspDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                     const QModelIndex& index) const {
    if (!isValueCell(index))
        return nullptr;
    // A screen reader names a field by the row's caption.
    const QString caption = cell(index, PropColumn::Caption).toString();
    switch (editorType(index)) {
    case MyEditorLine: {
        auto* line = new QLineEdit(parent);
        line->setAccessibleName(caption);
        line->setReadOnly(cell(index, PropColumn::ReadOnly).toBool());
        orvo::RecordTextValidator::install(line);
        connect(line, &QLineEdit::textChanged, this, &PasspDelegate::commitEditorData);
        return line;
    }
    case MyEditorCombo: {
        auto* combo = new QComboBox(parent);
        combo->setAccessibleName(caption);
        if (const QComboBox* entries = m_model->getComboBox(index)) {
            for (int i = 0; i < entries->count(); ++i)
                combo->addItem(entries->itemText(i), entries->itemData(i, Qt::UserRole));
        }
        connect(combo, qOverload<int>(&QComboBox::currentIndexChanged), this,
                &PasspDelegate::commitEditorData);
        return combo;
    }
    case MyEditorCheck: {
        auto* check = new QCheckBox(parent);
        check->setAccessibleName(caption);
        connect(check, &QCheckBox::stateChanged, this, &PasspDelegate::commitEditorData);
        // The owner hears of the new value at once. Should it show another passport upon that, the
        // view must not go on with this cell.
        const QPersistentModelIndex shown = index;
        m_model->setData(index, !index.data(Qt::DisplayRole).toBool(), Qt::EditRole);
        if (!shown.isValid()) {
            delete check;
            return nullptr;
        }
        return check;
    }
    case MyEditorButton: {
        auto* edit = new MyButtonEdit(index, parent);
        edit->setAccessibleName(caption);
        connect(edit, &MyButtonEdit::signPressButton, this, &PasspDelegate::OnPressButton);
        connect(edit, &MyButtonEdit::signClearText, this, &PasspDelegate::OnSignClearText);
        return edit;
    }
    default:
        return nullptr;
    }
}

void PasspDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    if (!isValueCell(index))
        return;
    const QVariant value = m_model->data(index, Qt::EditRole);
    const QString text = value.toString();
    switch (editorType(index)) {
    case MyEditorLine:
        // A field forgets what was typed in it when its text is set, and that comes back from the
        // model with each letter.
        if (auto* line = qobject_cast<QLineEdit*>(editor); line && line->text() != text) {
            const QSignalBlocker blocked(line);
            line->setText(text);
        }
        break;
    case MyEditorCombo:
        if (auto* combo = qobject_cast<QComboBox*>(editor)) {
            const QSignalBlocker blocked(combo);
            if (text.isNull())
                combo->setCurrentIndex(-1);
            else
                combo->setEditText(text);
        }
        break;
    case MyEditorCheck:
        if (auto* check = qobject_cast<QCheckBox*>(editor)) {
            if (orvo::isNull(value))
                check->setCheckState(Qt::PartiallyChecked);
            else
                check->setChecked(value.toBool());
        }
        break;
    case MyEditorButton:
        if (auto* edit = qobject_cast<MyButtonEdit*>(editor)) {
            edit->setText(text);
            edit->setReadOnly(true);
        }
        break;
    default:
        break;
    }
}

void PasspDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const {
    if (!isValueCell(index))
        return;
    switch (editorType(index)) {
    case MyEditorLine:
        if (const auto* line = qobject_cast<const QLineEdit*>(editor))
            model->setData(index, line->text(), Qt::EditRole);
        break;
    case MyEditorCombo:
        if (const auto* combo = qobject_cast<const QComboBox*>(editor))
            model->setData(index, combo->currentText(), Qt::EditRole);
        break;
    case MyEditorCheck:
        if (const auto* check = qobject_cast<const QCheckBox*>(editor)) {
            const bool unset = check->checkState() == Qt::PartiallyChecked;
            model->setData(index, unset ? QVariant() : QVariant(check->isChecked()), Qt::EditRole);
        }
        break;
    default: // A picked value is written by the owner, never from here.
        break;
    }
}

void PasspDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const {
    editor->setGeometry(option.rect);
    if (!isValueCell(index))
        return;
    const int type = editorType(index);
    if (type == MyEditorCheck) {
        QRect rect = option.rect;
        rect.moveLeft(indicatorLeft(option.rect));
        editor->setGeometry(rect);
    } else if (type == MyEditorButton) {
        if (const auto* edit = qobject_cast<MyButtonEdit*>(editor)) {
            const int width = edit->width();
            const int height = edit->height();
            edit->button()->setGeometry(
                QRect(QPoint(width - height - 1, 1), QPoint(width - 3, height - 2)));
        }
    }
}

void PasspDelegate::commitEditorData() {
    orvo::commitEditor(*this, sender());
}

void PasspDelegate::OnPressButton(const QModelIndex& index) {
    if (index.isValid())
        emit buttonPressed(rowName(index));
}

void PasspDelegate::OnSignClearText(const QModelIndex& index) {
    if (index.isValid())
        emit returnPressed(rowName(index));
}

// ---------------------------------------------------------------------------------------------
// Painting

void PasspDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    RowDelegate::initStyleOption(option, index);
    if (index.column() != 1)
        return;
    const bool isFirstCategory = !m_model->isEditorRow(index) && index.row() == 0;
    if (isFirstCategory && m_model->selectedCount() > 1) {
        option->text = tr("выделено строк: %1").arg(m_model->selectedCount());
    } else if (m_model->isMixed(index)) {
        option->text = tr("разные значения");
        option->font.setItalic(true);
    } else {
        return;
    }
    option->features |= QStyleOptionViewItem::HasDisplay; // also where the cell has no value
}

void PasspDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
    const int type = isValueCell(index) ? editorType(index) : MyEditorLine;
    if (type == MyEditorCheck)
        paintCheck(painter, option, index);
    else if (type != MyEditorButton)
        RowDelegate::paint(painter, option, index);
    else
        paintButton(painter, option, index);
}

void PasspDelegate::paintCheck(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    drawStyleSheet(painter, option, index);
    const bool on = index.data(Qt::DisplayRole).toBool();
    QStyleOptionButton check;
    check.rect = option.rect;
    check.rect.setLeft(indicatorLeft(option.rect));
    check.state |= QStyle::State_Enabled | (m_model->isMixed(index) ? QStyle::State_NoChange
                                            : on                    ? QStyle::State_On
                                                                    : QStyle::State_Off);
    QApplication::style()->drawControl(QStyle::CE_CheckBox, &check, painter, nullptr);
}

void PasspDelegate::paintButton(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    QStyleOptionButton button;
    button.rect = option.rect;
    // As wide as the cell is high, plus one pixel, at the right end.
    button.rect.setLeft(option.rect.right() - button.rect.bottom() + button.rect.top() - 1);
    drawStyleSheet(painter, option, index);
    QStyleOptionViewItem beside(option); // the text ends before the button
    beside.rect.setRight(button.rect.left() - 1);
    RowDelegate::paint(painter, beside, index);
    button.state = QStyle::State_Enabled;
    button.text = QStringLiteral("...");
    QApplication::style()->drawControl(QStyle::CE_PushButton, &button, painter, nullptr);
}

void PasspDelegate::drawStyleSheet(QPainter* painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    QStyleOptionViewItem copy(option);
    initStyleOption(&copy, index);
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    copy.text = QString();
    style->drawControl(QStyle::CE_ItemViewItem, &copy, painter, option.widget);
}
