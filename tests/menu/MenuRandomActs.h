// MenuRandomActs.h: what an engineer and a foreign hand do to menus in a random run (RandomRun.h).
#ifndef ORVO_TESTS_MENU_MENURANDOMACTS_H
#define ORVO_TESTS_MENU_MENURANDOMACTS_H

#include "tests/menu/MenuPart.h"

#include "picker/PopObjectList.h"

#include <QMimeData>
#include <QPushButton>

namespace orvo::test {

/// What is done to menus at random.
class MenuRandomActs {
public:
    /// `anyPart`: the editor of either client. `anyResource`: a key for elements of a foreign hand.
    MenuRandomActs(Chances& chances, TestStore& store, std::function<MenuPart&()> anyPart,
                   std::function<QString()> anyResource)
        : m_chances(chances)
        , m_store(store)
        , m_anyPart(std::move(anyPart))
        , m_anyResource(std::move(anyResource)) {}

    /// Desktops d1 to d3 and elements of the resource, in a store that holds none.
    static void fill(TestStore& store, const char* resource) {
        addDesck(store, "p1", "", "Цех", true);
        addDesck(store, "p2", "p1", "Участок", true);
        addDesck(store, "d1", "p1", "Первый", false);
        addDesck(store, "d2", "p1", "Второй", false);
        addDesck(store, "d3", "p2", "Третий", false);
        for (int i = 0; i < 12; ++i) {
            const QByteArray key = "e" + QByteArray::number(i);
            const QByteArray parent = i < 6 ? QByteArray() : "e" + QByteArray::number(i % 3);
            addElement(store, i % 3 == 2 ? "d2" : "d1", key.constData(), parent.constData(),
                       "Начало", i * 500, i < 3 ? nullptr : resource);
        }
    }

    void foreignAct() {
        const QString key = anyKey("Menu");
        const QByteArray id = key.toUtf8();
        switch (m_chances.below(10)) {
        case 0:
        case 1: {
            const QString made = m_chances.newKey('f');
            m_chances.say("foreign element " + made);
            m_store.insert(
                "Menu", {{"KeyLink", made},
                         {"FolderKey", anyDesktop()},
                         {"parent", m_chances.chance(40)   ? QString()
                                    : m_chances.chance(90) ? key
                                                           : QString("nowhere")},
                         {"caption", caption()},
                         {"order_", m_chances.below(12) * 500},
                         {"MenuResourceKey", m_chances.chance(60) ? m_anyResource() : QString()}});
            break;
        }
        case 2:
            m_chances.say("foreign caption " + key);
            m_store.update("Menu", {{"KeyLink", key}, {"caption", caption()}});
            break;
        case 3:
        case 4:
            m_chances.say("foreign order " + key);
            m_store.update("Menu", {{"KeyLink", key}, {"order_", m_chances.below(12) * 500}});
            break;
        case 5: {
            const QString parent = m_chances.chance(40) ? QString() : anyKey("Menu");
            m_chances.say("foreign move " + key + " below " + parent);
            m_store.moveBelow("Menu", "parent", key, parent);
            break;
        }
        case 6:
            if (m_chances.chance(60)) {
                m_chances.say("foreign delete " + key);
                m_store.remove("Menu", id.constData());
            }
            break;
        case 7: {
            const QString desck = anyKey("MenuFolder");
            if (desck.startsWith('d'))
                break;
            m_chances.say("foreign desktop caption " + desck);
            m_store.update("MenuFolder", {{"KeyLink", desck}, {"caption", caption()}});
            break;
        }
        case 8: {
            const QString made = m_chances.newKey('g');
            const bool folder = m_chances.chance(30);
            m_chances.say("foreign desktop " + made);
            m_store.insert("MenuFolder",
                           {{"KeyLink", made},
                            {"ParentKey", m_chances.chance(10) ? QString() : QString("p1")},
                            {"caption", caption()},
                            {"order_", QString(folder ? "1000" : "2000")},
                            {"isFolder", folder}});
            break;
        }
        default: {
            const QString desck = anyKey("MenuFolder");
            if (!desck.startsWith('g'))
                break;
            m_chances.say("foreign delete of desktop " + desck);
            m_store.remove("MenuFolder", desck.toUtf8().constData());
        }
        }
    }

