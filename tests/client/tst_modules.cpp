// The base class of modules and the registry of their lives.
#include "frame/CommonFunctions.h"
#include "platform/client/Blocks.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/client/HostFixture.h"

#include <QPointer>
#include <QtTest>

#include <cstring>

using namespace orvo;
using namespace orvo::test;
using client::ModuleRegistry;
using client::ModuleState;

namespace {

store::Change change(int code, const char* table, const char* key, const char* after = "") {
    store::Change c;
    c.id = 7;
    c.code = code;
    c.table = table;
    c.key = key;
    c.login = "ivanov";
    c.time = 12.5;
    c.after = after;
    return c;
}

/// The place of a virtual operation in its class's table, in bytes, up to a constant: a pointer to
/// a virtual member holds it in its first word.
template <class Member>
intptr_t placeOf(Member member) {
    intptr_t place = 0;
    static_assert(sizeof member >= sizeof place);
    std::memcpy(&place, &member, sizeof place);
    return place;
}

} // namespace

class TestModules : public QObject {
    Q_OBJECT
private slots:
    void aModuleKnowsItsPathsAndApplication() {
        App app;
        app.m_workDir = "/somewhere/";
        Module module(&app);
        QCOMPARE(module.m_app, static_cast<COrvoCliApp*>(&app));
        QCOMPARE(module.m_paths->workDir, QString("/somewhere/"));
        QVERIFY(!module.m_popMessageBox);
        QVERIFY(module.m_moduleName.isEmpty());
    }

    void logTitleAndCallsReachTheApplication() {
        App app;
        Module module(&app);
        module.LogFile(5, "OrvoMenu::loadTables->Menu", "нет");
        module.SetModTitle("Редактор меню", "");
        int word = 0;
        module.doCall(64, &word);
        QCOMPARE(app.logs, QStringList("5|OrvoMenu::loadTables->Menu|нет"));
        QCOMPARE(app.titles, QStringList("Редактор меню|"));
        QCOMPARE(module.windowTitle(), QString("Редактор меню"));
        QCOMPARE(app.calls.size(), size_t(1));
        QCOMPARE(app.calls[0].code, 64);
        QCOMPARE(app.calls[0].data, static_cast<void*>(&word));
    }

    // A module built elsewhere calls and overrides these by their places.
    void theVirtualOperationsKeepTheirOrder() {
        using M = COrvoCliMod;
        const intptr_t places[] = {placeOf(&QMainWindow::createPopupMenu),
                                   placeOf(&M::LogFile),
                                   placeOf(&M::ModuleStart),
                                   placeOf(&M::ModuleStop),
                                   placeOf(&M::MessageOn),
                                   placeOf(&M::MessageData),
                                   placeOf(&M::SetError),
                                   placeOf(&M::SetParamMod),
                                   placeOf(&M::GetParamMod),
                                   placeOf(&M::SetParamCommand),
                                   placeOf(&M::SetParamProfile),
                                   placeOf(&M::GetParamProfile),
                                   placeOf(&M::SetParamState),
                                   placeOf(&M::GetParamState),
                                   placeOf(&M::ParentResizeOn),
                                   placeOf(&M::GetAlarmsList),
                                   placeOf(&M::AppIdleEvent),
                                   placeOf(&M::ModSesReconnect),
                                   placeOf(&M::ModDataEditPost),
                                   placeOf(&M::ModDataEditCancel),
                                   placeOf(&M::slot_modNotify),
                                   placeOf(&M::slot_toolFinished),
                                   placeOf(&M::slot_popMessageBoxClicked),
                                   placeOf(&M::slot_endRestructure)};
        for (size_t i = 1; i < std::size(places); ++i)
            QCOMPARE(places[i] - places[0], static_cast<intptr_t>(i * sizeof(void*)));
    }

    void aFailedFetchIsLoggedThroughTheLogModule() {
        App app;
        App elsewhere;
        Module module(&app);
        Module logger(&elsewhere);
        app.m_logModule = &logger;
        const auto answer = [](int result) {
            return [result](COrvoCliSes*, QString* error) {
                if (result == 0)
                    *error = "нет связи";
                return result;
            };
        };
        QVERIFY(fetchOrLog(module, "OrvoMenu::loadTables->Menu", answer(1)));
        QVERIFY(elsewhere.logs.isEmpty());
        QVERIFY(!fetchOrLog(module, "OrvoMenu::loadTables->Menu", answer(0)));
        QCOMPARE(elsewhere.logs, QStringList("5|OrvoMenu::loadTables->Menu|нет связи"));
        QVERIFY(app.logs.isEmpty());
    }

    void aModuleWithoutAnApplicationIsHarmless() {
        COrvoCliMod module(nullptr);
        module.LogFile(5, "a", "b");
        module.SetModTitle("a", "b");
        module.doCall(64, nullptr);
        QVERIFY(module.m_paths->workDir.isEmpty());
    }

