// Who else is here: in the status bar, at the rows, and the other way round.
#include "apps/client/HostApp.h"
#include "apps/client/PresenceView.h"
#include "apps/client/StatusLine.h"
#include "platform/client/ModuleRegistry.h"
#include "platform/store/Presence.h"
#include "tests/client/HostFixture.h"

#include <QLabel>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;

namespace {

/// A module with an edit when the test says so.
class EditModule : public Module {
public:
    using Module::Module;
    QString ModEditText() const override { return what; }
    QPair<QString, QString> ModEditRecord() const override { return {"Menu", key}; }
    QString what, key;
};

/// A client under test, and another one that speaks when the test lets it.
struct Fixture : Host {
    app::HostApp host;
    client::ModuleRegistry registry;
    app::StatusLine line{"/tmp/orvo.db", "engineer"};
    EditModule* module = new EditModule(&app); ///< the registry's
    std::unique_ptr<store::Presence> other;
    std::unique_ptr<app::PresenceView> view;
    std::vector<store::PresenceEntry> seen; ///< by the other, at its last look

    Fixture() {
        registry.add(module, "Menu");
        registry.start(module);
        store::Status status;
        other = store::openPresence(url, "petrov", &status);
        look();
        view = std::make_unique<app::PresenceView>(store::openPresence(url, "engineer", &status),
                                                   store(), host, registry, line);
    }
    ~Fixture() {
        view.reset();
        registry.stopAll();
    }
    void look() {
        const store::Status status = other->look(&seen);
        QVERIFY2(status.ok(), status.text.c_str());
    }
    void edits(std::vector<store::OpenEdit> edits) {
        other->announce(std::move(edits));
        look();
    }
    /// Lets the other speak until that is so.
    template <class Condition>
    bool soon(Condition condition) {
        return QTest::qWaitFor([&] {
            look();
            return condition();
        });
    }
    QString tip() const { return line.findChild<QLabel*>("othersLabel")->toolTip(); }
};

} // namespace

class TestPresence : public QObject {
    Q_OBJECT
private slots:
    void theStatusBarNamesTheOthers() {
        Fixture fixture;
        QVERIFY(
            fixture.soon([&] { return fixture.line.others() == QString("Ещё здесь: petrov"); }));
        QVERIFY(fixture.tip().contains("petrov"));
        QVERIFY(fixture.tip().contains("с "));
        fixture.other.reset();
        QTRY_COMPARE(fixture.line.others(), QString());
        QVERIFY(!fixture.line.findChild<QLabel*>("othersLabel")->isVisible());
    }

    void aNameThatIsChangedShowsWithTheNextNews() {
        Fixture fixture;
        QVERIFY(fixture.soon([&] { return !fixture.line.others().isEmpty(); }));
        QVERIFY(fixture.byHand("insert into \"Users\" (\"KeyLink\", \"login_\", \"lastName\", "
                               "\"firstName\") values ('u1', 'PETROV', 'Петров<b>', 'Пётр')"));
        store::Change change;
        change.table = "Users";
        fixture.view->changed(change);
        fixture.edits({{"Menu", "k", 1, "элемент"}});
        QVERIFY(fixture.soon(
            [&] { return fixture.line.others() == QString("Ещё здесь: Петров<b> П."); }));
        QVERIFY(fixture.tip().contains("Петров&lt;b&gt; П. (petrov)"));
    }

    void anOpenEditMarksItsRecordUntilItEnds() {
        Fixture fixture;
        QVERIFY(!fixture.host.hasRecordMarks());
        fixture.edits({{"Menu", "Key1", 1700000000, "элемент «Насос»"},
                       {"MenuFolder", "", 1700000000, "новый рабочий стол «КС»"}});
        QVERIFY(fixture.soon([&] { return fixture.host.hasRecordMarks(); }));
        const RecordMark mark = fixture.host.recordMark("Menu", "KEY1");
        QCOMPARE(mark.label, QString("petrov"));
        QVERIFY2(mark.tip.contains("Правит petrov"), qPrintable(mark.tip));
        QVERIFY2(mark.tip.contains("с 14.11.2023") || mark.tip.contains("с 15.11.2023"),
                 qPrintable(mark.tip));
        QVERIFY(fixture.host.recordMark("MenuFolder", "Key1").label.isEmpty());
        QCOMPARE(fixture.host.markedRecords(), QStringList("Menu/key1: petrov"));
        QVERIFY(fixture.tip().contains("элемент «Насос»"));
        QVERIFY(fixture.tip().contains("новый рабочий стол «КС»"));
        fixture.edits({});
        QVERIFY(fixture.soon([&] { return !fixture.host.hasRecordMarks(); }));
        QVERIFY(!fixture.line.others().isEmpty());
    }

    void theOwnEditIsSeenByTheOthers() {
        Fixture fixture;
        QVERIFY(fixture.soon([&] { return fixture.seen.size() == 1; }));
        fixture.module->key = "Key2";
        fixture.module->what = "элемент «Насос»";
        QVERIFY(fixture.soon(
            [&] { return fixture.seen.size() == 1 && fixture.seen[0].edits.size() == 1; }));
        QCOMPARE(fixture.seen[0].edits[0].key, std::string("Key2"));
        QCOMPARE(fixture.seen[0].edits[0].what, std::string("элемент «Насос»"));
        fixture.module->what.clear();
        QVERIFY(fixture.soon(
            [&] { return fixture.seen.size() == 1 && fixture.seen[0].edits.empty(); }));
        fixture.view.reset();
        QVERIFY(fixture.soon([&] { return fixture.seen.empty(); }));
    }
};

QTEST_MAIN(TestPresence)
#include "tst_presence.moc"
