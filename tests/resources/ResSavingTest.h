// ResSavingTest.h: the tests of saving and dropping an edit, in several sources.
#ifndef ORVO_TESTS_RESOURCES_RESSAVINGTEST_H
#define ORVO_TESTS_RESOURCES_RESSAVINGTEST_H

#include "tests/menu/Outage.h"
#include "tests/resources/WritingProbe.h"

namespace orvo::test {

constexpr char emptyObject[] = "Ошибка\nСвойство Объект не может быть пустым. Данные не сохранены.";
constexpr char takenName[] = "Ошибка\nТакой ресурс уже существует. Данные не сохранены.";
constexpr char emptyFolder[] =
    "Ошибка\nСвойство \"Имя папки\" не может быть пустым. Данные не сохранены.";
constexpr char takenFolder[] =
    "Ошибка\nПапка с таким именем уже существует у данного родителя. Данные не сохранены.";

/// With a new row below a folder, made by one of the actions.
struct NewRowOpen : Writing {
    NewRowOpen(const char* action, const char* folder, Fill fill = nullptr) : Writing(fill) {
        makeCurrent(folder);
        editor.action(action)->trigger();
        key = currentKey();
        if (state() != NewRow)
            qFatal("%s made no row", action);
    }
    QString key;
};

/// With a changed value of an existing row.
struct EditOpen : Writing {
    EditOpen(const char* key, const char* row, const QString& value, Fill fill = nullptr)
        : Writing(fill) {
        makeCurrent(key);
        type(row, value);
        if (state() != EditRow)
            qFatal("no edit of %s", key);
    }
};

} // namespace orvo::test

class TestResSaving : public QObject {
    Q_OBJECT
private slots:
    // New rows
    void aNewResourceIsWritten_data();
    void aNewResourceIsWritten();
    void aNewResourceTakesItsPlaceWhenItComesBack();
    void aNewResourceStaysNewUntilTheNextStart();
    void aNewResourceWithoutANameIsRefused();
    void aTakenNameIsRefused_data();
    void aTakenNameIsRefused();
    void theSameNameOfAnotherKindIsFree();
    void theNameIsCheckedAsTyped();
    void aNewFolderIsWritten_data();
    void aNewFolderIsWritten();
    void aNewFolderTakesItsPlaceWhenItComesBack();
    void aFolderOfTheFileRootIsGoneAtTheNextStart();
    void aNewFolderWithoutACaptionIsRefused();
    void aTakenCaptionIsRefused_data();
    void aTakenCaptionIsRefused();
    void aNameIsTakenFromItsSaveOn_data();
    void aNameIsTakenFromItsSaveOn();
    void aFolderOfTheFileAreaNeedsANameOfItsOwnAtTheTop();
    void aSavedOrphanKeepsItsIcon();
    void aSecondNewFolderNeedsANameOfItsOwn();
    void theSameCaptionBelowAnotherParentIsFree();
    void withoutItsRowASaveChangesNothing();

    // Edits
    void anEditedResourceIsWrittenWhole();
    void anEditedResourceIsNotChecked();
    void aFormKeepsItsLock();
    void anEditedFolderIsWrittenWhole();
    void anUnchangedFolderIsRefused_data();
    void anUnchangedFolderIsRefused();
    void aTopFolderIsCheckedAmongTheTopFolders();
    void theCaptionIsCheckedAsTypedAndWrittenAsShown();
    void withoutTheEditedRowASaveChangesNothing();

    // The end of an edit
    void withoutAnEditNothingIsSaved();
    void withoutAStructureTheEditStaysOpen_data();
    void withoutAStructureTheEditStaysOpen();
    void aRefusedWriteEndsTheEditAllTheSame();
    void theEditHasEndedBeforeTheWrite();
    void aRefusedNameCanBeMended();
    void actionsComeBackWithTheNotification();
    void actionsStayAsTheyAreUntilTheRowChanges();

    // Moving on
    void leavingANewRowSavesIt();
    void leavingARefusedNewRowKeepsItOpen();
    void aSavedNewRowIsLeftAloneByTheNext();
    void aRefusedNewRowBesideASavedOneIsDroppedAlone();
    void leavingAnEditedRowSavesIt();
    void leavingARefusedEditKeepsItOpen();
    void anEditEndsWhenItsRowIsGone_data();
    void anEditEndsWhenItsRowIsGone();
    void whileARefusedEditWaitsNoOtherRowIsEdited_data();
    void whileARefusedEditWaitsNoOtherRowIsEdited();
    void anEditThatCanBeSavedNowMakesWayForTheNext();

    // Cancel
    void withoutAnEditCancelDisablesTheButtonsOnly();
    void aCancelledRowLeavesTheRowInItsPlaceCurrent();
    void aCancelledLastRowLeavesTheNewLastCurrent();
    void aCancelledOnlyRowLeavesItsFolderCurrent();
    void aCancelledRowBringsTheActionsBack();
    void aCancelledRowThatIsNotCurrent();
    void aCancelledResourceComesBackFromTheTable();
    void aCancelledFolderComesBackFromTheTable();
    void aCancelledEditMakesItsRowCurrent();
    void anEditWithoutARecordStaysAsTyped();
    void withoutTheEditedRowACancelChangesNothing();
    void aCancelledTopRowComesBack();
};

#endif
