// OperationsProbe.h: the menu editor with its operations in reach: desktops, clipboard, order,
// deletion.
#ifndef ORVO_TESTS_MENU_OPERATIONSPROBE_H
#define ORVO_TESTS_MENU_OPERATIONSPROBE_H

#include "tests/menu/MenuProbe.h"
#include "tests/menu/WindowHands.h"

#include <QToolButton>

namespace orvo::test {

class OperationsProbe : public MenuProbe {
public:
    using MenuProbe::MenuProbe;

    using OrvoMenu::getLastMenuOrder;
    using OrvoMenu::m_btnCancel;
    using OrvoMenu::m_btnSave;
    using OrvoMenu::m_clipboard;
    using OrvoMenu::m_cutPending;
    using OrvoMenu::on_actAddDescktop_triggered;
    using OrvoMenu::on_actAddFoldertvDesck_triggered;
    using OrvoMenu::on_actChangeDescktopOrFolder_triggered;
    using OrvoMenu::on_actCopyDescktopOrFolder_triggered;
    using OrvoMenu::on_actCopyMenuElement_triggered;
    using OrvoMenu::on_actCutMenuElement_triggered;
    using OrvoMenu::on_actDeleteElem_triggered;
    using OrvoMenu::on_actDeleteFromtvDesck_triggered;
    using OrvoMenu::on_actMoveDown_triggered;
    using OrvoMenu::on_actMoveUp_triggered;
    using OrvoMenu::on_actNewElemFolder_triggered;
    using OrvoMenu::on_actPasteDescktopOrFolder_triggered;
    using OrvoMenu::on_actPasteMenuElement_triggered;
    using OrvoMenu::on_cancel_pressed;
    using OrvoMenu::on_menu_dragdrop;
    using OrvoMenu::on_save_pressed;
    using OrvoMenu::removeDesckTopMessage;
    using OrvoMenu::removeMenuMessage;
};

/// The editor, started, with all desktops in sight.
class OperationsEditor : public EditorUnderTest<OperationsProbe> {
public:
    /// With that desktop open and that element current, if they are told.
    explicit OperationsEditor(TestHost& host, const char* desck = nullptr,
                              const char* element = nullptr)
        : EditorUnderTest(host, "Menu") {
        startOrFail();
        view("tvDesck")->expandAll();
        if (desck)
            openDesck(desck);
        if (element)
            makeCurrent(element);
    }

    /// Makes a row of `tvDesck` current, and so opens the menu of a desktop, down to its last
    /// level.
    void openDesck(const char* key) {
        view("tvDesck")->setCurrentIndex(module->desck(key));
        view("tvMenu")->expandAll();
    }
    void makeCurrent(const char* element) {
        view("tvMenu")->setCurrentIndex(module->element(element));
    }
    /// Makes the rows the selection, the last one current.
    void selectElements(std::initializer_list<const char*> keys) {
        view("tvMenu")->selectionModel()->clear();
        for (const char* key : keys)
            view("tvMenu")->selectionModel()->setCurrentIndex(
                module->element(key), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    CPopMessageBox* box() const { return module->m_popMessageBox; }
    bool isAsking() const { return boxStands(*module); }
    /// The text of the box.
    QString question() const { return boxText(*module); }
    QAbstractButton* button(int role) const { return boxButton(*module, role); }
    void answer(int role) { answerBox(*module, role); }

    static constexpr int Yes = YesRole;
    static constexpr int No = NoRole;
};

/// The same on that store.
class OperationsOn : public HostOnStore, public OperationsEditor {
public:
    explicit OperationsOn(TestStore& store, const char* desck = nullptr,
                          const char* element = nullptr)
        : HostOnStore(store)
        , OperationsEditor(host, desck, element) {}
};

/// The same on the plant.
class PlantOperations : public HostOnFilledStore, public OperationsEditor {
public:
    explicit PlantOperations(const char* desck = nullptr, const char* element = nullptr)
        : HostOnFilledStore(fillPlant)
        , OperationsEditor(host, desck, element) {}
};

} // namespace orvo::test

#endif
