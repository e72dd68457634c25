// MenuProbe.h: the menu editor with its members in reach, and the rows that its tests begin with.
#ifndef ORVO_TESTS_MENU_MENUPROBE_H
#define ORVO_TESTS_MENU_MENUPROBE_H

#include "menu/Columns.h"
#include "menu/OrvoMenu.h"
#include "tests/menu/ModuleFixture.h"

namespace orvo::test {

class MenuProbe : public OrvoMenu {
public:
    using OrvoMenu::OrvoMenu;

    using OrvoMenu::checkMimeType;
    using OrvoMenu::creator;
    using enum menu::EditMode;
    using EditMode = menu::EditMode;
    using OrvoMenu::getDesckElementPosition;
    using OrvoMenu::getMenuElementPosition;
    using OrvoMenu::insertElementToDesckTree;
    using OrvoMenu::loadDesckFolder;
    using OrvoMenu::loadDesckItems;
    using OrvoMenu::loadMenuFolder;
    using OrvoMenu::loadMenuRow;
    using OrvoMenu::m_currentDesckKey;
    using OrvoMenu::m_currentMenuKey;
    using OrvoMenu::m_desckModel;
    using OrvoMenu::m_editDesckIndex;
    using OrvoMenu::m_editMenuIndex;
    using OrvoMenu::m_editMenuKey;
    using OrvoMenu::m_editMode;
    using OrvoMenu::m_focusKey;
    using OrvoMenu::m_menuModel;
    using OrvoMenu::m_propModel;
    using OrvoMenu::m_skipDesckChange;
    using OrvoMenu::m_tabFolder;
    using OrvoMenu::m_tabMenu;
    using OrvoMenu::m_tabResFolder;
    using OrvoMenu::m_tabResource;
    using OrvoMenu::updateNewDesckNode;

    QModelIndex desck(const char* key) const {
        return m_desckModel->findIndexByKey(QString::fromUtf8(key));
    }
    QModelIndex element(const char* key) const {
        return m_menuModel->findIndexByKey(QString::fromUtf8(key));
    }
};

using MenuEditor = EditorUnderTest<MenuProbe>;

inline void addDesck(TestStore& store, const char* key, const char* parent, const char* caption,
                     bool folder, const char* order = nullptr) {
    store.insert("MenuFolder", {{"KeyLink", QString::fromUtf8(key)},
                                {"ParentKey", QString::fromUtf8(parent)},
                                {"caption", QString::fromUtf8(caption)},
                                {"order_", QString::fromLatin1(order    ? order
                                                               : folder ? "1000"
                                                                        : "2000")},
                                {"isFolder", folder}});
}

inline void addResource(TestStore& store, const char* key, int type, const char* name) {
    store.insert("MenuResource", {{"KeyLink", QString::fromUtf8(key)},
                                  {"type_", type},
                                  {"name_", QString::fromUtf8(name)},
                                  {"caption", QString::fromUtf8(name)}});
}

/// A menu element; without a resource it is a folder.
inline void addElement(TestStore& store, const char* desck, const char* key, const char* parent,
                       const char* caption, int order, const char* resource = nullptr) {
    store.insert("Menu", {{"KeyLink", QString::fromUtf8(key)},
                          {"parent", QString::fromUtf8(parent)},
                          {"FolderKey", QString::fromUtf8(desck)},
                          {"caption", QString::fromUtf8(caption)},
                          {"order_", order},
                          {"MenuResourceKey", resource ? QString::fromUtf8(resource) : QString()}});
}

/// Two levels of folders with desktops, and a menu on the desktop "armop".
inline void fillPlant(TestStore& store) {
    addDesck(store, "ceh", "", "Цех 1", true);
    addDesck(store, "pech", "ceh", "Печь", true);
    addDesck(store, "armop", "ceh", "АРМ оператора", false);
    addDesck(store, "armpech", "pech", "АРМ печи", false);
    addDesck(store, "sklad", "", "Склад", true);
    addDesck(store, "obshiy", "", "Общий", false);

    addResource(store, "rtrend", 1, "Trend");
    addResource(store, "rcalc", 2, "Calc");
    addResource(store, "rform", 3, "Boiler");
    addResource(store, "rfile", 4, "manual.pdf");

    addElement(store, "armop", "grafiki", "", "Графики", 1000);
    addElement(store, "armop", "trend", "grafiki", "Тренд", 0, "rtrend");
    addElement(store, "armop", "calc", "grafiki", "Расчёт", 1000, "rcalc");
    addElement(store, "armop", "glubzhe", "grafiki", "Глубже", 2000);
    addElement(store, "armop", "form", "glubzhe", "Котёл", 0, "rform");
    addElement(store, "armop", "shema", "", "Схема", 0, "rform");
    addElement(store, "armop", "propal", "", "Пропавший", 2000, "nosuch");
}

/// An editor on that store, started.
class MenuOn : public HostOnStore, public MenuEditor {
public:
    explicit MenuOn(TestStore& store) : HostOnStore(store), MenuEditor(host, "Menu") {
        startOrFail();
    }
};

/// An editor on the plant, not started yet.
class PlantEditor : public HostOnFilledStore, public MenuEditor {
public:
    PlantEditor() : HostOnFilledStore(fillPlant), MenuEditor(host, "Menu") {}
};
/// The same, started.
class StartedPlant : public PlantEditor {
public:
    /// With that desktop and that element current, if they are told.
    explicit StartedPlant(const char* desck = nullptr, const char* element = nullptr) {
        startOrFail();
        if (desck)
            view("tvDesck")->setCurrentIndex(module->desck(desck));
        if (element)
            view("tvMenu")->setCurrentIndex(module->element(element));
    }
};

} // namespace orvo::test

#endif
