// When something is missing at the wrong moment: the server's structures, the second of two writes,
// the clipboard, the row that a question was about.
#include "tests/menu/LiveProbe.h"
#include "tests/menu/Outage.h"

#include <QClipboard>
#include <QMimeData>

#include <dlfcn.h>

using namespace orvo::test;
using orvo::menu::desckMime;
using orvo::menu::menuMime;

namespace {

struct Question {
    QString title;
    QString text;
    int icon = -1;
    int type = -1;
    QByteArray slot;
};
Question lastQuestion;

} // namespace

// The test's own definition comes before that of the host library, and passes on to it.
void CPopMessageBox::setMessage(QString title, QString text, TMessageBoxIcon icon,
                                TMessageBoxType type, const char* slot) {
    using Set =
        void (*)(CPopMessageBox*, QString, QString, TMessageBoxIcon, TMessageBoxType, const char*);
    static const auto set = reinterpret_cast<Set>(
        dlsym(RTLD_NEXT, "_ZN14CPopMessageBox10setMessageE7QStringS0_15TMessageBoxIcon"
                         "15TMessageBoxTypePKc"));
    lastQuestion = {title, text, icon, type, slot};
    set(this, title, text, icon, type, slot);
}

namespace {

/// The editor of the plant, with what its questions are answered by.
struct Mishap : Live {
    using Live::Live;

    QAbstractButton* button(int role) {
        for (QAbstractButton* button : editor->m_popMessageBox->findChildren<QAbstractButton*>())
            if (editor->m_popMessageBox->ButtonRole(button) == role)
                return button;
        qFatal("the box has no button of role %d", role);
    }
    void sayYes() { QTest::mouseClick(button(OperationsEditor::Yes), Qt::LeftButton); }
    QString written() { return host.writes().take(); }
    void select(const char* key) {
        menuView()->selectionModel()->clear();
        menuView()->selectionModel()->setCurrentIndex(
            editor->element(key), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    void drop(const char* destination, const char* key, int option) {
        editor->on_menu_dragdrop(editor->element(destination), {QString::fromUtf8(key)}, option);
    }
};

using Act = void (*)(Mishap&);

struct Operation {
    const char* name;
    Act prepare;
    Act act;
};

const Operation operations[] = {
    {"an empty folder is deleted", [](Mishap& live) { live.openDesck("sklad"); },
     [](Mishap& live) { live->on_actDeleteFromtvDesck_triggered(); }},
    {"a desktop is deleted", [](Mishap& live) { live.makeCurrent("calc"); },
     [](Mishap& live) {
         live->on_actDeleteFromtvDesck_triggered();
         live.sayYes();
     }},
    {"a desktop is pasted", [](Mishap& live) { live->on_actCopyDescktopOrFolder_triggered(); },
     [](Mishap& live) { live->on_actPasteDescktopOrFolder_triggered(); }},
    {"an element is copied", [](Mishap& live) { live.select("calc"); },
     [](Mishap& live) { live->on_actCopyMenuElement_triggered(); }},
    {"an element is cut", [](Mishap& live) { live.select("calc"); },
     [](Mishap& live) { live->on_actCutMenuElement_triggered(); }},
    {"a copy is pasted",
     [](Mishap& live) {
         live.select("calc");
         live->on_actCopyMenuElement_triggered();
     },
     [](Mishap& live) { live->on_actPasteMenuElement_triggered(); }},
    {"a cut is pasted",
     [](Mishap& live) {
         live.select("calc");
         live->on_actCutMenuElement_triggered();
         live.select("glubzhe");
     },
     [](Mishap& live) { live->on_actPasteMenuElement_triggered(); }},
    {"an element moves up", [](Mishap& live) { live.makeCurrent("calc"); },
     [](Mishap& live) { live->on_actMoveUp_triggered(); }},
    {"an element moves down", [](Mishap& live) { live.makeCurrent("calc"); },
     [](Mishap& live) { live->on_actMoveDown_triggered(); }},
    {"a drop onto a folder", [](Mishap&) {},
     [](Mishap& live) { live.drop("glubzhe", "calc", -1); }},
    {"a drop among siblings", [](Mishap&) {},
     [](Mishap& live) { live.drop("grafiki", "glubzhe", 1); }},
    {"a drop between others", [](Mishap&) {},
     [](Mishap& live) { live.drop("glubzhe", "calc", 0); }},
    {"an element is deleted", [](Mishap& live) { live.makeCurrent("grafiki"); },
     [](Mishap& live) {
         live->on_actDeleteElem_triggered();
         live.sayYes();
     }},
};

QByteArray clipboardBytes() {
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    return offered ? offered->data(menuMime) + '|' + offered->data(desckMime) : QByteArray();
}

} // namespace

class TestMenuMishaps : public QObject {
    Q_OBJECT
private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    // Structures and the clipboard

    void withoutAStructureNothingHappens_data() {
        QTest::addColumn<int>("number");
        for (int i = 0; i < int(std::size(operations)); ++i)
            dataRow(operations[i].name, i);
    }

