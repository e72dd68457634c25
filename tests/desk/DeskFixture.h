// DeskFixture.h: a desktop of a plant on a real store, shown by the module under test.
#ifndef ORVO_TESTS_DESK_DESKFIXTURE_H
#define ORVO_TESTS_DESK_DESKFIXTURE_H

#include "desk/Columns.h"
#include "desk/DeskView.h"
#include "desk/ElementList.h"
#include "desk/OrvoDesktop.h"
#include "frame/Launch.h"
#include "tests/menu/ModuleFixture.h"
#include "tests/models/TreeText.h"

#include <QLabel>
#include <QtTest>

namespace orvo::test {

using orvo::desk::DeskColumn;
using orvo::desk::DeskModel;
using orvo::desk::DeskView;
using orvo::desk::ElementList;

class DeskHost : public TestHost {
public:
    using TestHost::TestHost;
    std::vector<orvo::LaunchRequest> launched;
    QString refusal;
    QStringList missing; ///< names that could not be opened

    void moduleCall(COrvoCliMod*, int code, void* data) override {
        if (code == orvo::callCheckLaunch) {
            auto* request = static_cast<orvo::LaunchRequest*>(data);
            request->refusal =
                missing.contains(request->name) ? request->name + " is missing" : QString();
        }
        if (code != orvo::callLaunch)
            return;
        auto* request = static_cast<orvo::LaunchRequest*>(data);
        request->refusal = refusal;
        launched.push_back(*request);
    }
};

inline void addDesktop(TestStore& store, const char* key, const char* parent, const char* caption,
                       bool folder = false) {
    store.insert("MenuFolder", {{"KeyLink", key},
                                {"ParentKey", QString::fromUtf8(parent)},
                                {"caption", QString::fromUtf8(caption)},
                                {"order_", folder ? "1000" : "2000"},
                                {"isFolder", folder}});
}

inline void addResource(TestStore& store, const char* key, int kind, const char* name,
                        const char* folder = nullptr) {
    store.insert("MenuResource", {{"KeyLink", key},
                                  {"type_", kind},
                                  {"name_", QString::fromUtf8(name)},
                                  {"MenuResourceFolderKey", QString::fromUtf8(folder)}});
}

inline void addElement(TestStore& store, const char* key, const char* parent, const char* caption,
                       int order, const char* resource = nullptr, const char* desktop = "d") {
    store.insert("Menu", {{"KeyLink", key},
                          {"parent", QString::fromUtf8(parent)},
                          {"FolderKey", desktop},
                          {"caption", QString::fromUtf8(caption)},
                          {"order_", order},
                          {"MenuResourceKey", QString::fromUtf8(resource)}});
}

inline void fillPlant(TestStore& store) {
    addDesktop(store, "f", nullptr, "Участок 1", true);
    addDesktop(store, "d", "f", "КС-3");
    addDesktop(store, "d2", nullptr, "КС-4");
    addDesktop(store, "d3", "f", "КС-4");
    addResource(store, "rm", 1, "Trends");
    addResource(store, "rf", 2, "Reset");
    addResource(store, "rs", 3, "Pump");
    store.insert("MenuResourceFolder",
                 {{"KeyLink", "docs"}, {"type_", 4}, {"caption", "Документы"}});
    store.insert("MenuResourceFolder",
                 {{"KeyLink", "plans"}, {"ParentKey", "docs"}, {"type_", 4}, {"caption", "Схемы"}});
    addResource(store, "rp", 4, "plan.pdf", "plans");
    addElement(store, "e1", nullptr, "Агрегаты", 1000);
    addElement(store, "e2", nullptr, "Тренды", 2000, "rm");
    store.update(
        "Menu", {{"KeyLink", "e2"}, {"params", "scale=2"}, {"oneCopy", true}, {"separator", true}});
    addElement(store, "e3", "e1", "Насос №1", 1000, "rs");
    addElement(store, "e4", "e1", "Ещё", 2000);
    addElement(store, "e5", "e4", "Сброс счётчика", 1000, "rf");
    addElement(store, "e6", "e4", "План цеха", 2000, "rp");
    addElement(store, "x1", nullptr, "Чужое", 1000, "rm", "d2");
}

/// `count` elements "k1", "k2" and so on, at the end of a folder (null: of the top).
inline void addMany(TestStore& store, const char* parent, int count) {
    store.sql(
        qPrintable(QString("INSERT INTO \"Menu\" (\"KeyLink\", \"parent\", \"FolderKey\", "
                           "\"caption\", \"order_\", \"MenuResourceKey\") WITH RECURSIVE n(i) "
                           "AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) SELECT "
                           "'k' || i, %2, 'd', 'Элемент ' || i, i * 1000, 'rm' FROM n")
                       .arg(count)
                       .arg(parent ? '\'' + QString(parent) + '\'' : "NULL")));
}

struct Desk {
    TestStore store;
    std::unique_ptr<DeskHost> host;
    std::unique_ptr<EditorUnderTest<OrvoDesktop>> module;

    explicit Desk(void (*fill)(TestStore&) = fillPlant) {
        fill(store);
        reopen();
    }
    void reopen() {
        module.reset();
        host = std::make_unique<DeskHost>(store);
        module = std::make_unique<EditorUnderTest<OrvoDesktop>>(*host, "Desktop");
    }
    bool start(const char* name = "d") {
        (*module)->SetParamMod("desktop", QString::fromUtf8(name));
        return module->start();
    }
    DeskView& view() { return *module->child<DeskView>("deskTree"); }
    QAbstractItemModel& model() { return *view().model(); }
    QString tree() { return treetext::print(model(), DeskColumn::Key); }
    QModelIndex row(const char* key) {
        return static_cast<DeskModel&>(model()).findIndexByKey(QString::fromUtf8(key));
    }
    void deliver() { host->deliver(*module->module); }
    QString title() const { return host->titles.value(host->titles.size() - 2); }
    QString notice() {
        auto* label = module->child<QLabel>("deskNotice");
        return label->isHidden() ? QString() : label->text();
    }
};

inline const char* const plantTree = "Агрегаты #e1\n"
                                     "  Насос №1 #e3\n"
                                     "  Ещё #e4\n"
                                     "    Сброс счётчика #e5\n"
                                     "    План цеха #e6\n"
                                     "Тренды #e2\n";

} // namespace orvo::test

#endif