    void ownAct(MenuPart& part) {
        MenuProbe& module = part.probe();
        QTreeView* menu = part.view("tvMenu");
        QTreeView* desck = part.view("tvDesck");
        const QModelIndex current = menu->currentIndex();
        const bool onElement = module.m_menuModel->getItemLevel(current) > 0;
        const bool onFolder = module.m_menuModel->itemIsFolder(current);
        switch (m_chances.below(16)) {
        case 0: {
            const QModelIndex row = m_chances.chance(70)
                                        ? module.m_desckModel->findIndexByKey(anyDesktop())
                                        : m_chances.anyRow(*module.m_desckModel);
            m_chances.say("desktop " + module.m_desckModel->getItemKeyLink(row));
            desck->setCurrentIndex(row);
            break;
        }
        case 1:
        case 2:
        case 3: {
            const QModelIndex row = m_chances.anyRow(*module.m_menuModel);
            m_chances.say("element " + module.m_menuModel->getItemKeyLink(row));
            if (row.isValid())
                menu->setCurrentIndex(row);
            break;
        }
        case 4:
            if (onElement && !module.m_menuModel->itemIsFirstSibling(current)) {
                m_chances.say("up");
                call(module, "on_actMoveUp_triggered");
            }
            break;
        case 5:
            if (onElement && !module.m_menuModel->itemIsLastSibling(current)) {
                m_chances.say("down");
                call(module, "on_actMoveDown_triggered");
            }
            break;
        case 6:
            if (onFolder && part.isAtRest()) {
                m_chances.say("new folder");
                call(module, "on_actNewElemFolder_triggered");
            }
            break;
        case 7:
        case 8: {
            const QString name = m_chances.chance(60) ? "name" : "icon";
            const QModelIndex value = module.m_propModel->findIndexByKey(name);
            if (value.isValid() && !value.siblingAtColumn(3).data().toBool()) {
                const QString text = part.textFor(module.m_currentMenuKey + '/' + name, caption());
                m_chances.say("passport " + module.m_currentMenuKey + ' ' + name + ' ' + text);
                part.typeElement();
                module.m_propModel->setData(value.siblingAtColumn(1), text, Qt::EditRole);
            }
            break;
        }
        case 9:
        case 10:
            m_chances.say("save");
            call(module, "on_save_pressed");
            break;
        case 11:
            m_chances.say("cancel");
            part.cancel();
            break;
        case 12: {
            const QModelIndex source = m_chances.anyRow(*module.m_menuModel);
            const QModelIndex target = m_chances.anyRow(*module.m_menuModel);
            if (!source.isValid() || module.m_menuModel->getItemLevel(source) == 0)
                break;
            const std::unique_ptr<QMimeData> data(module.m_menuModel->mimeData({source}));
            const int row = m_chances.chance(50)
                                ? -1
                                : m_chances.below(module.m_menuModel->rowCount(target) + 1);
            if (!module.m_menuModel->canDropMimeData(data.get(), Qt::MoveAction, row, 0, target))
                break;
            m_chances.say(QString("drop %1 on %2 at %3")
                              .arg(module.m_menuModel->getItemKeyLink(source),
                                   module.m_menuModel->getItemKeyLink(target))
                              .arg(row));
            module.m_menuModel->dropMimeData(data.get(), Qt::MoveAction, row, 0, target);
            break;
        }
        case 13:
            if (onElement && part.isAtRest()) {
                m_chances.say("copy");
                call(module, "on_actCopyMenuElement_triggered");
            }
            if (onFolder && part.isAtRest() && !isFull(module)) {
                m_chances.say("paste");
                call(module, "on_actPasteMenuElement_triggered");
            }
            break;
        case 14:
            if (onElement && part.isAtRest()) {
                m_chances.say("delete");
                call(module, "on_actDeleteElem_triggered");
                answer(module, m_chances.chance(80));
            }
            break;
        default: {
            const QModelIndex place = desck->currentIndex();
            if (!part.isAtRest() || module.m_desckModel->getItemLevel(place) < 2)
                break;
            if (m_chances.chance(50)) {
                m_chances.say("new desktop");
                call(module, "on_actAddDescktop_triggered");
            } else {
                m_chances.say("rename");
                part.typeDesck();
                call(module, "on_actChangeDescktopOrFolder_triggered");
                // As by the keyboard: each letter comes from the row's editor.
                if (auto* editor = desck->viewport()->findChild<QLineEdit*>())
                    editor->setText(part.textFor(module.m_currentDesckKey, caption()));
            }
        }
        }
    }

