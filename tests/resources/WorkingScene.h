// WorkingScene.h: what the acts of engineers at work have in common: chances, store and faults,
// what was typed, and the first act that did what it must not.
#ifndef ORVO_TESTS_RESOURCES_WORKINGSCENE_H
#define ORVO_TESTS_RESOURCES_WORKINGSCENE_H

#include "tests/menu/EngineersStore.h"
#include "tests/menu/MenuRandomActs.h"
#include "tests/menu/WorkingClient.h"
#include "tests/resources/ResRandomActs.h"

#include <map>

namespace orvo::test {

using TwoEditorsClient = WorkingClient<MenuPart, ResPart>;

struct WorkingScene {
    using Client = TwoEditorsClient;

    Chances& chances;
    TestStore& store;
    EngineersKind& faults;
    TypedTexts& typed;
    MenuRandomActs& menus;
    ResRandomActs& resources;
    std::function<Client&()> anyClient; ///< either, of which one may do what the other is at

    std::map<QString, int> figures = {}; ///< how often what was done
    QString fault = {};                  ///< the first act that did what it must not

    /// What is not in the list any more went with what its engineer deleted or gave up.
    void dropVanished(Client& client, const QString& before) {
        const QSet<int> left = TypedTexts::numbersIn(client.unwrittenTexts());
        QString gone;
        for (const int number : TypedTexts::numbersIn(before) - left)
            gone += QString("~%1~").arg(number);
        typed.drop(gone);
    }
};

inline CPopObjectList* picker(COrvoCliMod& module) {
    auto* list = module.findChild<CPopObjectList*>();
    return list && list->isVisible() ? list : nullptr;
}
inline QLineEdit* openCell(COrvoCliMod& module) {
    for (const char* name : {"tvProp", "tvDesck"})
        if (auto* view = module.findChild<QTreeView*>(name))
            for (QLineEdit* line : view->viewport()->findChildren<QLineEdit*>())
                if (line->isVisible())
                    return line;
    return nullptr;
}
inline void closeCell(QLineEdit* line) {
    QTest::keyClick(line, Qt::Key_Return);
}

inline QString keyOf(MenuPart& part) {
    return part.probe().m_currentMenuKey;
}
inline QString keyOf(ResPart& part) {
    return part.probe().m_currentKey;
}
inline MenuTreeModel& treeOf(MenuPart& part) {
    return *part.probe().m_menuModel;
}
inline ResTreeModel& treeOf(ResPart& part) {
    return part.model();
}
inline QTreeView* viewOf(MenuPart& part) {
    return part.view("tvMenu");
}
inline QTreeView* viewOf(ResPart& part) {
    return part.view();
}

} // namespace orvo::test

#endif
