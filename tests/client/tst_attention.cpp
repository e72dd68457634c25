// What others write waits while the engineer is in the middle of something.
#include "platform/client/NotificationPump.h"
#include "tests/client/HostFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTreeView>
#include <QtTest>

#include <tuple>

using namespace orvo;
using namespace orvo::test;
using client::Attention;
using client::ModuleRegistry;
using client::NotificationPump;

namespace {

/// A module with a list whose cells can be typed in, and with an edit when the test says so.
class EditModule : public Module {
public:
    explicit EditModule(COrvoCliApp* app) : Module(app), view(new QTreeView(this)) {
        model.appendRow(new QStandardItem("строка"));
        view->setModel(&model);
        setCentralWidget(view);
    }
    ~EditModule() override { delete view; }
    QString ModEditText() const override { return edit; }

    QLineEdit* typeInto(const QString& text) {
        view->edit(model.index(0, 0));
        auto* editor = view->findChild<QLineEdit*>();
        editor->setText(text);
        return editor;
    }

    QStandardItemModel model;
    QTreeView* view;
    QString edit;
};

struct Bench : Host {
    QTabWidget tabs;
    ModuleRegistry registry;
    EditModule* module = new EditModule(&app); ///< on show
    EditModule* second = new EditModule(&app); ///< behind it
    std::unique_ptr<NotificationPump> pump;
    std::unique_ptr<store::Store> other = connectAgain("petrov");

    Bench() {
        for (EditModule* one : {module, second}) {
            tabs.addTab(one, "модуль");
            registry.add(one, "Menu");
            registry.start(one);
        }
        tabs.resize(800, 600);
        tabs.show();
        tabs.activateWindow();
        if (!QTest::qWaitForWindowActive(&tabs))
            qFatal("no window");
        startPump();
    }
    ~Bench() { registry.stopAll(); }

    void startPump() {
        pump = std::make_unique<NotificationPump>(*session, registry, connectAgain());
        pump->start();
    }

    void others(const std::string& key) {
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
        addRecord(array, 1, {{"KeyLink", key}});
        if (!other->update("Menu", array.array).ok())
            qFatal("not written");
    }
    bool own(const std::string& key) { return write("Menu", 1, {{"KeyLink", key}}) != 0; }
    CPopMessageBox* ask(TMessageBoxType type) {
        module->PopMessageBoxCreate();
        module->m_popMessageBox->setMessage("Уведомление", "Удалить?", MessageBoxIconQuestion, type,
                                            SLOT(boxClicked(QAbstractButton*)));
        module->m_popMessageBox->show();
        return module->m_popMessageBox;
    }
    /// The other module follows while this one is held; all the rest has settled then.
    bool isHeld(const QString& key) {
        return QTest::qWaitFor([&] { return second->keys().contains(key); }) &&
               !module->keys().contains(key);
    }
};

/// All that a box says, its parts joined by blanks.
QString textOfBox(CPopMessageBox* box) {
    QStringList parts;
    for (const QLabel* label : box->findChildren<QLabel*>())
        if (!label->isHidden() && !label->text().isEmpty())
            parts << label->text();
    return parts.join(' ');
}

} // namespace

class TestAttention : public QObject {
    Q_OBJECT
private slots:
    void aStandingQuestionHoldsItsModuleAloneUntilTheAnswer() {
        Bench bench;
        CPopMessageBox* box = bench.ask(MessageBoxTypeYesNo);
        QSignalSpy held(bench.pump.get(), &NotificationPump::heldChanged);
        bench.others("a");
        bench.others("b");
        QVERIFY(bench.isHeld("b"));
        QTRY_VERIFY(bench.pump->held().size() == 1 && bench.pump->held()[0].changes == 2);
        QVERIFY(bench.module->messages.empty());
        QVERIFY(!bench.pump->isIdle());
        QVERIFY(bench.pump->held()[0].why == Attention::Question);
        QVERIFY(held.count() > 0);
        QTest::mouseClick(box->findChildren<QPushButton*>().at(0), Qt::LeftButton);
        QCOMPARE(bench.module->roles.size(), size_t(1));
        QVERIFY(bench.module->messages.empty()); // the answer came first
        QTRY_COMPARE(bench.module->keys(), QStringList({"a", "b"}));
        QTRY_VERIFY(bench.pump->held().empty());
        QTRY_VERIFY(bench.pump->isIdle());
    }

