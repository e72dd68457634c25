// The pop-ups inside a module's window.
#include "tests/client/HostFixture.h"

#include <QAccessible>
#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolBar>
#include <QtTest>

using namespace orvo::test;

namespace {

QPushButton* buttonOf(QWidget* box, const QString& text) {
    for (QPushButton* button : box->findChildren<QPushButton*>())
        if (button->text() == text)
            return button;
    return nullptr;
}

/// Counts how often the window was painted.
struct Painted : QObject {
    explicit Painted(QWidget* window) { window->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::UpdateRequest;
        return false;
    }
    int count = 0;
};

struct Fixture {
    App app;
    Module module{&app};
    QLineEdit* edit = new QLineEdit(&module);
    Fixture() {
        module.setCentralWidget(edit);
        module.resize(800, 600);
        module.show();
        module.activateWindow();
        edit->setFocus();
        [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(&module);
    }
    CPopMessageBox* ask(TMessageBoxType type = MessageBoxTypeYesNo,
                        const char* slot = SLOT(boxClicked(QAbstractButton*))) {
        module.PopMessageBoxCreate();
        module.m_popMessageBox->setMessage(
            "Уведомление", "Вы действительно хотите удалить рабочий стол \"Пульт\"?",
            type == MessageBoxTypeYesNo ? MessageBoxIconQuestion : MessageBoxIconError, type, slot);
        module.m_popMessageBox->show();
        return module.m_popMessageBox;
    }
};

} // namespace

class TestPopups : public QObject {
    Q_OBJECT
private slots:
    void screenReadersAreToldWhatItIs() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        const QAccessibleInterface* read = QAccessible::queryAccessibleInterface(box);
        QCOMPARE(read->role(), QAccessible::AlertMessage);
        QCOMPARE(read->text(QAccessible::Name), QString("Уведомление"));
        QVERIFY(read->text(QAccessible::Description).contains("Пульт"));
        box->setDetails("3 элемента");
        QVERIFY(read->text(QAccessible::Description).contains("3 элемента"));
        const CPopTemplate list(&fixture.module, -1);
        QCOMPARE(QAccessible::queryAccessibleInterface(const_cast<CPopTemplate*>(&list))->role(),
                 QAccessible::Dialog);
    }

