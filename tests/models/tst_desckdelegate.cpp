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
struct Bench {
    Watched<DesckTreeModel> model{headers(6)};
    DesckDelegate delegate{&model, nullptr};
    QTreeView view;

    Bench() {
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
    void theEditorOpensWithTheName();
    void typingWritesTheModelAtEachKey();
    void theCursorStaysWhereItWas();
    void theModelsAnswerDoesNotEcho();
    void onlyTheNameColumnHasAnEditor();
    void anInvalidIndexHasNoEditor();
    void otherWidgetsAreLeftAlone();
    void onlyAWidgetThatSendsIsCommitted();
    void theDelegateBelongsToItsParent();
    void closingTheEditorIsTold();
    void theSignalDataChangedIsSilent();
};

void DesckDelegateTest::theEditorOpensWithTheName() {
    Bench bench;
    QLineEdit* editor = bench.openEditor();
    QVERIFY(editor);
    QCOMPARE(editor->text(), QString("alpha"));
    QCOMPARE(editor->parentWidget(), bench.view.viewport());
}

void DesckDelegateTest::typingWritesTheModelAtEachKey() {
    Bench bench;
    QSignalSpy named(&bench.model, &DesckTreeModel::nameChanged);
    QLineEdit* editor = bench.openEditor();
    editor->end(false);
    QTest::keyClicks(editor, "xyz");
    QCOMPARE(bench.name().data().toString(), QString("alphaxyz"));
    QCOMPARE(named.count(), 3);
    QCOMPARE(named.at(0).at(0).toString(), QString("alphax"));
    QCOMPARE(named.at(2).at(0).toString(), QString("alphaxyz"));
    QCOMPARE(bench.view.viewport()->findChild<QLineEdit*>(), editor);
}

void DesckDelegateTest::theCursorStaysWhereItWas() {
    Bench bench;
    QLineEdit* editor = bench.openEditor();
    editor->deselect();
    editor->setCursorPosition(2);
    QTest::keyClicks(editor, "__");
    QCOMPARE(editor->text(), QString("al__pha"));
    QCOMPARE(editor->cursorPosition(), 4);
    QTest::keyClick(editor, Qt::Key_Backspace);
    QCOMPARE(bench.name().data().toString(), QString("al_pha"));
    QCOMPARE(editor->cursorPosition(), 3);
}

void DesckDelegateTest::theModelsAnswerDoesNotEcho() {
    Bench bench;
    QLineEdit* editor = bench.openEditor();
    QSignalSpy texts(editor, &QLineEdit::textChanged);
    QSignalSpy changed(&bench.model, &QAbstractItemModel::dataChanged);
    editor->end(false);
    QTest::keyClicks(editor, "x");
    QCOMPARE(texts.count(), 1);
    QCOMPARE(changed.count(), 1);
    bench.model.setData(bench.name(), "other");
    QCOMPARE(editor->text(), QString("other"));
    QCOMPARE(texts.count(), 1);
}

void DesckDelegateTest::onlyTheNameColumnHasAnEditor() {
    Bench bench;
    QWidget parent;
    for (int column = 1; column < 6; ++column)
        QVERIFY(!bench.delegate.createEditor(&parent, {}, bench.name().siblingAtColumn(column)));
    QLineEdit line("untouched");
    bench.delegate.setEditorData(&line, bench.name().siblingAtColumn(1));
    QCOMPARE(line.text(), QString("untouched"));
    bench.delegate.setModelData(&line, &bench.model, bench.name().siblingAtColumn(3));
    QVERIFY(!bench.name().siblingAtColumn(3).data().isValid());
}

void DesckDelegateTest::anInvalidIndexHasNoEditor() {
    Bench bench;
    QWidget parent;
    QLineEdit line("untouched");
    QVERIFY(!bench.delegate.createEditor(&parent, {}, QModelIndex()));
    bench.delegate.setEditorData(&line, QModelIndex());
    QCOMPARE(line.text(), QString("untouched"));
    bench.delegate.setModelData(&line, &bench.model, QModelIndex());
    QCOMPARE(print(bench.model, 1), QString("top #t\n  alpha #a\n"));
}

void DesckDelegateTest::otherWidgetsAreLeftAlone() {
    Bench bench;
    QWidget plain;
    bench.delegate.setEditorData(&plain, bench.name());
    bench.delegate.setModelData(&plain, &bench.model, bench.name());
    QCOMPARE(bench.name().data().toString(), QString("alpha"));
}

void DesckDelegateTest::onlyAWidgetThatSendsIsCommitted() {
    Bench bench;
    QSignalSpy committed(&bench.delegate, &QAbstractItemDelegate::commitData);
    QMetaObject::invokeMethod(&bench.delegate, "commitEditorData"); // sent by nobody
    QObject thing;
    connect(&thing, SIGNAL(objectNameChanged(QString)), &bench.delegate, SLOT(commitEditorData()));
    thing.setObjectName("x");
    QCOMPARE(committed.count(), 0);
    QWidget widget;
    connect(&widget, SIGNAL(objectNameChanged(QString)), &bench.delegate, SLOT(commitEditorData()));
    widget.setObjectName("x");
    QCOMPARE(committed.count(), 1);
    QCOMPARE(committed.at(0).at(0).value<QWidget*>(), &widget);
}

void DesckDelegateTest::theDelegateBelongsToItsParent() {
    Bench bench;
    QObject owner;
    const auto* delegate = new DesckDelegate(&bench.model, &owner); // its parent's
    QCOMPARE(delegate->parent(), &owner);
}

void DesckDelegateTest::closingTheEditorIsTold() {
    Bench bench;
    int closed = 0;
    connect(&bench.delegate, &QAbstractItemDelegate::closeEditor, this, [&] { ++closed; });
    QTest::keyClick(bench.openEditor(), Qt::Key_Return);
    QTRY_COMPARE(closed, 1);
}

void DesckDelegateTest::theSignalDataChangedIsSilent() {
    Bench bench;
    QSignalSpy silent(&bench.delegate, &DesckDelegate::dataChanged);
    QTest::keyClicks(bench.openEditor(), "x");
    QCOMPARE(silent.count(), 0);
}

QTEST_MAIN(DesckDelegateTest)
#include "tst_desckdelegate.moc"
