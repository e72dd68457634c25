// WindowHands.h: what an engineer does in either editor besides the trees: types into the passport
// and answers boxes. Header only.
#ifndef ORVO_TESTS_MENU_WINDOWHANDS_H
#define ORVO_TESTS_MENU_WINDOWHANDS_H

#include "frame/OrvoClient.h"
#include "models/PropModel.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>
#include <QVariantAnimation>

namespace orvo::test {

// ---------------------------------------------------------------------------------------------
// The passport

/// Types a text, Cyrillic too, key by key.
inline void typeText(QWidget* editor, const QString& text) {
    for (const QChar letter : text)
        QTest::sendKeyEvent(QTest::Click, editor, Qt::Key_unknown, QString(letter), Qt::NoModifier);
}

/// The button that clears a search field fades, and Qt frees a fade only at its end, even after the
/// window: a later and longer one ends behind all of them.
inline void waitForFades() {
    QVariantAnimation last;
    last.setDuration(300);
    last.setStartValue(0);
    last.setEndValue(1);
    last.start();
    QTRY_COMPARE(last.state(), QAbstractAnimation::Stopped);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// The open editor of a passport row.
inline QLineEdit* passportLine(QTreeView* view, const PropModel& model, const char* row) {
    const QModelIndex value = model.findIndexByKey(QString::fromLatin1(row)).siblingAtColumn(1);
    view->setCurrentIndex(value);
    if (!view->indexWidget(value))
        view->edit(value);
    auto* line = qobject_cast<QLineEdit*>(view->indexWidget(value));
    if (!line)
        qFatal("no editor for %s", row);
    return line;
}

// ---------------------------------------------------------------------------------------------
// The message box of a module

constexpr int YesRole = 5;
constexpr int NoRole = 6;

inline bool boxStands(const COrvoCliMod& module) {
    return module.m_popMessageBox && module.m_popMessageBox->isVisible();
}

/// Title and text, a line for each.
inline QString boxText(const COrvoCliMod& module) {
    QStringList texts;
    for (const QLabel* label : module.m_popMessageBox->findChildren<QLabel*>())
        texts << label->text();
    return texts.join('\n');
}

inline QAbstractButton* boxButton(const COrvoCliMod& module, int role) {
    for (QAbstractButton* button : module.m_popMessageBox->findChildren<QAbstractButton*>())
        if (module.m_popMessageBox->ButtonRole(button) == role)
            return button;
    qFatal("the box has no button of role %d", role);
}

inline void answerBox(const COrvoCliMod& module, int role) {
    QTest::mouseClick(boxButton(module, role), Qt::LeftButton);
}

} // namespace orvo::test

#endif
