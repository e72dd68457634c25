#include "models/MyButtonEdit.h"

#include "frame/Text.h"

#include <QToolButton>

MyButtonEdit::MyButtonEdit(const QModelIndex& index, QWidget* parent)
    : QLineEdit(parent)
    , m_button(new QToolButton(this))
    , m_index(index) {
    setWindowFlags(Qt::WindowFlags());
    m_button->setText(QStringLiteral("..."));
    m_button->setAccessibleName(orvo::Text::tr("Выбрать"));
    connect(m_button, &QToolButton::clicked, this, &MyButtonEdit::pressButton);
    connect(this, &QLineEdit::textEdited, this, &MyButtonEdit::OnTextEdited);
    connect(this, &QLineEdit::returnPressed, this, &MyButtonEdit::OnReturnPressed);
}

void MyButtonEdit::Clear() {}

void MyButtonEdit::pressButton() {
    emit signPressButton(m_index);
}

void MyButtonEdit::OnReturnPressed() {
    if (!text().isEmpty())
        emit signClearText(m_index);
}

void MyButtonEdit::OnTextEdited(const QString&) {}
