// Adding, renaming, deleting and copying desktops and their folders.
#ifndef ORVO_TESTS_MENU_MENUDESKTOPOPSTEST_H
#define ORVO_TESTS_MENU_MENUDESKTOPOPSTEST_H
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::desckMime;

inline QString shownDescks(const OperationsEditor& editor) {
    return treetext::print(*editor.module->m_desckModel, -1);
}

inline QVariantList rowValues(const QModelIndex& row) {
    QVariantList values;
    for (int column = 0; column < DesckColumn::Count; ++column)
        values << row.sibling(row.row(), column).data();
    return values;
}

inline void putDesckOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(desckMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

inline QByteArray desckOnClipboard() {
    return QGuiApplication::clipboard()->mimeData()->data(desckMime);
}

class TestMenuDesktopOps : public QObject {
    Q_OBJECT
private slots:
    void init();

    void aNewDesktopStandsAtTheEndOfItsFolder();
    void addingOnADesktopPlacesTheNewRowBesideIt();
    void aNewFolderAtTheTopGoesToTheEnd();
    void aNewFolderBelowGoesBeforeTheFirstDesktop();
    void aNewFolderWithoutDesktopsGoesToTheEnd();
    void addingOpensAnEditByNoEditor();
    void addingWithoutACurrentRowDoesNothing();
    void aNewRowIsWrittenOnSaveAndComesBack();
    void aSecondNewRowSavesTheFirst();
    void newRowsAreNotNumbered();
    void leavingANewRowOpensNoEditorElsewhere();

    void renamingOpensAnEditor();
    void renamingWritesTheCaptionAlone();
    void renamingSavesAPendingEdit();
    void leavingARenamedRowOpensNoEditorElsewhere();
    void renamingWithoutACurrentRowDoesNothing();

    void anEmptyFolderIsDeletedWithoutAQuestion();
    void aDesktopIsAskedAbout();
    void aNegativeAnswerChangesNothing();
    void aDeletedDesktopTakesItsElementsAlong();
    void aDesktopWithoutElementsIsDeletedInOneCall();
    void onlyElementsOfTheDesktopAreDeleted();
    void theMenuEmptiesBeforeTheServerAnswers();
    void aRefusedDeletionOfElementsLetsTheDesktopGo();
    void deletingWithoutACurrentRowDoesNothing();

    void copyingPutsTheBareKeyOnTheClipboard();
    void copyingWithoutACurrentDesktopLeavesTheClipboard();
    void aPastedDesktopHasNewKeysAndOldValues();
    void theElementsComeFromTheServer();
    void aLostParentBecomesEmptyText();
    void parentsCompareWithoutCase();
    void aDesktopWithoutElementsIsPastedInOneCall();
    void aPastedFolderBringsAllBelowIt();
    void onlyTheTopRowOfAPasteHasTheSuffix();
    void pastingAtTheTopWritesNoParent();
    void pastingOnADesktopTakesItsKeyAsParent();
    void aFolderWithOnlyAFolderIsPasted();
    void theOrderOfAPastedRowIsThatOfItsKind();
    void whetherARowIsAFolderIsCopied();
    void theNewNameIsMadeOfWhatTheTreeShows();
    void theKeyEndsAtAZeroByte();
    void foreignKeysPasteNothing_data();
    void foreignKeysPasteNothing();
    void aSourceDeletedMeanwhilePastesNothing();
    void withoutATargetNothingIsPasted();
    void withoutAnAnswerTheDesktopIsPastedBare();
    void aRefusedDesktopStillSendsItsElements();
    void aPastedFolderMayHoldItself();
    void pastingIntoItsOwnSubFolderEnds();
    void aCircleOfFoldersIsPastedOnce();
    void aVeryDeepFolderIsPasted();

    void withoutAStartNothingHappens();
    void bigDesktopsArePastedAndDeletedInOneCallATable();
};

#endif
