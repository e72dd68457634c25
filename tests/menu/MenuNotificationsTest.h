// What notifications of the server do: the table first, then the tree, then what is current.
#ifndef ORVO_TESTS_MENU_MENUNOTIFICATIONSTEST_H
#define ORVO_TESTS_MENU_MENUNOTIFICATIONSTEST_H
#include "tests/menu/LiveProbe.h"

#include <QSignalSpy>

#include <functional>
#include <random>

using namespace orvo::test;
using orvo::menu::DesckColumn;
using orvo::menu::MenuColumn;

inline QString inTable(const CMDArray& table, const char* key, const char* field) {
    const MDRData* record = orvo::seekKey(table, QString::fromLatin1(key));
    return record ? orvo::textOf(record, field) : QStringLiteral("no record");
}

/// Two more desktops in the folder "ceh", so that there are places to move to.
inline void moreDesktops(TestStore& store) {
    addDesck(store, "armb", "ceh", "Б стол", false);
    addDesck(store, "armv", "ceh", "В стол", false);
}

class TestMenuNotifications : public QObject {
    Q_OBJECT
private slots:
    // Which notifications are looked at
    void everyHandlingHasItsEventAndTable_data();
    void everyHandlingHasItsEventAndTable();
    void tableNamesCompareWithoutCase();
    void blocksOfAnotherWidthAreIgnored();
    void aSourceWithoutACommaNamesNoTable();
    void aModuleWhoseStartFailedSurvivesEverything();

    // Updates of desktops
    void anUpdatedDesktopIsRewrittenMovedAndMadeCurrent();
    void anUpdatedTopFolderMovesAmongTheTopRows();
    void anUpdatedDesktopInItsPlaceShowsItsMenuAnew();
    void aFolderThatMovesKeepsItsRows();
    void aFolderInItsPlaceKeepsItsRows();
    void aDesktopStaysUnderItsOldFolder();
    void anUpdateOfAnUnknownDesktopDoesNothing();
    void aDesktopWithoutARowIsUpdatedInTheTable();

    // Updates of elements
    void anUpdatedElementInItsPlaceRefreshesThePassport();
    void anotherElementMovesAndTheOwnStaysCurrent();
    void theOwnElementMovesAndStaysCurrent();
    void anElementMovesToAnotherParentWithAllBelowIt();
    void anElementWithoutAParentMovesToTheTop();
    void anElementOfAnUnknownParentWaitsInItsPlace();
    void anElementIsNeverMovedBelowItself();
    void anElementOfAnotherDesktopIsNotUpdated();
    void onlyTheMarkedFieldsAreMerged();
    void withoutACurrentElementAnUpdateShowsTheTop();
    void aPlaceBehindRowsThatAreNotShownIsRefused();
    void theRowIsMadeCurrentByWayOfItsParent();

    // Deletions
    void deletingTheOnlyDesktopSelectsTheFolder();
    void deletingTheLastSiblingSelectsTheNewLast();
    void deletingAMiddleSiblingSelectsTheNext();
    void deletingAnotherRowKeepsTheSelection();
    void deletingAFolderTakesItsRowsAndNotTheirRecords();
    void deletingAnAncestorOfTheCurrentRowSelectsTheNeighbour();
    void deletedElementsLeaveLikeDesktops();
    void anUnknownKeyDeletesNothing();

    // Insertions
    void anInsertedDesktopTakesItsPlaceAndTheSelection();
    void anInsertedTopRowWaitsForTheNextStart();
    void anInsertedDesktopOfAnUnknownFolderEntersTheTableOnly();
    void theOwnNewDesktopMovesToItsPlace();
    void aSecondInsertionChangesNothing();
    void anInsertedElementTakesItsPlaceAndTheSelection();
    void anInsertedElementWithoutAParentStandsAtTheTop();
    void anInsertedElementOfAnUnknownParentEntersTheTableOnly();
    void anElementOfAnotherDesktopLeavesNoTrace();
    void theOwnNewElementKeepsItsPlace();
    void theOwnNewElementLeavesTheSelectionAlone();
    void anInsertedResourceNamesNewElements();

    // Input that is not what it should be
    void anInsertionWithoutFieldsMakesARecordOfTheKeyAlone();
    void anUpdateWithoutFieldsChangesNothing();
    void aRecordCutShortChangesNothingElse_data();
    void aRecordCutShortChangesNothingElse();
    void damagedRecordsNeverBreakTheWindow();
    void anEmptyKeyTouchesNoRow();

    // Edits that are open
    void aRefreshOfTheCurrentRowSavesAnOpenEdit();
    void aDeletedFolderEndsTheEditOfTheNewRowBelowIt();
    void aDeletedRowEndsItsRenaming();
    void aDesktopOfAnotherClientSavesTheOpenPlaceholder();
    void aBurstIsTakenInOrder();
};

// Which notifications are looked at --------------------------------------------------------------

#endif
