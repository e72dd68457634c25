// LiveProbe.h: the menu editor of a small plant, at work: a store, a host and the window, with
// everything about notifications, creating and editing in reach.
#ifndef ORVO_TESTS_MENU_LIVEPROBE_H
#define ORVO_TESTS_MENU_LIVEPROBE_H

#include "tests/menu/Notices.h"
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"
#include "picker/PopObjectList.h"

#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>

namespace orvo::test {

class LiveProbe : public OperationsProbe {
public:
    using OperationsProbe::OperationsProbe;

    using OrvoMenu::m_popList;
    using OrvoMenu::m_popTarget;
    using OrvoMenu::on_actNewElemFile_triggered;
    using OrvoMenu::on_actNewElemFunction_triggered;
    using OrvoMenu::on_actNewElemModul_triggered;
    using OrvoMenu::on_Desck_NameChanged;
    using OrvoMenu::on_editor_valueChanged;
    using OrvoMenu::on_passp_buttonpressed;
    using OrvoMenu::on_passp_returnPressed;
    using OrvoMenu::on_poplist_OK_Pressed;
};

/// The rows of fillPlant, and what `fill` adds, in a started editor with all desktops in sight and
/// the menu of "armop" open to its last level.
struct Live {
    using Fill = void (*)(TestStore&);

    explicit Live(Fill fill = nullptr) : host(prepared(fill)), editor(host, "Menu") {
        editor.startOrFail();
        editor.view("tvDesck")->expandAll();
        openDesck("armop");
    }

    LiveProbe* operator->() { return editor.module.get(); }

    // What the engineer sees and does
    void openDesck(const char* key) {
        desckView()->setCurrentIndex(editor->desck(key));
        menuView()->expandAll();
    }
    void makeCurrent(const char* element) { menuView()->setCurrentIndex(editor->element(element)); }
    QTreeView* desckView() const { return editor.view("tvDesck"); }
    QTreeView* menuView() const { return editor.view("tvMenu"); }
    QTreeView* propView() const { return editor.view("tvProp"); }
    QString currentDesck() {
        return editor->m_desckModel->getItemKeyLink(desckView()->currentIndex());
    }
    QString currentElement() {
        return editor->m_menuModel->getItemKeyLink(menuView()->currentIndex());
    }
    /// The trees as text: captions, keys and those columns.
    QString desckText(const QList<int>& columns = {}) {
        return treetext::print(*editor->m_desckModel, menu::DesckColumn::KeyLink, columns);
    }
    QString menuText(const QList<int>& columns = {}) {
        return treetext::print(*editor->m_menuModel, menu::MenuColumn::KeyLink, columns);
    }
    /// Keys of the rows below a row, in their order.
    QString below(const QModelIndex& row) {
        QStringList keys;
        for (int i = 0; i < row.model()->rowCount(row); ++i)
            keys << row.model()->index(i, 0, row).data(KeyRole).toString();
        return keys.join(' ');
    }
    QVariant cell(const char* element, int column) {
        return editor->element(element).siblingAtColumn(column).data();
    }
    QVariant passport(const char* row) {
        return editor->m_propModel->getRowValue(QString::fromLatin1(row));
    }
    bool buttonsEnabled() {
        if (editor->m_btnSave->isEnabled() != editor->m_btnCancel->isEnabled())
            qFatal("the two buttons differ");
        return editor->m_btnSave->isEnabled();
    }
    void press(QToolButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    /// Writes over the value of a passport row in its editor, key by key.
    void type(const char* row, const QString& text) {
        QLineEdit* line = lineOf(row);
        line->selectAll();
        typeText(line, text);
    }
    /// The open editor of a passport row.
    QLineEdit* lineOf(const char* row) {
        return passportLine(propView(), *editor->m_propModel, row);
    }

    // What the server tells
    void deliver() { host.deliver(*editor.module); }
    int32_t mode() { return editor->m_editMode; }

    TestStore store;
    TestHost host;
    EditorUnderTest<LiveProbe> editor;

private:
    TestStore& prepared(Fill fill) {
        fillPlant(store);
        if (fill)
            fill(store);
        return store;
    }
};

} // namespace orvo::test

#endif
