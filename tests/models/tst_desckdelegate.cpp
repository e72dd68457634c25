// Editing a name in place, in a real tree view.
#include "TreeText.h"

#include "models/DesckDelegate.h"
#include "models/DesckTreeModel.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTreeView>
#include <QtTest>

using namespace treetext;

namespace {

/// A view over a small tree, whose editors an action opens.
struct Fixture {
    Watched<DesckTreeModel> model{headers(6)};
    DesckDelegate delegate{&model, nullptr};
    QTreeView view;

    Fixture() {
        fill(model, 1, "top #t 4=true\n  alpha #a 4=false\n");
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.setEditTriggers(QAbstractItemView::NoEditTriggers);
        view.expandAll();
        view.resize(400, 200);
        view.show();
    }
    QModelIndex name() const { return model.findIndexByKey("a"); }
    QLineEdit* openEditor() {
        view.setCurrentIndex(name());
        view.edit(name());
        return view.viewport()->findChild<QLineEdit*>();
    }
};

} // namespace

class DesckDelegateTest : public QObject {
    Q_OBJECT
private slots:
    void theEditorOpensWithTheName() {
        Fixture fixture;
        QLineEdit* editor = fixture.openEditor();
        QVERIFY(editor);
        QCOMPARE(editor->text(), QString("alpha"));
        QCOMPARE(editor->parentWidget(), fixture.view.viewport());
    }

    void typingWritesTheModelAtEachKey() {
        Fixture fixture;
        QSignalSpy named(&fixture.model, &DesckTreeModel::nameChanged);
        QLineEdit* editor = fixture.openEditor();
        editor->end(false);
        QTest::keyClicks(editor, "xyz");
        QCOMPARE(fixture.name().data().toString(), QString("alphaxyz"));
        QCOMPARE(named.count(), 3);
        QCOMPARE(named.at(0).at(0).toString(), QString("alphax"));
        QCOMPARE(named.at(2).at(0).toString(), QString("alphaxyz"));
        QCOMPARE(fixture.view.viewport()->findChild<QLineEdit*>(), editor);
    }

    void theCursorStaysWhereItWas() {
        Fixture fixture;
        QLineEdit* editor = fixture.openEditor();
        editor->deselect();
        editor->setCursorPosition(2);
        QTest::keyClicks(editor, "__");
        QCOMPARE(editor->text(), QString("al__pha"));
        QCOMPARE(editor->cursorPosition(), 4);
        QTest::keyClick(editor, Qt::Key_Backspace);
        QCOMPARE(fixture.name().data().toString(), QString("al_pha"));
        QCOMPARE(editor->cursorPosition(), 3);
    }

    void whatWasTypedIsTakenBackAndDoneAgain() {
        Fixture fixture;
        QLineEdit* editor = fixture.openEditor();
        editor->end(false);
        QTest::keyClicks(editor, "xyz");
        while (editor->isUndoAvailable())
            QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(fixture.name().data().toString(), QString("alpha"));
        while (editor->isRedoAvailable())
            QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(fixture.name().data().toString(), QString("alphaxyz"));
    }

    void theModelsAnswerDoesNotEcho() {
        Fixture fixture;
        QLineEdit* editor = fixture.openEditor();
        QSignalSpy texts(editor, &QLineEdit::textChanged);
        QSignalSpy changed(&fixture.model, &QAbstractItemModel::dataChanged);
        editor->end(false);
        QTest::keyClicks(editor, "x");
        QCOMPARE(texts.count(), 1);
        QCOMPARE(changed.count(), 1);
        fixture.model.setData(fixture.name(), "other");
        QCOMPARE(editor->text(), QString("other"));
        QCOMPARE(texts.count(), 1);
    }

    void onlyTheNameColumnHasAnEditor() {
        Fixture fixture;
        QWidget parent;
        for (int column = 1; column < 6; ++column)
            QVERIFY(!fixture.delegate.createEditor(&parent, {},
                                                   fixture.name().siblingAtColumn(column)));
        QLineEdit line("untouched");
        fixture.delegate.setEditorData(&line, fixture.name().siblingAtColumn(1));
        QCOMPARE(line.text(), QString("untouched"));
        fixture.delegate.setModelData(&line, &fixture.model, fixture.name().siblingAtColumn(3));
        QVERIFY(!fixture.name().siblingAtColumn(3).data().isValid());
    }

    void anInvalidIndexHasNoEditor() {
        Fixture fixture;
        QWidget parent;
        QLineEdit line("untouched");
        QVERIFY(!fixture.delegate.createEditor(&parent, {}, QModelIndex()));
        fixture.delegate.setEditorData(&line, QModelIndex());
        QCOMPARE(line.text(), QString("untouched"));
        fixture.delegate.setModelData(&line, &fixture.model, QModelIndex());
        QCOMPARE(print(fixture.model, 1), QString("top #t\n  alpha #a\n"));
    }

    void otherWidgetsAreLeftAlone() {
        Fixture fixture;
        QWidget plain;
        fixture.delegate.setEditorData(&plain, fixture.name());
        fixture.delegate.setModelData(&plain, &fixture.model, fixture.name());
        QCOMPARE(fixture.name().data().toString(), QString("alpha"));
    }

    void onlyAWidgetThatSendsIsCommitted() {
        Fixture fixture;
        QSignalSpy committed(&fixture.delegate, &QAbstractItemDelegate::commitData);
        QMetaObject::invokeMethod(&fixture.delegate, "commitEditorData"); // sent by nobody
        QObject thing;
        connect(&thing, SIGNAL(objectNameChanged(QString)), &fixture.delegate,
                SLOT(commitEditorData()));
        thing.setObjectName("x");
        QCOMPARE(committed.count(), 0);
        QWidget widget;
        connect(&widget, SIGNAL(objectNameChanged(QString)), &fixture.delegate,
                SLOT(commitEditorData()));
        widget.setObjectName("x");
        QCOMPARE(committed.count(), 1);
        QCOMPARE(committed.at(0).at(0).value<QWidget*>(), &widget);
    }

    void theDelegateBelongsToItsParent() {
        Fixture fixture;
        QObject owner;
        const auto* delegate = new DesckDelegate(&fixture.model, &owner); // its parent's
        QCOMPARE(delegate->parent(), &owner);
    }

    void closingTheEditorIsTold() {
        Fixture fixture;
        int closed = 0;
        connect(&fixture.delegate, &QAbstractItemDelegate::closeEditor, this, [&] { ++closed; });
        QTest::keyClick(fixture.openEditor(), Qt::Key_Return);
        QTRY_COMPARE(closed, 1);
    }

    void theSignalDataChangedIsSilent() {
        Fixture fixture;
        QSignalSpy silent(&fixture.delegate, &DesckDelegate::dataChanged);
        QTest::keyClicks(fixture.openEditor(), "x");
        QCOMPARE(silent.count(), 0);
    }
};

QTEST_MAIN(DesckDelegateTest)
#include "tst_desckdelegate.moc"