    void theMessageBoxIsMadeOnce() {
        App app;
        Module module(&app);
        module.PopMessageBoxCreate();
        CPopMessageBox* box = module.m_popMessageBox;
        QVERIFY(box);
        QCOMPARE(box->parentWidget(), static_cast<QWidget*>(&module));
        QVERIFY(box->isHidden());
        module.PopMessageBoxCreate();
        QCOMPARE(module.m_popMessageBox, box);
    }

    void theInheritedOperationsKeepTheirWords() {
        App app;
        COrvoCliMod module(&app);
        QString value;
        module.SetParamMod("a", "1");
        QCOMPARE(module.GetParamMod("a", value), QString("1"));
        QCOMPARE(value, QString("1"));
        module.SetParamProfile("p");
        QCOMPARE(module.GetParamProfile(), QString("p"));
        module.SetParamState("s");
        QCOMPARE(module.GetParamState(), QString("s"));
        QVERIFY(module.GetAlarmsList().isEmpty());
        QVERIFY(module.ModuleStart());
        QVERIFY(module.MessageData(nullptr));
        module.SetError("плохо");
        QVERIFY(app.logs.last().contains("плохо"));
    }

    void waitingNotificationsComeInOrderAndOnce() {
        App app;
        Module module(&app);
        client::NotificationMaker maker;
        for (const char* key : {"a", "b", "c"})
            module.messagePut(maker.make(change(601, "Menu", key, "{}")));
        module.messagePut(nullptr);
        QCOMPARE(module.messagesWaiting(), 3);
        module.MessageOn();
        QCOMPARE(module.keys(), QStringList({"a", "b", "c"}));
        QCOMPARE(module.messagesWaiting(), 0);
        module.MessageGet();
        QCOMPARE(module.messages.size(), size_t(3));
    }

    void whatComesWhileOthersAreTakenIsTakenToo() {
        App app;
        Module module(&app);
        client::NotificationMaker maker;
        module.onMessage = [&](const Message& m) {
            if (m.key.size() < 3)
                module.messagePut(
                    maker.make(change(601, "Menu", (m.key + "+").toUtf8().constData(), "{}")));
        };
        module.messagePut(maker.make(change(601, "Menu", "a", "{}")));
        module.MessageGet();
        QCOMPARE(module.keys(), QStringList({"a", "a+", "a++"}));
        QCOMPARE(module.messagesWaiting(), 0);
    }

    void aModuleMayDieInsideItsOwnNotification() {
        App app;
        auto* module = new Module(&app);
        client::NotificationMaker maker;
        module->messagePut(maker.make(change(601, "Menu", "a", "{}")));
        module->messagePut(maker.make(change(601, "Menu", "b", "{}")));
        const QPointer<COrvoCliMod> alive(module);
        module->onMessage = [&](const Message&) {
            auto last = std::move(module->onMessage);
            delete module;
        };
        alive->MessageGet();
        QVERIFY(!alive);
    }

    void aNotificationHasTenFieldsAndMarksWhatChanged() {
        App app;
        Module module(&app);
        client::NotificationMaker maker;
        module.messagePut(maker.make(
            change(602, "Menu", "k1",
                   R"({"caption":"Насос №1","order_":2000,"separator":true,"ico":null})")));
        module.MessageOn();
        const Message& m = module.messages.at(0);
        QCOMPARE(m.fieldCount, 10);
        QCOMPARE(m.code, 602);
        QCOMPARE(m.key, QString("k1"));
        QCOMPARE(m.source, QString("NCI:Menu,ivanov"));
        QCOMPARE(m.table, QString("Menu"));
        QCOMPARE(m.marked.size(), size_t(4));
        QCOMPARE(m.marked.at("caption").toString(), QString("Насос №1"));
        QCOMPARE(m.marked.at("order_").toInt(), 2000);
        QCOMPARE(m.marked.at("separator").toBool(), true);
        QVERIFY(!m.marked.at("ico").isValid());
    }

    void valuesThatNameAnotherRecordDoNotMoveTheRowsOwn() {
        App app;
        Module module(&app);
        client::NotificationMaker maker;
        module.messagePut(
            maker.make(change(601, "Menu", "mine", R"({"KeyLink":"other","caption":"Насос"})")));
        module.MessageOn();
        const Message& m = module.messages.at(0);
        QCOMPARE(m.key, QString("mine"));
        QCOMPARE(m.marked.at("KeyLink").toString(), QString("mine"));
        QCOMPARE(m.marked.at("caption").toString(), QString("Насос"));
    }

