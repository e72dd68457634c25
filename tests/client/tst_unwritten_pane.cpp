// The pane "Не записано": what it shows of an entry, and that its buttons do what they say.
#include "apps/client/UnwrittenPane.h"
#include "platform/client/ModuleRegistry.h"
#include "tests/client/HostFixture.h"
#include "tests/menu/WindowHands.h"

#include <QLineEdit>
#include <QPushButton>
#include <QToolTip>
#include <QTreeWidget>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;
using app::UnwrittenPane;

namespace {

struct Shown {
    Host host;
    client::UnwrittenList list{host.store()};
    client::ModuleRegistry registry;
    Module* module = new Module(&host.app); // the registry's
    UnwrittenPane pane{list};
    std::unique_ptr<store::Store> other = host.connectAgain();

    Shown() {
        client::setUnwritten(*host.session, &list);
        elsewhere(1, {{"KeyLink", "k"}, {"caption", "Был"}});
        registry.add(module, "Menu");
        registry.start(module);
        pane.show();
    }
    ~Shown() { client::setUnwritten(*host.session, nullptr); }
    void elsewhere(uint32_t flag, const Fields& fields) const {
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        addRecord(array, flag, fields);
        const store::Status status = other->update("Menu", array.array);
        if (!status.ok())
            qFatal("%s", status.text.c_str());
    }
    void write(uint32_t flag, const Fields& fields) const {
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        addRecord(array, flag, fields);
        module->m_app->m_session->SqlUpdate("Menu", array.array, true, nullptr);
    }
    void conflict() const {
        elsewhere(2, {{"KeyLink", "k"}, {"caption", "Чужой"}});
        write(2, {{"KeyLink", "k"}, {"caption", "Мой"}});
    }
    QPushButton* button(const char* name) const { return pane.findChild<QPushButton*>(name); }
    QString caption() {
        CMDArray rows;
        const auto read = host.store().fetchLinked("Menu", "KeyLink", "k", rows.array);
        if (!read.ok())
            return QString::fromStdString(read.text);
        return textOf(rows.array, MDARec(rows.array, 0, 0), "caption");
    }
    /// The open editor of the first value that is mine, its text selected.
    QLineEdit* openMine() const {
        QTreeWidget* tree = pane.tree();
        tree->editItem(tree->topLevelItem(0)->child(0), UnwrittenPane::Mine);
        auto* line = tree->viewport()->findChild<QLineEdit*>();
        if (!line)
            qFatal("no editor");
        line->selectAll();
        return line;
    }
};

} // namespace

class TestUnwrittenPane : public QObject {
    Q_OBJECT
private slots:
    void emptyListOffersNothing() {
        Shown shown;
        QCOMPARE(shown.pane.tree()->topLevelItemCount(), 0);
        for (const char* name : {"unwrittenRepeat", "unwrittenRepeatAll", "unwrittenGiveUp"})
            QVERIFY(!shown.button(name)->isEnabled());
    }

    void refusalIsToldWithItsFields() {
        Shown shown;
        shown.write(1, {{"KeyLink", "k"}, {"caption", "Мой"}, {"params", "<b>x</b>"}});
        QTreeWidgetItem* row = shown.pane.tree()->topLevelItem(0);
        QVERIFY(row);
        QVERIFY2(row->text(UnwrittenPane::What).contains("«Мой»"), qPrintable(row->text(0)));
        QVERIFY(row->text(UnwrittenPane::Why).startsWith("Отказано: "));
        QStringList fields;
        for (int i = 0; i < row->childCount(); ++i)
            fields << row->child(i)->text(UnwrittenPane::Field) + '=' +
                          row->child(i)->text(UnwrittenPane::Mine);
        QVERIFY2(fields.contains("Название=Мой"), qPrintable(fields.join(' ')));
        QVERIFY(fields.contains("Параметры=<b>x</b>"));
        QCOMPARE(shown.button("unwrittenRepeat")->text(), QString("Повторить"));
        shown.elsewhere(4, {{"KeyLink", "k"}});
        shown.button("unwrittenRepeat")->click();
        QCOMPARE(shown.pane.tree()->topLevelItemCount(), 0);
        QCOMPARE(shown.caption(), QString("Мой"));
    }

