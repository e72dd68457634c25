// MyButtonEdit.h: a line edit with a "..." button inside, for values that are picked, not typed.
#ifndef ORVO_MODELS_MYBUTTONEDIT_H
#define ORVO_MODELS_MYBUTTONEDIT_H

#include <QLineEdit>
#include <QPersistentModelIndex>

class QToolButton;

class MyButtonEdit : public QLineEdit {
    Q_OBJECT
public:
    /// An editor of the cell `index`.
    MyButtonEdit(const QModelIndex& index, QWidget* parent);

    /// The button, a child of this widget; the delegate places it.
    QToolButton* button() const { return m_button; }
    void Clear(); ///< does nothing

public slots:
    void pressButton();
    /// Return on a filled field asks for its value to be cleared.
    void OnReturnPressed();
    void OnTextEdited(const QString& text); ///< does nothing

signals:
    /// Both carry the editor's cell, which is invalid once its row has gone.
    void signPressButton(const QModelIndex& index);
    void signClearText(const QModelIndex& index);

private:
    QToolButton* m_button; ///< child widget
    QPersistentModelIndex m_index;
};

#endif
