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
        auto* editor = view->viewport()->findChild<QLineEdit*>();
        editor->setText(text);
        return editor;
    }

    QStandardItemModel model;
    QTreeView* view;
    QString edit;
};

struct Fixture : Host {
    QTabWidget tabs;
    ModuleRegistry registry;
    EditModule* module = new EditModule(&app); ///< on show
    EditModule* second = new EditModule(&app); ///< behind it
    std::unique_ptr<NotificationPump> pump;
    std::unique_ptr<store::Store> other = connectAgain("petrov");

    Fixture() {
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
    ~Fixture() { registry.stopAll(); }

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
        Fixture fixture;
        CPopMessageBox* box = fixture.ask(MessageBoxTypeYesNo);
        QSignalSpy held(fixture.pump.get(), &NotificationPump::heldChanged);
        fixture.others("a");
        fixture.others("b");
        QVERIFY(fixture.isHeld("b"));
        QTRY_VERIFY(fixture.pump->held().size() == 1 && fixture.pump->held()[0].changes == 2);
        QVERIFY(fixture.module->messages.empty());
        QVERIFY(!fixture.pump->isIdle());
        QVERIFY(fixture.pump->held()[0].why == Attention::Question);
        QVERIFY(held.count() > 0);
        QTest::mouseClick(box->findChildren<QPushButton*>().at(0), Qt::LeftButton);
        QCOMPARE(fixture.module->roles.size(), size_t(1));
        QVERIFY(fixture.module->messages.empty()); // the answer came first
        QTRY_COMPARE(fixture.module->keys(), QStringList({"a", "b"}));
        QTRY_VERIFY(fixture.pump->held().empty());
        QTRY_VERIFY(fixture.pump->isIdle());
    }

