// ResProbe.h: the resource editor with its members in reach, and the catalogue that its tests begin
// with.
#ifndef ORVO_TESTS_RESOURCES_RESPROBE_H
#define ORVO_TESTS_RESOURCES_RESPROBE_H

#include "resources/Columns.h"
#include "resources/Fields.h"
#include "resources/OrvoResources.h"
#include "tests/menu/ModuleFixture.h"

namespace orvo::test {

using resources::ResColumn;

class ResProbe : public OrvoResources {
public:
    using OrvoResources::OrvoResources;

    using OrvoResources::checkClipBoardType;
    using OrvoResources::EditRow;
    using OrvoResources::getFilePath;
    using OrvoResources::getFolderCount;
    using OrvoResources::getFormPath;
    using OrvoResources::getResFolderPosition;
    using OrvoResources::getResItemPosition;
    using OrvoResources::Idle;
    using OrvoResources::loadItemPassport;
    using OrvoResources::loadResItemRow;
    using OrvoResources::m_currentKey;
    using OrvoResources::m_editState;
    using OrvoResources::m_focusKey;
    using OrvoResources::m_menuCreate;
    using OrvoResources::m_newItemIndex;
    using OrvoResources::m_propModel;
    using OrvoResources::m_resModel;
    using OrvoResources::m_tabOrphans;
    using OrvoResources::m_tabResFolder;
    using OrvoResources::m_tabResource;
    using OrvoResources::m_tabUsers;
    using OrvoResources::m_userLogin;
    using OrvoResources::NewRow;
    using OrvoResources::on_common_error_message;
    using OrvoResources::on_editor_valueChanged;
    using OrvoResources::refuse;

    QModelIndex row(const char* key, int column = 0) const {
        const QModelIndex index = m_resModel->findIndexByKey(QString::fromUtf8(key));
        return index.sibling(index.row(), column);
    }
    QString text(const char* key, int column) const { return row(key, column).data().toString(); }
    /// Takes a record out of its table behind the back of the editor; its row stays.
    void forgetRecord(const QString& key) {
        for (const auto& [table, rows] : {std::pair(&m_tabResource, &resources::itemRows()),
                                          std::pair(&m_tabResFolder, &resources::folderRows())})
            if (MDRData* record = orvo::seekKey(*table, key)) {
                m_resModel->keepValues(*rows, record);
                table->RecDel(record);
            }
    }
    QVariant passport(const char* name) const {
        return m_propModel->getRowValue(QString::fromUtf8(name));
    }
};

using ResEditor = EditorUnderTest<ResProbe>;

inline void addFolder(TestStore& store, const char* key, int type, const char* parent,
                      const char* caption) {
    store.insert("MenuResourceFolder", {{"KeyLink", QString::fromUtf8(key)},
                                        {"ParentKey", QString::fromUtf8(parent)},
                                        {"type_", type},
                                        {"caption", QString::fromUtf8(caption)}});
}

inline void addItem(TestStore& store, const char* key, int type, const char* folder,
                    const char* name, const char* caption) {
    store.insert("MenuResource", {{"KeyLink", QString::fromUtf8(key)},
                                  {"MenuResourceFolderKey", QString::fromUtf8(folder)},
                                  {"type_", type},
                                  {"name_", QString::fromUtf8(name)},
                                  {"caption", QString::fromUtf8(caption)}});
}

inline void addUser(TestStore& store, const char* key, const char* login, const char* lastName,
                    const char* firstName) {
    store.insert("Users", {{"KeyLink", QString::fromUtf8(key)},
                           {"login_", QString::fromUtf8(login)},
                           {"lastName", QString::fromUtf8(lastName)},
                           {"firstName", QString::fromUtf8(firstName)}});
}

/// Resources of every kind, a form without its folder, one without any, and two users.
inline void fillCatalogue(TestStore& store) {
    addFolder(store, "mod", 1, "", "модули");
    addFolder(store, "trends", 1, "mod", "Тренды");
    addFolder(store, "alarms", 1, "mod", "Аварии");
    addFolder(store, "fun", 2, "", "функции");
    addFolder(store, "calc", 2, "fun", "Расчёты");
    addFolder(store, "frm", 3, "", "формы отображения");
    addFolder(store, "boilers", 3, "frm", "Котлы");
    addFolder(store, "old", 3, "boilers", "Старые");
    addFolder(store, "icons", 4, "", "icons");
    addFolder(store, "docs", 4, "", "docs");
    addFolder(store, "deep", 4, "docs", "deep");

    addItem(store, "rtrend", 1, "trends", "Trend", "Тренд");
    addItem(store, "rlog", 1, "mod", "Log", "Журнал");
    addItem(store, "rtable", 1, "mod", "Table", "Архив");
    addItem(store, "rcalc", 2, "calc", "Calc", "Расчёт");
    addItem(store, "rboiler", 3, "boilers", "Boiler", "Котёл");
    addItem(store, "rburner", 3, "boilers", "Burner", "Горелка");
    addItem(store, "rdrum", 3, "frm", "Drum", "Барабан");
    addItem(store, "rlost", 3, "nofolder", "Lost", "Потерянная");
    addItem(store, "rnowhere", 3, "", "Nowhere", "Нигде");
    addItem(store, "rpump", 4, "icons", "pump.png", "Насос");
    addItem(store, "rmanual", 4, "docs", "manual.txt", "Руководство");
    addItem(store, "rreadme", 4, "", "readme.txt", "Прочти");
    addItem(store, "rstray", 4, "mod", "stray.txt", "Чужой");

    addUser(store, "ueng", "Engineer", "Иванов", "Пётр");
    addUser(store, "uother", "petrova", "Петрова", "Анна");
}

/// An editor on that store, started.
class ResourcesOn : public HostOnStore, public ResEditor {
public:
    explicit ResourcesOn(TestStore& store) : HostOnStore(store), ResEditor(host, "Resources") {
        startOrFail();
    }
};

/// An editor on that catalogue, not started yet.
class CatalogueEditor : public HostOnFilledStore, public ResEditor {
public:
    CatalogueEditor() : HostOnFilledStore(fillCatalogue), ResEditor(host, "Resources") {}
};
/// The same, started.
class StartedCatalogue : public CatalogueEditor {
public:
    StartedCatalogue() { startOrFail(); }
};

} // namespace orvo::test

#endif