    void aQuestionHoldsBehindAnotherTabToo() {
        Bench bench;
        bench.ask(MessageBoxTypeYesNo);
        bench.tabs.setCurrentIndex(1);
        bench.others("a");
        QVERIFY(bench.isHeld("a"));
        bench.module->m_popMessageBox->hide();
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void aNoticeHoldsNothing() {
        Bench bench;
        bench.ask(MessageBoxTypeOk);
        bench.others("a");
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void anOpenPickerHoldsItsModule() {
        Bench bench;
        auto* picker = new CPopTemplate(bench.module, -1);
        picker->show();
        bench.others("a");
        QVERIFY(bench.isHeld("a"));
        picker->hide();
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void aCellBeingTypedInKeepsTextAndFocus() {
        Bench bench;
        QLineEdit* editor = bench.module->typeInto("недопи");
        QTRY_VERIFY(editor->hasFocus());
        bench.others("a");
        QVERIFY(bench.isHeld("a"));
        QVERIFY(editor->hasFocus());
        QCOMPARE(editor->text(), QString("недопи"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void anOpenEditHoldsUntilItIsSavedOrDropped() {
        Bench bench;
        bench.module->edit = "элемент «Архив»";
        bench.others("a");
        QVERIFY(bench.isHeld("a"));
        QTRY_COMPARE(bench.pump->held().size(), size_t(1));
        QVERIFY(bench.pump->held()[0].why == Attention::Edit);
        bench.module->edit.clear();
        QTRY_COMPARE(bench.module->keys(), QStringList("a"));
    }

    void theOwnEchoComesThroughAnOpenEditAndWhatWasBeforeItToo() {
        Bench bench;
        bench.module->edit = "элемент";
        bench.others("before");
        QVERIFY(bench.isHeld("before"));
        QVERIFY(bench.own("own"));
        QTRY_COMPARE(bench.module->keys(), QStringList({"before", "own"}));
        bench.others("after");
        QVERIFY(bench.isHeld("after"));
        QTRY_COMPARE(bench.pump->held().size(), size_t(1));
        QCOMPARE(bench.module->keys(), QStringList({"before", "own"}));
    }

    void whatOthersWriteRightBehindOnesOwnWriteWaits() {
        Bench bench;
        bench.module->edit = "элемент";
        bench.pump.reset();
        // Before the pump hears of the own write, so that it finds both at the same look.
        connect(&client::sessionEvents(*bench.session), &client::SessionEvents::written,
                bench.module, [&bench] { bench.others("after"); });
        bench.startPump();
        QVERIFY(bench.own("own"));
        QTRY_COMPARE(bench.module->keys(), QStringList("own"));
        QVERIFY(bench.isHeld("after"));
        QTRY_VERIFY(bench.pump->held().size() == 1);
    }

    void aWriteOfTheModuleOnShowDoesNotDisturbTheOneBehind() {
        Bench bench;
        bench.second->edit = "элемент";
        QVERIFY(bench.own("own"));
        QTRY_COMPARE(bench.module->keys(), QStringList("own"));
        QTRY_COMPARE(bench.pump->held().size(), size_t(1));
        QVERIFY(bench.second->messages.empty());
    }

    void theOwnEchoWaitsForTheAnswerToo() {
        Bench bench;
        bench.ask(MessageBoxTypeYesNo);
        QVERIFY(bench.own("own"));
        QVERIFY(bench.isHeld("own"));
        bench.module->m_popMessageBox->hide();
        QTRY_COMPARE(bench.module->keys(), QStringList("own"));
    }

    void whatIsHeldComesInOrderAndOnceWhateverItsNumber() {
        Bench bench;
        bench.ask(MessageBoxTypeYesNo);
        constexpr int count = 6000; // more than pump and follower keep for a slow module
        QVERIFY(bench.byHand(QStringLiteral("with recursive n(i) as (select 1 union all select i + "
                                            "1 from n where i < %1) insert into "
                                            "\"Menu\"(\"KeyLink\") select 'k' || i from n")
                                 .arg(count)));
        QTRY_COMPARE_WITH_TIMEOUT(int(bench.second->messages.size()), count, 30000);
        QVERIFY(bench.module->messages.empty());
        bench.module->m_popMessageBox->hide();
        QTRY_COMPARE_WITH_TIMEOUT(int(bench.module->messages.size()), count, 30000);
        QCOMPARE(bench.module->keys(), bench.second->keys());
        QTRY_VERIFY(bench.pump->isIdle());
    }

    void theHostHearsOfEveryChangeAtOnce() {
        Bench bench;
        QSignalSpy changed(bench.pump.get(), &NotificationPump::changed);
        bench.ask(MessageBoxTypeYesNo);
        bench.second->edit = "элемент";
        bench.others("a");
        QTRY_COMPARE(changed.count(), 1);
        QVERIFY(bench.module->messages.empty());
        bench.second->edit.clear();
        bench.module->m_popMessageBox->hide();
        QTRY_VERIFY(bench.pump->isIdle());
        QCOMPARE(changed.count(), 1);
    }

    void eachModuleHasItsOwnPlaceInTheLog() {
        Bench bench;
        bench.others("a");
        QTRY_COMPARE(bench.second->keys(), QStringList("a"));
        QTRY_VERIFY(bench.pump->isIdle());
        const int64_t first = bench.module->messagesSeen();
        QCOMPARE(bench.second->messagesSeen(), first);
        bench.ask(MessageBoxTypeYesNo);
        bench.others("b");
        QVERIFY(bench.isHeld("b"));
        QCOMPARE(bench.module->messagesSeen(), first);
        QVERIFY(bench.second->messagesSeen() > first);
    }

    void aQuestionTellsWhoChangedWhatItIsAboutAndWhen() {
        Bench bench;
        bench.own("asked");
        QTRY_COMPARE(bench.second->keys(), QStringList("asked"));
        CPopMessageBox* box = bench.ask(MessageBoxTypeYesNo);
        box->setSubject("Menu", {"ASKED"});
        bench.others("beside");
        QVERIFY(bench.isHeld("beside"));
        QCOMPARE(textOfBox(box), QString("Уведомление Удалить?"));
        bench.write("Menu", 2, {{"KeyLink", "asked"}, {"caption", "<b>Новое</b>"}});
        QTRY_VERIFY(textOfBox(box).contains("Изменено: engineer, "));
        QVERIFY(textOfBox(box).contains("теперь «<b>Новое</b>»"));
        QVERIFY(box->isQuestion());
    }

    void aQuestionIsWithdrawnWhenAllThatItIsAboutIsGone() {
        Bench bench;
        for (const char* key : {"one", "two"})
            bench.own(key);
        QTRY_COMPARE(bench.second->keys().size(), 2);
        CPopMessageBox* box = bench.ask(MessageBoxTypeYesNo);
        box->setSubject("Menu", {"one", "two"});
        bench.write("Menu", 4, {{"KeyLink", "one"}});
        QTRY_VERIFY(textOfBox(box).contains("Уже удалено: engineer, "));
        QVERIFY(box->isQuestion());
        bench.write("Menu", 4, {{"KeyLink", "two"}});
        QTRY_VERIFY(textOfBox(box).contains("Вопрос снят"));
        QVERIFY(box->isVisible());
        QVERIFY(!box->isQuestion());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(box->isHidden());
        QVERIFY(bench.module->roles.empty()); // the module hears of no answer
        // The next question is one again, and knows nothing of the last.
        bench.ask(MessageBoxTypeYesNo);
        QVERIFY(box->isQuestion());
        QCOMPARE(textOfBox(box), QString("Уведомление Удалить?"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(bench.module->roles.size(), size_t(1));
    }

    void aQuestionIsWithdrawnWhenSomethingIsPutIntoItsSubject() {
        Bench bench;
        for (const auto& [table, subject, link] : {std::tuple("MenuFolder", "desktop", "FolderKey"),
                                                   {"Menu", "folder", "parent"},
                                                   {"Menu", "above", "parent"}}) {
            CPopMessageBox* box = bench.ask(MessageBoxTypeYesNo);
            const bool deep = QString(subject) == "above";
            box->setSubject(table, {subject}, deep ? QStringList("below") : QStringList());
            const std::string key = std::string("in ") + subject;
            bench.write("Menu", 1, {{"KeyLink", key}, {link, deep ? "below" : subject}});
            QTRY_VERIFY(textOfBox(box).contains("Внутри появилось"));
            QVERIFY(!box->isQuestion());
            box->hide();
        }
    }

    void aCorrectionIsToldWhenTheAttentionEnds() {
        Bench bench;
        bench.module->edit = "правка";
        store::Change change;
        change.code = 602;
        change.table = "Menu";
        change.key = "given up";
        change.after = change.before = "{}";
        bench.pump->correct("Menu", {change});
        bench.others("a");
        QVERIFY(bench.isHeld("a"));
        QVERIFY(bench.second->keys().contains("given up"));
        QVERIFY(!bench.module->keys().contains("given up"));
        bench.module->edit.clear();
        QTRY_COMPARE(bench.module->keys(), QStringList({"given up", "a"}));
        QTRY_VERIFY(bench.pump->isIdle());
    }

    void aHeldModuleMayGo() {
        Bench bench;
        bench.ask(MessageBoxTypeYesNo);
        bench.others("a");
        QVERIFY(bench.isHeld("a"));
        bench.registry.stop(bench.module);
        QTRY_VERIFY(bench.pump->isIdle());
        QVERIFY(bench.pump->held().empty());
    }

    void aLogThatIsLostIsToldWhenNothingIsOpenAnyMore() {
        Bench bench;
        QSignalSpy lost(bench.pump.get(), &NotificationPump::logLost);
        QSignalSpy held(bench.pump.get(), &NotificationPump::logLossHeld);
        bench.module->edit = "элемент";
        QVERIFY(bench.byHand("begin; insert into \"Menu\"(\"KeyLink\") values('missed'); "
                             "delete from \"NciEvent\"; commit"));
        QTRY_COMPARE(held.count(), 1);
        QCOMPARE(lost.count(), 0);
        bench.module->edit.clear();
        QTRY_COMPARE(lost.count(), 1);
    }
};

QTEST_MAIN(TestAttention)
#include "tst_attention.moc"