    void withoutAStructureNothingHappens() {
        QFETCH(int, number);
        Mishap live;
        operations[number].prepare(live);
        const QByteArray clipboard = clipboardBytes();
        const QString shown = live.desckText() + live.menuText();
        const QString current = live->m_currentMenuKey;
        const bool cutPending = live->m_cutPending;
        {
            const StructureOutage outage;
            operations[number].act(live);
        }
        QCOMPARE(live.written(), QString());
        // A menu is emptied only for a desktop whose deletion goes out.
        QCOMPARE(live.desckText() + live.menuText(), shown);
        QCOMPARE(live->m_currentMenuKey, current);
        QVERIFY(live->m_focusKey.isNull());
        QCOMPARE(clipboardBytes(), clipboard);
        QCOMPARE(live->m_cutPending, cutPending);
        if (live->m_popMessageBox)
            QVERIFY(!live->m_popMessageBox->isVisible());
    }

    void withAStructureEachOfThemDoesSomething_data() { withoutAStructureNothingHappens_data(); }

    void withAStructureEachOfThemDoesSomething() {
        QFETCH(int, number);
        Mishap live;
        operations[number].prepare(live);
        const QByteArray clipboard = clipboardBytes();
        operations[number].act(live);
        QVERIFY(!live.written().isEmpty() || clipboardBytes() != clipboard);
    }

    void withoutAClipboardNothingHappens() {
        Mishap live;
        live.select("calc");
        live->on_actCutMenuElement_triggered();
        const QByteArray before = clipboardBytes();
        QClipboard* clipboard = std::exchange(live->m_clipboard, nullptr);
        live->on_actCopyMenuElement_triggered();
        live->on_actCutMenuElement_triggered();
        live->on_actPasteMenuElement_triggered();
        live->on_actCopyDescktopOrFolder_triggered();
        live->on_actPasteDescktopOrFolder_triggered();
        QVERIFY(QMetaObject::invokeMethod(live.editor.module.get(), "on_clipboardDataChanged"));
        QVERIFY(!live->checkMimeType(menuMime));
        live->m_clipboard = clipboard;
        QCOMPARE(clipboardBytes(), before);
        QCOMPARE(live.written(), QString());
    }

    // The second of two writes

    void siblingsStayShiftedIfTheElementIsRefused() {
        Mishap live;
        live.store.sql(
            "CREATE TRIGGER refuse BEFORE UPDATE ON \"Menu\" WHEN NEW.\"KeyLink\" = 'shema' "
            "BEGIN SELECT RAISE(ABORT, 'refused'); END");
        live.drop("grafiki", "shema", 1);
        QCOMPARE(live.written(), QString("Menu\n  ~calc order_=2000\n  ~glubzhe order_=3000\n"
                                         "Menu\n  ~shema parent='grafiki' order_=1000\n"));
        QCOMPARE(live.host.failures.size(), 1);
        live.deliver();
        QCOMPARE(live.cell("calc", orvo::menu::MenuColumn::Order), QVariant(2000));
        QCOMPARE(live->element("shema").parent(), live->element("MenuRootNode"));
        // It is selected all the same.
        QCOMPARE(live.currentElement(), QString("shema"));
        QVERIFY(live->m_focusKey.isNull());
    }

    void elementsStayDeletedIfTheirDesktopIsRefused() {
        Mishap live;
        live->on_actDeleteFromtvDesck_triggered();
        live.host.writes().refusedTable = "MenuFolder";
        live.sayYes();
        QCOMPARE(live.host.writes().calls.size(), 2);
        live.deliver();
        QVERIFY(live->desck("armop").isValid());
        live.openDesck("sklad");
        live.openDesck("armop");
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        QCOMPARE(orvo::recordCount(live->m_tabMenu), 0);
    }

    void aDesktopStaysPastedIfItsElementsAreRefused() {
        Mishap live;
        live->on_actCopyDescktopOrFolder_triggered();
        live.openDesck("sklad");
        live.host.writes().refusedTable = "Menu";
        live->on_actPasteDescktopOrFolder_triggered();
        QCOMPARE(live.host.writes().calls.size(), 2);
        QCOMPARE(live.host.writes().calls[0].table, QString("MenuFolder"));
        live.deliver();
        QCOMPARE(live->m_desckModel->rowCount(live->desck("sklad")), 1);
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
    }

    void aCutIsInBothPlacesIfItsDeletionIsRefused() {
        Mishap live;
        live.store.sql("CREATE TRIGGER refuse BEFORE DELETE ON \"Menu\" "
                       "BEGIN SELECT RAISE(ABORT, 'refused'); END");
        live.select("calc");
        live->on_actCutMenuElement_triggered();
        live.makeCurrent("MenuRootNode");
        live->on_actPasteMenuElement_triggered();
        QCOMPARE(live.host.writes().calls.size(), 2);
        QCOMPARE(live.host.failures.size(), 1);
        live.deliver();
        QCOMPARE(live.menuText().count("Расчёт"), 2);
    }