    void theRawRecordHasTheFieldOrderOfTheTable() {
        client::NotificationMaker maker;
        MDXCliParam* block = maker.make(change(602, "Menu", "k", R"({"params":"p"})"));
        uint32_t length = 0;
        const char* raw = nullptr;
        QCOMPARE(MDRGetTextRef(MDRFldByNum(block->array, 7), block->record, &length, &raw), 0);
        MDRData record;
        MDRType type;
        MDRRecInit(&record);
        MDRTypInit(&type);
        QCOMPARE(MDRRecSet(&record, raw), 0);
        QCOMPARE(MDRTypGen(&type, "NCI", &record), 0);
        const auto& fields = store::findTable("Menu")->fields;
        QCOMPARE(size_t(type.fieldCount), fields.size());
        for (size_t i = 0; i < fields.size(); ++i)
            QCOMPARE(QString(mdx::fieldName(MDRFldByNum(&type, int(i)))), QString(fields[i].name));
        MDRTypFree(&type);
        mdx::paramFree(block);
    }

    void strangeChangesStillMakeBlocks_data() {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("marked");
        QTest::newRow("no json") << "Menu"
                                 << "garbage" << 0;
        QTest::newRow("array") << "Menu"
                               << "[1,2]" << 0;
        QTest::newRow("unknown field") << "Menu"
                                       << R"({"nope":1,"caption":"x"})" << 1;
        QTest::newRow("nested value") << "Menu"
                                      << R"({"order_":{"a":1}})" << 0;
        QTest::newRow("too large") << "Menu"
                                   << R"({"order_":99999999999})" << 0;
        QTest::newRow("unknown table") << "MenuResourceFile"
                                       << R"({"name_":"x"})" << 0;
    }
    void strangeChangesStillMakeBlocks() {
        QFETCH(QString, table);
        QFETCH(QString, after);
        QFETCH(int, marked);
        App app;
        Module module(&app);
        client::NotificationMaker maker;
        module.messagePut(maker.make(change(601, table.toUtf8(), "k", after.toUtf8())));
        module.MessageOn();
        QCOMPARE(module.messages.size(), size_t(1));
        QCOMPARE(module.messages[0].table, table);
        QCOMPARE(int(module.messages[0].marked.size()), marked);
    }

    void aDeletionCarriesNoRecord() {
        App app;
        Module module(&app);
        client::NotificationMaker maker;
        module.messagePut(maker.make(change(603, "Menu", "k", R"({"caption":"x"})")));
        module.MessageOn();
        QCOMPARE(module.messages[0].code, 603);
        QCOMPARE(module.messages[0].rawLength, 0u);
    }

    void theRegistryWalksTheStatesInOrder() {
        App app;
        auto* module = new Module(&app);
        const QPointer<Module> alive(module);
        ModuleRegistry registry;
        QCOMPARE(registry.state(module), ModuleState::Unknown);
        registry.add(module, "Menu");
        registry.add(module, "Menu");
        registry.add(nullptr, "Menu");
        QCOMPARE(module->m_moduleName, QString("Menu"));
        QCOMPARE(registry.state(module), ModuleState::Loaded);
        QVERIFY(registry.start(module));
        QCOMPARE(registry.state(module), ModuleState::Running);
        QVERIFY(!registry.start(module)); // once
        registry.stop(module);
        QVERIFY(!alive);
        QCOMPARE(registry.modules(ModuleState::Running).size(), size_t(0));
    }

    void stoppingClosesStopsAndDeletes() {
        App app;
        class Told : public Module {
        public:
            Told(COrvoCliApp* a, QStringList* to) : Module(a), m_to(to) {}
            ~Told() override { *m_to << life << QStringLiteral("gone"); }

        private:
            QStringList* m_to;
        };
        QStringList life;
        ModuleRegistry registry;
        auto* module = new Told(&app, &life);
        registry.add(module, "Menu");
        registry.start(module);
        module->show();
        registry.stop(module);
        QCOMPARE(life, QStringList({"start", "close", "stop", "gone"}));
    }

    void aFailedStartIsNotRunning() {
        App app;
        auto* module = new Module(&app);
        module->startResult = false;
        ModuleRegistry registry;
        registry.add(module, "Menu");
        QVERIFY(!registry.start(module));
        QCOMPARE(registry.state(module), ModuleState::Failed);
        QVERIFY(registry.modules(ModuleState::Running).empty());
    }

    void aModuleDeletedByOthersDropsOut() {
        App app;
        ModuleRegistry registry;
        auto* first = new Module(&app);
        auto* second = new Module(&app);
        registry.add(first, "Menu");
        registry.add(second, "Resources");
        registry.start(first);
        registry.start(second);
        delete first;
        QCOMPARE(registry.modules(ModuleState::Running).size(), size_t(1));
        registry.stop(first); // long gone: nothing
        registry.stopAll();
        QVERIFY(registry.modules(ModuleState::Running).empty());
    }
};

QTEST_MAIN(TestModules)
#include "tst_modules.moc"