    void aQuestionHoldsBehindAnotherTabToo() {
        Fixture fixture;
        fixture.ask(MessageBoxTypeYesNo);
        fixture.tabs.setCurrentIndex(1);
        fixture.others("a");
        QVERIFY(fixture.isHeld("a"));
        fixture.module->m_popMessageBox->hide();
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void aNoticeHoldsNothing() {
        Fixture fixture;
        fixture.ask(MessageBoxTypeOk);
        fixture.others("a");
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void anOpenPickerHoldsItsModule() {
        Fixture fixture;
        auto* picker = new CPopTemplate(fixture.module, -1);
        picker->show();
        fixture.others("a");
        QVERIFY(fixture.isHeld("a"));
        picker->hide();
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void aCellBeingTypedInKeepsTextAndFocus() {
        Fixture fixture;
        QLineEdit* editor = fixture.module->typeInto("недопи");
        QTRY_VERIFY(editor->hasFocus());
        fixture.others("a");
        QVERIFY(fixture.isHeld("a"));
        QVERIFY(editor->hasFocus());
        QCOMPARE(editor->text(), QString("недопи"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void anOpenEditHoldsUntilItIsSavedOrDropped() {
        Fixture fixture;
        fixture.module->edit = "элемент «Архив»";
        fixture.others("a");
        QVERIFY(fixture.isHeld("a"));
        QTRY_COMPARE(fixture.pump->held().size(), size_t(1));
        QVERIFY(fixture.pump->held()[0].why == Attention::Edit);
        fixture.module->edit.clear();
        QTRY_COMPARE(fixture.module->keys(), QStringList("a"));
    }

    void theOwnEchoComesThroughAnOpenEditAndWhatWasBeforeItToo() {
        Fixture fixture;
        fixture.module->edit = "элемент";
        fixture.others("before");
        QVERIFY(fixture.isHeld("before"));
        QVERIFY(fixture.own("own"));
        QTRY_COMPARE(fixture.module->keys(), QStringList({"before", "own"}));
        fixture.others("after");
        QVERIFY(fixture.isHeld("after"));
        QTRY_COMPARE(fixture.pump->held().size(), size_t(1));
        QCOMPARE(fixture.module->keys(), QStringList({"before", "own"}));
    }

    void whatOthersWriteRightBehindOnesOwnWriteWaits() {
        Fixture fixture;
        fixture.module->edit = "элемент";
        fixture.pump.reset();
        // Before the pump hears of the own write, so that it finds both at the same look.
        connect(&client::sessionEvents(*fixture.session), &client::SessionEvents::written,
                fixture.module, [&fixture] { fixture.others("after"); });
        fixture.startPump();
        QVERIFY(fixture.own("own"));
        QTRY_COMPARE(fixture.module->keys(), QStringList("own"));
        QVERIFY(fixture.isHeld("after"));
        QTRY_VERIFY(fixture.pump->held().size() == 1);
    }

    void aWriteOfTheModuleOnShowDoesNotDisturbTheOneBehind() {
        Fixture fixture;
        fixture.second->edit = "элемент";
        QVERIFY(fixture.own("own"));
        QTRY_COMPARE(fixture.module->keys(), QStringList("own"));
        QTRY_COMPARE(fixture.pump->held().size(), size_t(1));
        QVERIFY(fixture.second->messages.empty());
    }

    void theOwnEchoWaitsForTheAnswerToo() {
        Fixture fixture;
        fixture.ask(MessageBoxTypeYesNo);
        QVERIFY(fixture.own("own"));
        QVERIFY(fixture.isHeld("own"));
        fixture.module->m_popMessageBox->hide();
        QTRY_COMPARE(fixture.module->keys(), QStringList("own"));
    }

    void whatIsHeldComesInOrderAndOnceWhateverItsNumber() {
        Fixture fixture;
        fixture.ask(MessageBoxTypeYesNo);
        constexpr int count = 6000; // more than pump and follower keep for a slow module
        QVERIFY(
            fixture.byHand(QStringLiteral("with recursive n(i) as (select 1 union all select i + "
                                          "1 from n where i < %1) insert into "
                                          "\"Menu\"(\"KeyLink\") select 'k' || i from n")
                               .arg(count)));
        QTRY_COMPARE_WITH_TIMEOUT(int(fixture.second->messages.size()), count, 30000);
        QVERIFY(fixture.module->messages.empty());
        fixture.module->m_popMessageBox->hide();
        QTRY_COMPARE_WITH_TIMEOUT(int(fixture.module->messages.size()), count, 30000);
        QCOMPARE(fixture.module->keys(), fixture.second->keys());
        QTRY_VERIFY(fixture.pump->isIdle());
    }

    void theHostHearsOfEveryChangeAtOnce() {
        Fixture fixture;
        QSignalSpy changed(fixture.pump.get(), &NotificationPump::changed);
        fixture.ask(MessageBoxTypeYesNo);
        fixture.second->edit = "элемент";
        fixture.others("a");
        QTRY_COMPARE(changed.count(), 1);
        QVERIFY(fixture.module->messages.empty());
        fixture.second->edit.clear();
        fixture.module->m_popMessageBox->hide();
        QTRY_VERIFY(fixture.pump->isIdle());
        QCOMPARE(changed.count(), 1);
    }

    void eachModuleHasItsOwnPlaceInTheLog() {
        Fixture fixture;
        fixture.others("a");
        QTRY_COMPARE(fixture.second->keys(), QStringList("a"));
        QTRY_VERIFY(fixture.pump->isIdle());
        const int64_t first = fixture.module->messagesSeen();
        QCOMPARE(fixture.second->messagesSeen(), first);
        fixture.ask(MessageBoxTypeYesNo);
        fixture.others("b");
        QVERIFY(fixture.isHeld("b"));
        QCOMPARE(fixture.module->messagesSeen(), first);
        QVERIFY(fixture.second->messagesSeen() > first);
    }

    void aQuestionTellsWhoChangedWhatItIsAboutAndWhen() {
        Fixture fixture;
        fixture.own("asked");
        QTRY_COMPARE(fixture.second->keys(), QStringList("asked"));
        CPopMessageBox* box = fixture.ask(MessageBoxTypeYesNo);
        box->setSubject("Menu", {"ASKED"});
        fixture.others("beside");
        QVERIFY(fixture.isHeld("beside"));
        QCOMPARE(textOfBox(box), QString("Уведомление Удалить?"));
        fixture.write("Menu", 2, {{"KeyLink", "asked"}, {"caption", "<b>Новое</b>"}});
        QTRY_VERIFY(textOfBox(box).contains("Изменено: engineer, "));
        QVERIFY(textOfBox(box).contains("теперь «<b>Новое</b>»"));
        QVERIFY(box->isQuestion());
    }

    void aQuestionIsWithdrawnWhenAllThatItIsAboutIsGone() {
        Fixture fixture;
        for (const char* key : {"one", "two"})
            fixture.own(key);
        QTRY_COMPARE(fixture.second->keys().size(), 2);
        CPopMessageBox* box = fixture.ask(MessageBoxTypeYesNo);
        box->setSubject("Menu", {"one", "two"});
        fixture.write("Menu", 4, {{"KeyLink", "one"}});
        QTRY_VERIFY(textOfBox(box).contains("Уже удалено: engineer, "));
        QVERIFY(box->isQuestion());
        fixture.write("Menu", 4, {{"KeyLink", "two"}});
        QTRY_VERIFY(textOfBox(box).contains("Вопрос снят"));
        QVERIFY(box->isVisible());
        QVERIFY(!box->isQuestion());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(box->isHidden());
        QVERIFY(fixture.module->roles.empty()); // the module hears of no answer
        // The next question is one again, and knows nothing of the last.
        fixture.ask(MessageBoxTypeYesNo);
        QVERIFY(box->isQuestion());
        QCOMPARE(textOfBox(box), QString("Уведомление Удалить?"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(fixture.module->roles.size(), size_t(1));
    }

    void aQuestionIsWithdrawnWhenSomethingIsPutIntoItsSubject() {
        Fixture fixture;
        for (const auto& [table, subject, link] : {std::tuple("MenuFolder", "desktop", "FolderKey"),
                                                   {"Menu", "folder", "parent"},
                                                   {"Menu", "above", "parent"}}) {
            CPopMessageBox* box = fixture.ask(MessageBoxTypeYesNo);
            const bool deep = QString(subject) == "above";
            box->setSubject(table, {subject}, deep ? QStringList("below") : QStringList());
            const std::string key = std::string("in ") + subject;
            fixture.write("Menu", 1, {{"KeyLink", key}, {link, deep ? "below" : subject}});
            QTRY_VERIFY(textOfBox(box).contains("Внутри появилось"));
            QVERIFY(!box->isQuestion());
            box->hide();
        }
    }

    void aCorrectionIsToldWhenTheAttentionEnds() {
        Fixture fixture;
        fixture.module->edit = "правка";
        store::Change change;
        change.code = 602;
        change.table = "Menu";
        change.key = "given up";
        change.after = change.before = "{}";
        fixture.pump->correct("Menu", {change});
        fixture.others("a");
        QVERIFY(fixture.isHeld("a"));
        QVERIFY(fixture.second->keys().contains("given up"));
        QVERIFY(!fixture.module->keys().contains("given up"));
        fixture.module->edit.clear();
        QTRY_COMPARE(fixture.module->keys(), QStringList({"given up", "a"}));
        QTRY_VERIFY(fixture.pump->isIdle());
    }

    void aHeldModuleMayGo() {
        Fixture fixture;
        fixture.ask(MessageBoxTypeYesNo);
        fixture.others("a");
        QVERIFY(fixture.isHeld("a"));
        fixture.registry.stop(fixture.module);
        QTRY_VERIFY(fixture.pump->isIdle());
        QVERIFY(fixture.pump->held().empty());
    }

    void aLogThatIsLostIsToldWhenNothingIsOpenAnyMore() {
        Fixture fixture;
        QSignalSpy lost(fixture.pump.get(), &NotificationPump::logLost);
        QSignalSpy held(fixture.pump.get(), &NotificationPump::logLossHeld);
        fixture.module->edit = "элемент";
        QVERIFY(fixture.byHand("begin; insert into \"Menu\"(\"KeyLink\") values('missed'); "
                               "delete from \"NciEvent\"; commit"));
        QTRY_COMPARE(held.count(), 1);
        QCOMPARE(lost.count(), 0);
        fixture.module->edit.clear();
        QTRY_COMPARE(lost.count(), 1);
    }
};

QTEST_MAIN(TestAttention)
#include "tst_attention.moc"