    void conflictShowsBothSidesAndTakesEither_data() {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("end");
        QTest::newRow("mine") << QByteArray("unwrittenRepeat") << "Взять моё"
                              << "Мой";
        QTest::newRow("theirs") << QByteArray("unwrittenGiveUp") << "Взять чужое"
                                << "Чужой";
    }
    void conflictShowsBothSidesAndTakesEither() {
        QFETCH(QByteArray, button);
        Shown shown;
        shown.conflict();
        QTreeWidgetItem* row = shown.pane.tree()->topLevelItem(0);
        QVERIFY(row && row->isExpanded());
        QCOMPARE(row->childCount(), 1);
        QCOMPARE(row->child(0)->text(UnwrittenPane::Mine), QString("Мой"));
        QVERIFY(row->child(0)->text(UnwrittenPane::Others).startsWith("«Чужой» — "));
        QTEST(shown.button(button)->text(), "text");
        shown.button(button)->click();
        QTEST(shown.caption(), "end");
        QVERIFY(shown.list.isEmpty());
    }

    void mineCanBeEditedBeforeItIsTaken() {
        Shown shown;
        shown.conflict();
        shown.pane.tree()->topLevelItem(0)->child(0)->setText(UnwrittenPane::Mine, "Третий");
        QTRY_COMPARE(shown.list.entries()[0].words.fields[0].mine, QString("«Третий»"));
        shown.button("unwrittenRepeat")->click();
        QCOMPARE(shown.caption(), QString("Третий"));
    }

    void lettersThatNoRecordHoldsAreRefusedAndNamed() {
        Shown shown;
        shown.conflict();
        QLineEdit* line = shown.openMine();
        typeText(line, "Насос ≤ 5");
        QCOMPARE(line->text(), QString("Насос  5"));
        QVERIFY2(QToolTip::text().contains("«≤»"), qPrintable(QToolTip::text()));
        QTest::keyClick(line, Qt::Key_Return);
        QTRY_COMPARE(shown.list.entries()[0].words.fields[0].mine, QString("«Насос  5»"));
        shown.button("unwrittenRepeat")->click();
        QCOMPARE(shown.caption(), QString("Насос  5"));
    }

    void whatIsBeingTypedOutlivesWhatHappensToTheList() {
        Shown shown;
        shown.conflict();
        QTreeWidget* tree = shown.pane.tree();
        QLineEdit* line = shown.openMine();
        QTest::keyClicks(line, "Third");
        shown.write(1, {{"KeyLink", "k"}, {"caption", "Второй"}}); // refused: the key is taken
        QCOMPARE(shown.list.entries().size(), size_t(2));
        QCOMPARE(tree->viewport()->findChild<QLineEdit*>(), line);
        QCOMPARE(line->text(), QString("Third"));
        QTest::keyClick(line, Qt::Key_Return);
        QTRY_COMPARE(tree->topLevelItemCount(), 2);
        QTRY_COMPARE(shown.list.entries()[0].words.fields[0].mine, QString("«Third»"));
        shown.list.repeat(QString(shown.list.entries()[0].id));
        QCOMPARE(shown.caption(), QString("Third"));
        QTRY_COMPARE(tree->topLevelItemCount(), 1);
    }

    void whatIsGoneCanBeMadeAgain() {
        Shown shown;
        shown.elsewhere(4, {{"KeyLink", "k"}});
        shown.write(2, {{"KeyLink", "k"}, {"caption", "Мой"}});
        QCOMPARE(shown.button("unwrittenRepeat")->text(), QString("Создать заново"));
        shown.button("unwrittenRepeat")->click();
        QCOMPARE(shown.caption(), QString("Мой"));
    }
};

QTEST_MAIN(TestUnwrittenPane)
#include "tst_unwritten_pane.moc"