    // Questions

    void questionsHaveTheirForm() {
        Mishap live;
        live->on_actDeleteFromtvDesck_triggered();
        QCOMPARE(lastQuestion.title, QString("Уведомление"));
        QCOMPARE(lastQuestion.text,
                 QString("Вы действительно хотите удалить рабочий стол \"АРМ оператора\"?"));
        QCOMPARE(lastQuestion.icon, 4);
        QCOMPARE(lastQuestion.type, 5);
        QCOMPARE(lastQuestion.slot, QByteArray("1removeDesckTopMessage(QAbstractButton*)"));
        live.makeCurrent("calc");
        live->on_actDeleteElem_triggered();
        QCOMPARE(lastQuestion.title, QString("Уведомление"));
        QCOMPARE(lastQuestion.icon, 4);
        QCOMPARE(lastQuestion.type, 5);
        QCOMPARE(lastQuestion.slot, QByteArray("1removeMenuMessage(QAbstractButton*)"));
        // Consent is the role alone.
        QTest::mouseClick(live.button(OperationsEditor::No), Qt::LeftButton);
        QCOMPARE(live.written(), QString());
    }

    void allQuestionsAreOneBox() {
        Mishap live;
        QVERIFY(!live->m_popMessageBox);
        live->on_actDeleteFromtvDesck_triggered();
        CPopMessageBox* box = live->m_popMessageBox;
        QVERIFY(box && box->isVisible());
        QCOMPARE(box->parentWidget(), live.editor.module.get());
        QTest::mouseClick(live.button(OperationsEditor::No), Qt::LeftButton);
        QVERIFY(!box->isVisible());
        live.makeCurrent("calc");
        live->on_actDeleteElem_triggered();
        QCOMPARE(live->m_popMessageBox, box);
        QVERIFY(box->isVisible());
        // The question before is none any more.
        live.sayYes();
        QCOMPARE(live.written(), QString("Menu\n  -calc\n"));
    }

    void theAnswerAboutADesktopAppliesToTheOneCurrentThen() {
        Mishap live([](TestStore& store) {
            addDesck(store, "armb", "ceh", "Б стол", false);
            addElement(store, "armb", "odin", "", "Один", 0, "rform");
        });
        live->on_actDeleteFromtvDesck_triggered();
        live.store.remove("MenuFolder", "armop");
        live.deliver();
        QCOMPARE(live->m_currentDesckKey, QString("armb"));
        live.sayYes();
        QCOMPARE(live.written(), QString("Menu\n  -odin\nMenuFolder\n  -armb\n"));
        QCOMPARE(live->m_menuModel->rowCount(), 0);
    }

    void theAnswerAboutADesktopThatIsGoneEndsWell() {
        Mishap live;
        live->on_actDeleteFromtvDesck_triggered();
        // Everything above it goes while the question stands.
        for (const char* key : {"armpech", "pech", "armop", "ceh", "sklad", "obshiy"})
            live.store.remove("MenuFolder", key);
        live.deliver();
        QCOMPARE(live->m_currentDesckKey, QString("mainnode"));
        live.sayYes();
        // The top row is no record of the server's.
        live.deliver();
        QCOMPARE(live.desckText(), QString("Список рабочих столов #mainnode\n"));
        QCOMPARE(live.host.failures, QStringList());
    }

    void anElementEditedUnderTheQuestionGoesWithItsDesktop() {
        Mishap live;
        live.makeCurrent("calc");
        live->on_actDeleteFromtvDesck_triggered();
        live->on_editor_valueChanged("name", "Иное");
        QCOMPARE(live.mode(), int32_t(MenuProbe::EditElement));
        live.sayYes();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
        const QVector<WriteCall> calls = live.host.writes().calls;
        QVERIFY(calls.size() >= 2);
        QCOMPARE(calls[calls.size() - 2].records.size(), 7);
        QCOMPARE(calls.last().records, QStringList("-armop"));
        live.deliver();
        QVERIFY(!live->desck("armop").isValid());
        QCOMPARE(live.host.failures, QStringList());
    }

    void aNewFolderUnderTheQuestionEndsItsEdit() {
        Mishap live;
        live.makeCurrent("grafiki");
        live->on_actDeleteFromtvDesck_triggered();
        live->on_actNewElemFolder_triggered();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NewElement));
        live.sayYes();
        QCOMPARE(live.mode(), int32_t(MenuProbe::NoEdit));
        QVERIFY(!live.buttonsEnabled());
        QVERIFY(!live->m_editMenuIndex.isValid());
        QCOMPARE(live.host.writes().calls.last().records, QStringList("-armop"));
        live.deliver();
        live.openDesck("obshiy");
        QCOMPARE(live.menuText(), QString("Меню #MenuRootNode\n"));
        QCOMPARE(live.host.failures, QStringList());
    }
};

QTEST_MAIN(TestMenuMishaps)
#include "tst_menu_mishaps.moc"