    /// Opens the picker, for new elements or for the icon or object of the current one.
    void openPicker(MenuPart& part) {
        MenuProbe& module = part.probe();
        const int what = m_chances.below(5);
        m_chances.say(QString("picker %1").arg(what));
        if (what < 3) {
            static const char* const slots_[] = {"on_actNewElemModul_triggered",
                                                 "on_actNewElemFunction_triggered",
                                                 "on_actNewElemFile_triggered"};
            if (!isFull(module))
                call(module, slots_[what]);
            return;
        }
        const QString row = what == 3 ? "icon" : "object";
        const QModelIndex value = module.m_propModel->findIndexByKey(row);
        if (!value.isValid() || (what == 3 && value.siblingAtColumn(3).data().toBool()))
            return;
        part.typeElement();
        QMetaObject::invokeMethod(&module, "on_passp_buttonpressed", Q_ARG(QString, row));
    }
    /// Chooses in the open picker, if there is one.
    void choose(COrvoCliMod& module) {
        auto* list = module.findChild<CPopObjectList*>();
        if (!list || !list->isVisible())
            return;
        QTreeView* tree = list->tvObj();
        QStringList chosen;
        for (int i = 1 + m_chances.below(list->multipleChoice ? 3 : 1); i > 0; --i) {
            const QModelIndex row = m_chances.anyRow(*list->treeModel);
            if (!row.isValid())
                break;
            chosen << row.data().toString();
            tree->selectionModel()->setCurrentIndex(
                row, QItemSelectionModel::Rows |
                         (list->multipleChoice ? QItemSelectionModel::Select
                                               : QItemSelectionModel::ClearAndSelect));
        }
        m_chances.say("pick " + chosen.join(", "));
        list->findChild<QPushButton*>(m_chances.chance(90) ? "btnOK" : "btnCancel")->click();
    }
    void pick(MenuPart& part) {
        openPicker(part);
        choose(part.probe());
    }

private:
    QString anyKey(const char* table) { return m_chances.oneOf(m_anyPart().parents(table).keys()); }
    QString anyDesktop() { return m_chances.oneOf({"d1", "d2", "d3"}); }
    QString caption() { return m_chances.word(50, 9); }
    static bool isFull(const MenuProbe& module) {
        return module.tableText("Menu").count('\n') >= 60;
    }
    static void call(MenuProbe& module, const char* slot) {
        if (!QMetaObject::invokeMethod(&module, slot))
            qFatal("no slot %s", slot);
    }
    static void answer(MenuProbe& module, bool yes) {
        const QString text = yes ? QStringLiteral("Да") : QStringLiteral("Нет");
        for (QPushButton* button : module.findChildren<QPushButton*>())
            if (button->isVisible() && button->text() == text) {
                button->click();
                return;
            }
    }

    Chances& m_chances;
    TestStore& m_store;
    std::function<MenuPart&()> m_anyPart;
    std::function<QString()> m_anyResource;
};

} // namespace orvo::test

#endif
