// Copying, cutting and pasting menu elements.
#ifndef ORVO_TESTS_MENU_MENUCLIPBOARDTEST_H
#define ORVO_TESTS_MENU_MENUCLIPBOARDTEST_H
#include "tests/menu/OperationsProbe.h"
#include "tests/models/TreeText.h"

#include "frame/Records.h"
#include "menu/MenuPayload.h"
#include "platform/mdx/MdxBuild.h"

#include <QClipboard>
#include <QMimeData>

using namespace orvo::test;
using orvo::menu::menuMime;
using orvo::menu::MenuPayload;

inline QByteArray payload() {
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    return offered ? offered->data(menuMime) : QByteArray();
}

inline void putOnClipboard(const QByteArray& bytes) {
    auto* mime = new QMimeData; // the clipboard's
    mime->setData(menuMime, bytes);
    QGuiApplication::clipboard()->setMimeData(mime);
}

/// The same payload as another program's: the bytes, put anew.
inline void putAgain() {
    putOnClipboard(payload());
}

inline QString shownMenu(const OperationsEditor& editor) {
    return treetext::print(*editor.module->m_menuModel, -1);
}

inline QStringList keysInOrder(const MDArray* array, int key) {
    QStringList keys;
    for (int32_t i = 0; const MDRData* record = MDARec(array, key, i); ++i)
        keys << orvo::textOf(record, "KeyLink");
    return keys;
}

class TestMenuClipboard : public QObject {
    Q_OBJECT
private slots:
    void init();

    void theCopiedBytes();
    void theCutBytes();
    void thePackedTableHasTheRecordsWithTwoKeys();
    void thePackedRecordsAreWholeAndUnflagged();
    void aFolderBringsAllBelowIt();
    void copyingTheRootRowLeavesTheClipboard();
    void withoutASelectionTheClipboardStays();
    void aRowWithoutARecordGivesItsKeyAlone();
    void aFolderWithoutARecordGivesWhatLiesBelowAlone();
    void aKeyThatReadsAsOthersIsLeftOut();
    void aCircleInTheTableIsCopiedOnce();
    void aCutChangesNothing();

    void theFirstCutSurvivesInItsEditor();
    void theNextCutSurvivesToo();
    void aSecondEditorTakesACutAway();
    void aCopyIsLeftAlone();
    void aCutOfAnotherProgramIsTakenAway_data();
    void aCutOfAnotherProgramIsTakenAway();
    void otherFormatsAreLeftAlone();
    void anotherContentLosesTheCut();

    void aPastedElementIsTheLastInItsFolder();
    void pastingAtTheTop();
    void pastingIntoAnotherDesktop();
    void everyPasteMakesNewKeys();
    void allChosenElementsGetTheOrderOfTheLastChild();
    void aPastedFolderKeepsWhatLiesBelow();
    void subFoldersCarryTheirCaptionAsParent_data();
    void subFoldersCarryTheirCaptionAsParent();
    void elementsWithoutTheirResourceStayOut();
    void anElementWithoutACaptionIsPlacedAsChosen();
    void parentsCompareWithoutCase();
    void keysWithoutARecordAreSkipped();
    void aKeyThatNoRecordCanHoldPastesNothing();
    void aCopyIsPastedInAnotherClient();
    void withoutATargetNothingIsPasted();
    void theClipboardStaysAfterAPaste();
    void thePastedRowBecomesCurrent();

    void aPastedCutDeletesItsSource();
    void aCutFolderIsDeletedWhole();
    void aCutOfAnotherDesktopIsDeleted();
    void aCutElementWithoutItsResourceIsDeletedAllTheSame();
    void aCutKeyWithoutARecordIsNotDeleted();
    void aSecondPasteOfACutDeletesNothingMore();
    void aRefusedPasteStillDeletesTheCut();
};

#endif