    void showReturnsAtOnceAndCoversTheModule() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        QVERIFY(box->isVisible());
        QVERIFY(!box->isWindow());
        QCOMPARE(box->geometry(), fixture.module.rect());
        fixture.module.resize(900, 700);
        QTRY_COMPARE(box->geometry(), fixture.module.rect());
    }

    void aQuestionHasYesAndNo() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        QVERIFY(buttonOf(box, "Да")->isVisible());
        QVERIFY(buttonOf(box, "Нет")->isVisible());
        QVERIFY(!buttonOf(box, "ОК")->isVisible());
        QCOMPARE(box->ButtonRole(buttonOf(box, "Да")), int(QMessageBox::YesRole));
        QCOMPARE(box->ButtonRole(buttonOf(box, "Да")), 5);
        QCOMPARE(box->ButtonRole(buttonOf(box, "Нет")), int(QMessageBox::NoRole));
        QPushButton stranger;
        QCOMPARE(box->ButtonRole(&stranger), -1);
        QCOMPARE(box->ButtonRole(nullptr), -1);
    }

    void detailsOfAnyLengthStayInsideTheWindow() {
        Fixture fixture;
        fixture.module.resize(420, 300);
        CPopMessageBox* box = fixture.ask();
        QStringList lines;
        for (int i = 0; i < 40; ++i)
            lines << QString("элемент меню «Насос подпиточный № %1» на столе «КС-1»").arg(i);
        lines << "последняя";
        box->setDetails(lines.join('\n'));
        const QRect room = fixture.module.rect();
        const auto inWindow = [&](const QWidget* widget) {
            return QRect(widget->mapTo(&fixture.module, QPoint()), widget->size());
        };
        auto* scroll = box->findChild<QScrollArea*>();
        QTRY_VERIFY(scroll->verticalScrollBar()->maximum() > 0);
        for (const char* button : {"Да", "Нет"})
            QVERIFY(room.contains(inWindow(buttonOf(box, button))));
        QVERIFY(room.contains(inWindow(scroll)));
        QLabel* details = nullptr;
        for (QLabel* label : box->findChildren<QLabel*>())
            if (label->text().endsWith("последняя"))
                details = label;
        QVERIFY(details);
        QVERIFY(inWindow(details).bottom() > room.bottom()); // and can be read all the same:
        QTest::keyClick(buttonOf(box, "Да"), Qt::Key_End);
        QTRY_VERIFY(inWindow(details).bottom() <= inWindow(scroll).bottom());
        QTest::keyClick(buttonOf(box, "Да"), Qt::Key_Home);
        QCOMPARE(scroll->verticalScrollBar()->value(), 0);
    }

    void detailsThatArriveLateLeaveNoTraceOfWhatStoodThere() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        Painted painted(&fixture.module);
        const auto pixels = [&] {
            const int before = painted.count;
            [[maybe_unused]] const bool is =
                QTest::qWaitFor([&] { return painted.count > before; });
            return fixture.module.screen()->grabWindow(fixture.module.winId()).toImage();
        };
        QVERIFY(QTest::qWaitForWindowExposed(&fixture.module));
        box->setDetails("элемент меню «Насос»\nэлемент меню «Клапан»\nэлемент меню «Кран»");
        const QImage grown = pixels();
        fixture.module.update();
        QCOMPARE(grown, pixels());
        box->setDetails({});
        const QImage shrunk = pixels();
        fixture.module.update();
        QCOMPARE(shrunk, pixels());
    }

    void detailsStandBelowTheTextUntilTheNextMessage() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        box->setDetails("модуль «Тренд»\nмодуль «Журнал»");
        const auto details = [box] {
            QStringList texts;
            for (const QLabel* label : box->findChildren<QLabel*>())
                texts << label->text();
            return texts.filter("Тренд");
        };
        QCOMPARE(details(), QStringList("модуль «Тренд»\nмодуль «Журнал»"));
        fixture.ask();
        QCOMPARE(details(), QStringList());
    }

    void aNoticeHasOneButton() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask(MessageBoxTypeOk);
        QVERIFY(buttonOf(box, "ОК")->isVisible());
        QVERIFY(!buttonOf(box, "Да")->isVisible());
        QVERIFY(box->ButtonRole(buttonOf(box, "ОК")) != 5);
    }

    void theClickedButtonReachesTheSlot() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        QTest::mouseClick(buttonOf(box, "Да"), Qt::LeftButton);
        QCOMPARE(fixture.module.roles, std::vector<int>{5});
        QVERIFY(box->isHidden());
        fixture.ask();
        QTest::mouseClick(buttonOf(box, "Нет"), Qt::LeftButton);
        QCOMPARE(fixture.module.roles, (std::vector<int>{5, 6}));
    }

    void keysAnswer() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        QTRY_VERIFY(buttonOf(box, "Да")->hasFocus());
        QTest::keyClick(buttonOf(box, "Да"), Qt::Key_Return);
        fixture.ask();
        QTest::keyClick(buttonOf(box, "Да"), Qt::Key_Escape);
        fixture.ask();
        QTest::keyClick(buttonOf(box, "Да"), Qt::Key_Tab);
        QVERIFY(buttonOf(box, "Нет")->hasFocus());
        QTest::keyClick(buttonOf(box, "Нет"), Qt::Key_Enter);
        QCOMPARE(fixture.module.roles, (std::vector<int>{5, 6, 6}));
        fixture.ask(MessageBoxTypeOk);
        QTest::keyClick(buttonOf(box, "ОК"), Qt::Key_Escape);
        QCOMPARE(fixture.module.roles.back(), int(QMessageBox::AcceptRole));
        QVERIFY(box->isHidden());
    }

    void whatABoxCoversTakesNeitherMouseNorKeys() {
        Fixture fixture;
        auto* button = new QPushButton("Писать", &fixture.module);
        fixture.module.addToolBar("Панель")->addWidget(button);
        auto* act = new QAction("Удалить", &fixture.module);
        act->setShortcut(Qt::Key_Delete);
        fixture.module.addAction(act);
        QSignalSpy pressed(button, &QPushButton::pressed);
        QSignalSpy triggered(act, &QAction::triggered);
        QTRY_VERIFY(fixture.edit->hasFocus());
        const auto tryAll = [&] {
            QTest::mouseClick(button, Qt::LeftButton);
            QTest::keyClick(fixture.edit, Qt::Key_X);
            QTest::keyClick(fixture.edit, Qt::Key_Delete);
            QTest::keyClick(&fixture.module, Qt::Key_Delete);
        };
        CPopMessageBox* box = fixture.ask();
        tryAll();
        QCOMPARE(pressed.count(), 0);
        QCOMPARE(triggered.count(), 0);
        QCOMPARE(fixture.edit->text(), QString());
        // The keyboard goes back to the question from whatever took it.
        fixture.edit->setFocus();
        QTRY_VERIFY(box->isAncestorOf(QApplication::focusWidget()));
        box->hide();
        fixture.edit->setFocus();
        tryAll();
        QCOMPARE(pressed.count(), 1);
        QCOMPARE(fixture.edit->text(), QString("x"));
    }

    void theRestOfTheWindowStaysUsableBesideABox() {
        QMainWindow window;
        App app;
        auto* module = new Module(&app);
        auto* beside = new QLineEdit;
        auto* middle = new QWidget;
        auto* row = new QHBoxLayout(middle);
        row->addWidget(module);
        row->addWidget(beside);
        window.setCentralWidget(middle);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        module->PopMessageBoxCreate();
        module->m_popMessageBox->show();
        beside->setFocus();
        QTest::keyClick(beside, Qt::Key_X);
        QCOMPARE(beside->text(), QString("x"));
    }

    void tabStaysInTheBoxAndFocusComesBack() {
        Fixture fixture;
        QTRY_VERIFY(fixture.edit->hasFocus());
        CPopMessageBox* box = fixture.ask();
        for (int i = 0; i < 5; ++i) {
            QTest::keyClick(QApplication::focusWidget(), i % 2 ? Qt::Key_Tab : Qt::Key_Backtab);
            QVERIFY(box->isAncestorOf(QApplication::focusWidget()));
        }
        box->hide();
        QVERIFY(fixture.edit->hasFocus());
    }

    void shortcutsBehindTheBoxRest() {
        Fixture fixture;
        QAction action;
        action.setShortcut(Qt::Key_Delete);
        fixture.module.addAction(&action);
        QSignalSpy fired(&action, &QAction::triggered);
        CPopMessageBox* box = fixture.ask();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
        QCOMPARE(fired.count(), 0);
        box->hide();
        QTest::keyClick(&fixture.module, Qt::Key_Delete);
        QCOMPARE(fired.count(), 1);
    }

    void theBoxCanBeFilledAgainInsideItsOwnSlot() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        int errors = 0;
        QObject::connect(box, &CPopMessageBox::clicked, this, [&](QAbstractButton* button) {
            if (box->ButtonRole(button) != 5)
                return;
            ++errors; // as the deletion of a resource in use: question, then error
            fixture.ask(MessageBoxTypeOk);
        });
        QTest::mouseClick(buttonOf(box, "Да"), Qt::LeftButton);
        QCOMPARE(errors, 1);
        QVERIFY(box->isVisible());
        QVERIFY(buttonOf(box, "ОК")->isVisible());
        QTest::mouseClick(buttonOf(box, "ОК"), Qt::LeftButton);
        QVERIFY(box->isHidden());
        QCOMPARE(fixture.module.roles.size(), size_t(2)); // each click once
    }

    void withoutASlotTheBoxClosesItself() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask(MessageBoxTypeOk, nullptr);
        QTest::mouseClick(buttonOf(box, "ОК"), Qt::LeftButton);
        QVERIFY(box->isHidden());
        QVERIFY(fixture.module.roles.empty());
    }

    void textsAreShownAsTheyAre() {
        Fixture fixture;
        fixture.module.PopMessageBoxCreate();
        CPopMessageBox* box = fixture.module.m_popMessageBox;
        const QString text = "<b>жирный</b> & \"кавычки\" " + QString(300, 'w');
        box->setMessage("<i>x</i>", text, MessageBoxIconError, MessageBoxTypeOk, nullptr);
        box->show();
        bool found = false;
        for (QLabel* label : box->findChildren<QLabel*>()) {
            QCOMPARE(label->textFormat(), Qt::PlainText);
            found = found || label->text().remove(QChar(0x200B)) == text;
            QVERIFY(label->width() < 600);
        }
        QVERIFY(found);
    }

    void clicksDoNotReachTheModuleBehind() {
        Fixture fixture;
        CPopMessageBox* box = fixture.ask();
        QTest::mouseClick(fixture.module.childAt(5, 300), Qt::LeftButton);
        QVERIFY(box->isVisible());
        QVERIFY(fixture.module.roles.empty());
        QVERIFY(box->isAncestorOf(fixture.module.childAt(5, 300)));
    }

    void theProgressBarRepaintsWithoutTheLoop() {
        Fixture fixture;
        CPopProgressBar bar(&fixture.module);
        QVERIFY(bar.isHidden());
        bar.setText("Загрузка форм в БД", "");
        bar.setRange(0, 4);
        bar.setColor(ProgressBarColorGreen);
        bar.show();
        QCOMPARE(bar.geometry(), fixture.module.rect());
        QStringList words;
        for (const QLabel* label : bar.findChildren<QLabel*>())
            if (label->isVisible())
                words << label->text().remove(QChar(0x200B));
        QCOMPARE(words, QStringList("Загрузка форм в БД"));
        class Painted : public QObject {
        public:
            int count = 0;
            bool eventFilter(QObject*, QEvent* event) override {
                count += event->type() == QEvent::Paint;
                return false;
            }
        } painted;
        auto* inner = bar.findChild<QProgressBar*>();
        inner->installEventFilter(&painted);
        bool looped = false;
        QTimer::singleShot(0, this, [&] { looped = true; });
        for (int i = 0; i < 4; ++i)
            bar.setValue(i);
        QVERIFY(!looped);
        QVERIFY(painted.count >= 4);
        QCOMPARE(inner->value(), 3);
        QCOMPARE(inner->maximum(), 4);
        bar.close();
        QVERIFY(bar.isHidden());
        QTRY_VERIFY(looped); // before what it refers to ends
    }

    void aPopupWindowIsCentredOverItsParentAndClosesByEscape() {
        Fixture fixture;
        fixture.module.move(100, 50);
        CPopTemplate popup(&fixture.module, -1);
        popup.resize(300, 200);
        popup.show();
        QVERIFY(popup.isWindow());
        QVERIFY(!popup.isModal());
        QVERIFY(QTest::qWaitForWindowExposed(&popup));
        const QPoint middle = popup.geometry().center();
        const QPoint wanted = fixture.module.mapToGlobal(fixture.module.rect().center());
        QVERIFY((middle - wanted).manhattanLength() < 6);
        popup.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&popup));
        QTest::keyClick(&popup, Qt::Key_Escape);
        QVERIFY(popup.isHidden());
    }
};

QTEST_MAIN(TestPopups)
#include "tst_popups.moc"
