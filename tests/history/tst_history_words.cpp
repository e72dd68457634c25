// What actions did, in words, and how they are found.
#include "HistoryTest.h"

#include "history/RecordWords.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryWords : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private slots:
    void aRenamingTellsTheOldName();
    void aChangeOfAnotherFieldNamesItsRecord();
    void movesTellFromWhereToWhere();
    void aCutIsAMove();
    void whatIsWrittenAnewInItsPlaceIsNoMove();
    void aBranchIsToldByItsTop();
    void severalOfAKindAreCounted();
    void differentDeedsAreToldByTheFirst();
    void aNewElementAmongReorderedOnesHoldsNothing();
    void aLargeBranchIsToldByItsTopAndCounted();
    void manyOfAKindAreAllCounted();
    void aMoveAmongManyReorderedIsStillAMove();
    void aLargeCutIsAMove();
    void whatMovedAlongWithALargeCutIsTold();
    void severalPlacesAreToldByWhatTheyShare();
    void manyOfAKindAreToldToStandInDifferentPlaces();
    void aLargeMixtureIsCountedByTheFirst();
    void whatIsNotCountedYetSaysSo();
    void anUndoTellsWhatWasTakenBack();
    void anUndoOfALargeActionTellsWhatWasTakenBack();
    void occupyingIsToldAsSuch();
    void recordsThatAreGoneKeepTheirNames();
    void valuesUnfold();
    void whatReadsTheSameAsNothingIsNoChange();
    void pagesGoBackToTheBeginning();
    void filtersLeaveWhatIsAskedFor();
    void longValuesUnfoldAsAWhole();
    void aTextIsFoundAsItIsShown();
    void aBranchIsFollowedBackInTime();
    void aKnownBranchFollowsTheLog();
    void aKnownBranchOutlivesAPrunedLog();
    void thirdPartyTablesAreNamed();
    void whatChangedNothingIsNotTold();
    void aNameStaysOnItsLineAndInItsDirection();

private:
    std::vector<QString> linesOf(const Filter& filter, size_t page = 50) const {
        std::vector<QString> lines;
        Reader reader(*m_anna, filter);
        std::vector<Group> groups;
        while (!reader.atEnd()) {
            const size_t before = groups.size();
            const Status status = reader.next(page, &groups);
            if (!status.ok() || groups.size() - before > page)
                return {QString::fromStdString(status.text)};
        }
        LoggedRecords source(*m_anna);
        for (Group& group : groups) {
            if (!countGroup(*m_anna, &group).ok())
                return {};
            lines.push_back(describe(group, source).what);
        }
        return lines;
    }
    QString command(int64_t id) const {
        Group group;
        LoggedRecords source(*m_anna);
        const Status status = readGroup(*m_anna, id, &group);
        return status.ok() ? commandWords(group, source) : QString::fromStdString(status.text);
    }
    /// As the menu, the pane and the command read it.
    QString lineOf(int64_t id) const {
        Group group;
        LoggedRecords source(*m_anna);
        const Status status = readForWords(*m_anna, id, &group);
        return status.ok() ? describe(group, source).what + " / " + commandWords(group, source)
                           : QString::fromStdString(status.text);
    }
    QString placeOfLast() const {
        Group group;
        LoggedRecords source(*m_anna);
        const Status status = readForWords(*m_anna, last(*m_anna), &group);
        return status.ok() ? describe(group, source).place : QString::fromStdString(status.text);
    }
    /// Adds elements below `parent`, if it has one, in one action.
    static void addMany(Batch& batch, const char* prefix, int count, const char* parent) {
        for (int i = 0; i < count; ++i) {
            const QByteArray key = prefix + QByteArray::number(i);
            if (parent)
                batch.insert(key.constData(),
                             {{"caption", QString::number(i)}, {"parent", parent}});
            else
                batch.insert(key.constData(), {{"caption", QString::number(i)}});
        }
    }
    /// The fields of the first change, a line each.
    QString fieldsOf(int64_t id) const {
        Group group;
        LoggedRecords source(*m_anna);
        const Status status = readGroup(*m_anna, id, &group);
        if (!status.ok())
            return QString::fromStdString(status.text);
        QStringList lines;
        for (const FieldWords& field : describe(group.changes.front(), source).fields)
            lines << field.name + ": " + field.before + " -> " + field.after;
        return lines.join('\n');
    }
    int count(const Filter& filter) const { return int(linesOf(filter).size()); }
};

void TestHistoryWords::aRenamingTellsTheOldName() {
    ORVO_OK(Batch("MenuFolder")
                .insert("d", {{"caption", "КС-3 Белый Мыс"}, {"isFolder", false}})
                .send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Создан рабочий стол «КС-3 Белый Мыс»"));
    ORVO_OK(Batch("MenuFolder").update("d", {{"caption", "КС-3"}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Переименован рабочий стол «КС-3»: было «КС-3 Белый Мыс»"));
}

void TestHistoryWords::aChangeOfAnotherFieldNamesItsRecord() {
    ORVO_OK(Batch("Menu").insert("m", {{"caption", "Котельная"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("m", {{"params", "a=1"}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Изменён элемент меню «Котельная»"));
    ORVO_OK(Batch("Menu").update("m", {{"order_", 2000}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Переставлен элемент меню «Котельная»"));
}

void TestHistoryWords::movesTellFromWhereToWhere() {
    ORVO_OK(Batch("Menu")
                .insert("a", {{"caption", "Агрегаты"}})
                .insert("k", {{"caption", "Крановая обвязка"}})
                .insert("1", {{"caption", "ГПА 1"}, {"parent", "a"}})
                .insert("2", {{"caption", "ГПА 2"}, {"parent", "a"}})
                .insert("3", {{"caption", "ГПА 3"}, {"parent", "a"}})
                .insert("4", {{"caption", "ГПА 4"}, {"parent", "a"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu")
                .update("1", {{"parent", "k"}, {"order_", 1}})
                .update("2", {{"parent", "K"}})
                .update("3", {{"parent", "k"}})
                .update("4", {{"parent", "k"}})
                .update("k", {{"order_", 7}})
                .send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Перемещены 4 элемента меню из «Агрегаты» в «Крановая обвязка»"));
    ORVO_OK(Batch("Menu").update("1", {{"parent", ""}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Перемещён элемент меню «ГПА 1» из «Крановая обвязка» на верхний уровень"));
    ORVO_OK(Batch("MenuFolder")
                .insert("s", {{"caption", "Станция"}})
                .insert("n", {{"caption", "Насосная"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").update("1", {{"parent", "k"}, {"FolderKey", "s"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("1", {{"parent", ""}, {"FolderKey", "n"}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Перемещён элемент меню «ГПА 1» из «Крановая обвязка» на верхний уровень "
                     "«Насосная»"));
    ORVO_OK(Batch("Menu").update("1", {{"parent", "k"}, {"FolderKey", "s"}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Перемещён элемент меню «ГПА 1» с верхнего уровня "
                                           "«Насосная» в «Крановая обвязка»"));
}

void TestHistoryWords::aCutIsAMove() {
    ORVO_OK(Batch("Menu")
                .insert("a", {{"caption", "Агрегаты"}})
                .insert("k", {{"caption", "Краны"}})
                .insert("x", {{"caption", "ГПА"}, {"parent", "a"}})
                .send(*m_anna));
    ORVO_OK(Batch("Menu").insert("y", {{"caption", "ГПА"}, {"parent", "k"}}).send(*m_anna));
    const int64_t cut = last(*m_anna);
    m_anna->joinGroup(cut);
    ORVO_OK(Batch("Menu").remove("x").send(*m_anna));
    m_anna->joinGroup(0);
    QCOMPARE(words(cut), QString("Перемещён элемент меню «ГПА» из «Агрегаты» в «Краны»"));
}

void TestHistoryWords::whatIsWrittenAnewInItsPlaceIsNoMove() {
    const auto makes = [&](const char* key, const char* folder) {
        return Batch("MenuResource")
            .insert(key, {{"type_", 3}, {"name_", "x.ui"}, {"MenuResourceFolderKey", folder}})
            .send(*m_anna);
    };
    const auto replaces = [&](const char* gone, const char* key, const char* folder) {
        const Status made = makes(key, folder);
        const int64_t group = last(*m_anna);
        m_anna->joinGroup(group);
        const Status deleted = Batch("MenuResource").remove(gone).send(*m_anna);
        m_anna->joinGroup(0);
        return made.ok() && deleted.ok() ? group : -1;
    };
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("f", {{"type_", 3}, {"caption", "Формы"}})
                .insert("g", {{"type_", 3}, {"caption", "Схемы"}})
                .send(*m_anna));
    ORVO_OK(makes("x", "f"));
    QCOMPARE(words(replaces("x", "y", "F")), QString("Создана форма «x.ui» и ещё 1 запись"));
    QCOMPARE(words(replaces("y", "z", "g")),
             QString("Перемещена форма «x.ui» из «Формы» в «Схемы»"));

    // Another table counts by itself.
    ORVO_OK(Batch("Menu")
                .insert("a", {{"caption", "А"}})
                .insert("b", {{"caption", "Б"}})
                .send(*m_anna));
    const int64_t both = replaces("z", "w", "f");
    m_anna->joinGroup(both);
    ORVO_OK(Batch("Menu").insert("b2", {{"caption", "Б"}, {"parent", "a"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").remove("b").send(*m_anna));
    m_anna->joinGroup(0);
    QCOMPARE(words(both), QString("Перемещена форма «x.ui» из «Схемы» в «Формы» и ещё 1 запись"));
}

void TestHistoryWords::aBranchIsToldByItsTop() {
    ORVO_OK(Batch("Menu")
                .insert("a", {{"caption", "Агрегаты"}})
                .insert("1", {{"caption", "ГПА 1"}, {"parent", "a"}})
                .insert("2", {{"caption", "ГПА 2"}, {"parent", "1"}})
                .send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Создан элемент меню «Агрегаты» со всем, что внутри (2 записи)"));
    ORVO_OK(Batch("Menu").remove("2").remove("1").remove("a").send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Удалён элемент меню «Агрегаты» со всем, что внутри (2 записи)"));
}

void TestHistoryWords::severalOfAKindAreCounted() {
    ORVO_OK(Batch("MenuFileExt")
                .insert("a", {{"fileExt", "ui"}})
                .insert("b", {{"fileExt", "svg"}})
                .send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Созданы 2 расширения файлов: «ui», «svg»"));
    Batch many("Menu");
    for (int i = 0; i < 21; ++i)
        many.insert(qPrintable(QString("k%1").arg(i)), {{"caption", QString::number(i)}});
    ORVO_OK(many.send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Создан 21 элемент меню: «0», «1», «2» …"));
    Batch folders("MenuResourceFolder");
    for (int i = 0; i < 25; ++i)
        folders.insert(qPrintable(QString("k%1").arg(i)));
    ORVO_OK(folders.send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Создано 25 папок ресурсов"));
    Batch fewer("MenuResourceFolder");
    for (int i = 0; i < 21; ++i)
        fewer.remove(qPrintable(QString("k%1").arg(i)));
    ORVO_OK(fewer.send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Удалена 21 папка ресурсов"));
    QCOMPARE(command(last(*m_anna)), QString("удалить 21 папку ресурсов"));
    ORVO_OK(Batch("MenuResourceFolder").remove("k22").send(*m_anna));
    QCOMPARE(command(last(*m_anna)), QString("удалить папку ресурсов k22"));
}

void TestHistoryWords::differentDeedsAreToldByTheFirst() {
    ORVO_OK(Batch("Menu").insert("a", {{"caption", "А"}}).insert("b").send(*m_anna));
    ORVO_OK(Batch("Menu")
                .update("a", {{"caption", "Я"}})
                .remove("b")
                .insert("c", {{"caption", "В"}})
                .send(*m_anna));
    QCOMPARE(words(last(*m_anna)),
             QString("Переименован элемент меню «Я»: было «А» и ещё 2 записи"));
}

void TestHistoryWords::aNewElementAmongReorderedOnesHoldsNothing() {
    ORVO_OK(Batch("Menu").insert("a", {{"caption", "А"}}).send(*m_anna));
    ORVO_OK(Batch("Menu")
                .insert("b", {{"caption", "Б"}})
                .update("a", {{"order_", 2000}})
                .send(*m_anna));
    QCOMPARE(command(last(*m_anna)), QString("создать «Б»"));
}

void TestHistoryWords::aLargeBranchIsToldByItsTopAndCounted() {
    Batch made("Menu");
    made.insert("top", {{"caption", "Агрегаты"}});
    addMany(made, "k", 2500, "top");
    ORVO_OK(made.send(*m_anna));
    QCOMPARE(lineOf(last(*m_anna)), QString("Создан элемент меню «Агрегаты» и ещё 2500 записей / "
                                            "создать «Агрегаты» и ещё 2500 записей"));
    Batch gone("Menu");
    for (int i = 0; i < 2500; ++i)
        gone.remove(qPrintable(QString("k%1").arg(i)));
    gone.remove("TOP");
    ORVO_OK(gone.send(*m_anna));
    QCOMPARE(lineOf(last(*m_anna)), QString("Удалён элемент меню «Агрегаты» и ещё 2500 записей / "
                                            "удалить «Агрегаты» и ещё 2500 записей"));
}

void TestHistoryWords::manyOfAKindAreAllCounted() {
    Batch made("Menu");
    addMany(made, "k", 2521, nullptr);
    ORVO_OK(made.send(*m_anna));
    QCOMPARE(lineOf(last(*m_anna)),
             QString("Создан 2521 элемент меню: «0», «1», «2» … / создать 2521 элемент меню"));
    Batch changed("Menu");
    for (int i = 0; i < 2521; ++i) // the first part alone is renamed
        changed.update(qPrintable(QString("k%1").arg(i)), {{i < 2100 ? "caption" : "params", "x"}});
    ORVO_OK(changed.send(*m_anna));
    const QString line = lineOf(last(*m_anna));
    QVERIFY2(line.startsWith("Изменён 2521 элемент меню: «x», «x», «x» … / ") &&
                 line.endsWith(" / изменить 2521 элемент меню"),
             qPrintable(line));
    ORVO_OK(Batch("MenuFolder").insert("d", {{"caption", "Стол"}}).send(*m_anna));
    Batch moved("Menu");
    for (int i = 0; i < 2002; ++i)
        moved.update(qPrintable(QString("k%1").arg(i)), {{"FolderKey", "d"}});
    ORVO_OK(moved.send(*m_anna));
    QVERIFY2(lineOf(last(*m_anna)).startsWith("Перемещены 2002 элемента меню"),
             qPrintable(lineOf(last(*m_anna))));
}

void TestHistoryWords::aMoveAmongManyReorderedIsStillAMove() {
    Batch made("Menu");
    made.insert("a", {{"caption", "А"}}).insert("b", {{"caption", "Б"}});
    addMany(made, "k", 2100, "b");
    ORVO_OK(made.send(*m_anna));
    Batch moved("Menu");
    for (int i = 0; i < 2100; ++i)
        moved.update(qPrintable(QString("k%1").arg(i)), {{"order_", i}});
    moved.update("a", {{"parent", "b"}, {"order_", 5000}});
    ORVO_OK(moved.send(*m_anna));
    QCOMPARE(lineOf(last(*m_anna)),
             QString("Перемещён элемент меню «А» с верхнего уровня в «Б» / переместить «А»"));
}

void TestHistoryWords::aLargeCutIsAMove() {
    Batch before("Menu");
    before.insert("a", {{"caption", "А"}}).insert("b", {{"caption", "Б"}});
    before.insert("x", {{"caption", "ГПА"}, {"parent", "a"}});
    addMany(before, "x", 1100, "x");
    ORVO_OK(before.send(*m_anna));
    Batch made("Menu"), gone("Menu");
    made.insert("y", {{"caption", "ГПА"}, {"parent", "b"}});
    addMany(made, "y", 1100, "y");
    ORVO_OK(made.send(*m_anna));
    const int64_t cut = last(*m_anna);
    m_anna->joinGroup(cut);
    for (int i = 0; i < 1100; ++i)
        gone.remove(qPrintable(QString("x%1").arg(i)));
    gone.remove("x");
    ORVO_OK(gone.send(*m_anna));
    m_anna->joinGroup(0);
    QCOMPARE(lineOf(cut), QString("Перемещён элемент меню «ГПА» из «А» в «Б» и ещё 1100 записей / "
                                  "переместить «ГПА» и ещё 1100 записей"));
}

void TestHistoryWords::whatMovedAlongWithALargeCutIsTold() {
    Batch before("Menu");
    before.insert("a", {{"caption", "А"}}).insert("b", {{"caption", "Б"}});
    before.insert("y", {{"caption", "ГПА"}, {"parent", "b"}});
    before.insert("own", {{"caption", "Работа"}, {"parent", "y"}});
    addMany(before, "y", 1100, "y");
    ORVO_OK(before.send(*m_anna));
    Batch made("Menu"), gone("Menu");
    made.insert("x", {{"caption", "ГПА"}, {"parent", "a"}});
    addMany(made, "x", 1100, "x");
    ORVO_OK(made.send(*m_anna));
    const int64_t cut = last(*m_anna);
    m_anna->joinGroup(cut);
    ORVO_OK(Batch("Menu").update("own", {{"parent", "x"}}).send(*m_anna));
    for (int i = 0; i < 1100; ++i)
        gone.remove(qPrintable(QString("y%1").arg(i)));
    gone.remove("y");
    ORVO_OK(gone.send(*m_anna));
    m_anna->joinGroup(0);
    QCOMPARE(lineOf(cut), QString("Перемещён элемент меню «ГПА» из «Б» в «А» и ещё 1100 записей "
                                  "вместе с тем, что внутри: «Работа» / "
                                  "переместить «ГПА» и ещё 1100 записей"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {cut}, {}, &done));
    QVERIFY2(done.written, qPrintable(remarks(done).join('\n')));
    QVERIFY2(lineOf(last(*m_anna))
                 .startsWith("Отменено перемещение: элемент меню «ГПА» из «Б» в «А» и ещё 1100 "
                             "записей вместе с тем, что внутри: «Работа» / "),
             qPrintable(lineOf(last(*m_anna))));
    // A move of something else is none of the cut.
    ORVO_OK(Batch("Menu").insert("z", {{"caption", "Я"}}).send(*m_anna));
    Batch again("Menu"), away("Menu");
    again.insert("w", {{"caption", "ГПА"}, {"parent", "a"}});
    addMany(again, "w", 1100, "w");
    ORVO_OK(again.send(*m_anna));
    const int64_t other = last(*m_anna);
    m_anna->joinGroup(other);
    ORVO_OK(Batch("Menu").update("z", {{"parent", "b"}}).send(*m_anna));
    for (int i = 0; i < 1100; ++i)
        away.remove(qPrintable(QString("y%1").arg(i)));
    ORVO_OK(away.send(*m_anna));
    m_anna->joinGroup(0);
    QVERIFY2(lineOf(other).startsWith("Создан элемент меню «ГПА» и ещё "),
             qPrintable(lineOf(other)));
}

void TestHistoryWords::severalPlacesAreToldByWhatTheyShare() {
    ORVO_OK(Batch("MenuFolder")
                .insert("d", {{"caption", "Стол"}, {"isFolder", false}})
                .insert("e", {{"caption", "Другой"}, {"isFolder", false}})
                .send(*m_anna));
    QCOMPARE(placeOfLast(), QString());
    const auto element = [](Batch& batch, const char* key, const char* desktop,
                            const char* parent) {
        batch.insert(key, {{"caption", key}, {"FolderKey", desktop}, {"parent", parent}});
    };
    Batch first("Menu");
    for (const char* key : {"a", "b"})
        element(first, key, "d", "");
    ORVO_OK(first.send(*m_anna));
    QCOMPARE(placeOfLast(), QString("Стол"));
    Batch shared("Menu");
    element(shared, "a1", "d", "a");
    element(shared, "b1", "d", "b");
    element(shared, "c", "d", "");
    ORVO_OK(shared.send(*m_anna));
    QCOMPARE(placeOfLast(), QString("Стол"));
    ORVO_OK(Batch("Menu")
                .update("a1", {{"params", "x"}})
                .update("b1", {{"params", "x"}})
                .send(*m_boris));
    QCOMPARE(placeOfLast(), QString("Стол"));
    Batch apart("Menu");
    element(apart, "f", "e", "");
    element(apart, "a2", "d", "a");
    element(apart, "a3", "d", "a");
    element(apart, "b2", "d", "b");
    ORVO_OK(apart.send(*m_anna));
    QCOMPARE(placeOfLast(), QString("в 3 местах"));
    ORVO_OK(Batch("Menu").remove("a2").remove("a3").send(*m_anna));
    QCOMPARE(placeOfLast(), QString("Стол / a"));
    // What was moved back stands where it was.
    ORVO_OK(Batch("Menu").update("a1", {{"parent", "b"}}).send(*m_anna));
    QCOMPARE(placeOfLast(), QString("Стол / b"));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(placeOfLast(), QString("Стол / a"));
    ORVO_OK(Batch("Menu")
                .insert("c2", {{"caption", "c"}, {"FolderKey", "d"}, {"parent", "b"}})
                .send(*m_anna));
    const int64_t cut = last(*m_anna);
    m_anna->joinGroup(cut);
    ORVO_OK(Batch("Menu").remove("c").send(*m_anna));
    m_anna->joinGroup(0);
    QCOMPARE(words(cut), QString("Перемещён элемент меню «c» с верхнего уровня в «b»"));
    ORVO_OK(undo(*m_anna, {cut}, {}, &done));
    QCOMPARE(placeOfLast(), QString("Стол"));
    // Two folders of one name are two places.
    ORVO_OK(Batch("MenuResourceFolder")
                .insert("p", {{"caption", "Папка"}, {"type_", 4}})
                .insert("q", {{"caption", "Папка"}, {"type_", 4}})
                .send(*m_anna));
    ORVO_OK(Batch("MenuResource")
                .insert("r", {{"name_", "r"}, {"type_", 4}, {"MenuResourceFolderKey", "p"}})
                .insert("s", {{"name_", "s"}, {"type_", 4}, {"MenuResourceFolderKey", "q"}})
                .send(*m_anna));
    QCOMPARE(placeOfLast(), QString("в 2 местах"));
    ORVO_OK(Batch("MenuResource")
                .update("r", {{"MenuResourceFolderKey", "p"}})
                .update("s", {{"MenuResourceFolderKey", "p"}})
                .send(*m_anna));
    QCOMPARE(placeOfLast(), QString("Папка"));
}

void TestHistoryWords::manyOfAKindAreToldToStandInDifferentPlaces() {
    ORVO_OK(Batch("Menu")
                .insert("a", {{"caption", "А"}})
                .insert("b", {{"caption", "Б"}})
                .send(*m_anna));
    Batch made("Menu");
    addMany(made, "k", 2100, "a");
    ORVO_OK(made.send(*m_anna));
    QCOMPARE(placeOfLast(), QString("А"));
    Batch both("Menu");
    addMany(both, "m", 1500, "a");
    addMany(both, "n", 1500, "b");
    ORVO_OK(both.send(*m_anna));
    QCOMPARE(placeOfLast(), QString("в разных местах"));
}

void TestHistoryWords::aLargeMixtureIsCountedByTheFirst() {
    ORVO_OK(Batch("Menu").insert("a", {{"caption", "А"}}).send(*m_anna));
    Batch mixed("Menu");
    mixed.update("a", {{"caption", "Я"}});
    addMany(mixed, "k", 2200, nullptr);
    ORVO_OK(mixed.send(*m_anna));
    QCOMPARE(lineOf(last(*m_anna)),
             QString("Переименован элемент меню «Я»: было «А» и ещё 2200 записей / "
                     "переименовать «Я» и ещё 2200 записей"));
}

void TestHistoryWords::whatIsNotCountedYetSaysSo() {
    Batch made("Menu");
    addMany(made.insert("a", {{"caption", "А"}}), "k", 2500, "a");
    ORVO_OK(made.send(*m_anna));
    std::vector<Group> page;
    ORVO_OK(Reader(*m_anna, {}).next(1, &page));
    QCOMPARE(page.size(), size_t(1));
    QVERIFY(!page[0].isCounted());
    QCOMPARE(page[0].newest, last(*m_anna) + 2500);
    LoggedRecords source(*m_anna);
    QCOMPARE(describe(page[0], source).what,
             QString("Создан элемент меню «А» и ещё не меньше 2000 записей"));
    ORVO_OK(countGroup(*m_anna, &page[0]));
    QVERIFY(page[0].isCounted());
    QCOMPARE(describe(page[0], source).what, QString("Создан элемент меню «А» и ещё 2500 записей"));
}

void TestHistoryWords::anUndoTellsWhatWasTakenBack() {
    ORVO_OK(
        Batch("MenuFolder").insert("d", {{"caption", "КС-3"}, {"order_", "2000"}}).send(*m_anna));
    ORVO_OK(Batch("Menu")
                .insert("a", {{"FolderKey", "d"}, {"caption", "А"}})
                .insert("b", {{"FolderKey", "d"}, {"caption", "Б"}})
                .insert("c", {{"FolderKey", "d"}, {"caption", "В"}, {"parent", "a"}})
                .send(*m_anna));
    const auto takenBack = [&](const std::vector<int64_t>& groups) {
        Inverse done;
        const Status status = undo(*m_anna, groups, {}, &done);
        return status.ok() ? words(last(*m_anna)) : QString::fromStdString(status.text);
    };
    ORVO_OK(Batch("Menu").remove("c").remove("a").send(*m_anna));
    QCOMPARE(takenBack({last(*m_anna)}),
             QString("Отменено удаление: элемент меню «А» со всем, что внутри (1 запись)"));
    const int64_t undone = last(*m_anna);
    QCOMPARE(takenBack({undone}),
             QString("Повтор: удалён элемент меню «А» со всем, что внутри (1 запись)"));
    QCOMPARE(takenBack({last(*m_anna)}),
             QString("Отменено удаление: элемент меню «А» со всем, что внутри (1 запись)"));
    ORVO_OK(Batch("Menu").insert("e", {{"FolderKey", "d"}, {"caption", "Новая"}}).send(*m_anna));
    QCOMPARE(takenBack({last(*m_anna)}), QString("Отменено создание: элемент меню «Новая»"));
    ORVO_OK(Batch("Menu").update("c", {{"parent", "b"}}).send(*m_anna));
    QCOMPARE(takenBack({last(*m_anna)}),
             QString("Отменено перемещение: элемент меню «В» из «А» в «Б»"));
    ORVO_OK(Batch("Menu").update("a", {{"params", "x"}}).send(*m_anna));
    const int64_t first = last(*m_anna);
    ORVO_OK(Batch("Menu").update("b", {{"params", "x"}}).send(*m_anna));
    QCOMPARE(takenBack({first, last(*m_anna)}),
             QString("Отменено изменение: 2 элемента меню: «А», «Б» (2 действия)"));
    ORVO_OK(Batch("Menu")
                .update("a", {{"order_", 2000}})
                .update("b", {{"order_", 1000}})
                .send(*m_anna));
    QCOMPARE(takenBack({last(*m_anna)}),
             QString("Отменена перестановка: 2 элемента меню: «А», «Б»"));
}

void TestHistoryWords::anUndoOfALargeActionTellsWhatWasTakenBack() {
    Batch many("Menu");
    many.insert("top", {{"caption", "А"}});
    for (int i = 0; i < 2500; ++i)
        many.insert(qPrintable(QString("n%1").arg(i)), {{"parent", "top"}});
    ORVO_OK(many.send(*m_anna));
    Inverse done;
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    Group group;
    ORVO_OK(readForWords(*m_anna, last(*m_anna), &group));
    LoggedRecords source(*m_anna);
    QCOMPARE(describe(group, source).what,
             QString("Отменено создание: элемент меню «А» и ещё 2500 записей"));
}

void TestHistoryWords::occupyingIsToldAsSuch() {
    ORVO_OK(
        Batch("Users").insert("u", {{"login_", "anna"}, {"lastName", "Иванова"}}).send(*m_anna));
    ORVO_OK(Batch("MenuResource").insert("r", {{"caption", "Щит"}, {"type_", 3}}).send(*m_anna));
    ORVO_OK(Batch("MenuResource").update("r", {{"UsersKey", "u"}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Занята форма «Щит»"));
    ORVO_OK(Batch("MenuResource").update("r", {{"UsersKey", ""}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Освобождена форма «Щит»"));
}

void TestHistoryWords::recordsThatAreGoneKeepTheirNames() {
    ORVO_OK(Batch("Menu").insert("a", {{"caption", "Печи"}}).insert("b").send(*m_anna));
    ORVO_OK(Batch("Menu").update("a", {{"params", "1"}}).send(*m_anna));
    const int64_t changed = last(*m_anna);
    ORVO_OK(Batch("Menu").update("b", {{"parent", "a"}}).send(*m_anna));
    const int64_t moved = last(*m_anna);
    ORVO_OK(Batch("Menu").remove("b").remove("a").send(*m_anna));
    QCOMPARE(words(changed), QString("Изменён элемент меню «Печи»"));
    QVERIFY2(words(moved).endsWith(" с верхнего уровня в «Печи»"), qPrintable(words(moved)));
}

void TestHistoryWords::valuesUnfold() {
    ORVO_OK(Batch("MenuResource").insert("r", {{"caption", "Щит"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").insert("m", {{"caption", "А"}}).send(*m_anna));
    ORVO_OK(Batch("Menu")
                .update("m", {{"oneCopy", true}, {"MenuResourceKey", "R"}, {"caption", "Б"}})
                .send(*m_anna));
    QCOMPARE(fieldsOf(last(*m_anna)),
             QString("Название: «А» -> «Б»\nОдна копия: пусто -> да\nРесурс: пусто -> «Щит»"));
}

void TestHistoryWords::whatReadsTheSameAsNothingIsNoChange() {
    ORVO_OK(Batch("Menu").insert("m", {{"caption", "А"}, {"ico", "a.png"}}).send(*m_anna));
    // As an editor writes the row whose name was changed.
    ORVO_OK(
        Batch("Menu")
            .update(
                "m",
                {{"caption", "Б"}, {"params", ""}, {"ico", ""}, {"oneCopy", false}, {"order_", 0}})
            .send(*m_anna));
    QCOMPARE(fieldsOf(last(*m_anna)), QString("Название: «А» -> «Б»\nЗначок: «a.png» -> пусто"));
    ORVO_OK(Batch("MenuResource").insert("r", {{"name_", "Щит"}}).send(*m_anna));
    ORVO_OK(Batch("MenuResource").update("r", {{"caption", ""}, {"params", "1"}}).send(*m_anna));
    QCOMPARE(words(last(*m_anna)), QString("Изменён ресурс «Щит»"));
}

void TestHistoryWords::pagesGoBackToTheBeginning() {
    for (int i = 0; i < 30; ++i)
        ORVO_OK(Batch("MenuFileExt")
                    .insert(qPrintable(QString("a%1").arg(i)), {{"fileExt", QString::number(i)}})
                    .insert(qPrintable(QString("b%1").arg(i)), {{"fileExt", QString::number(i)}})
                    .send(*m_anna));
    const std::vector<QString> lines = linesOf({}, 7);
    QCOMPARE(lines.size(), size_t(30));
    for (int i = 0; i < 30; ++i)
        QCOMPARE(lines[size_t(29 - i)], QString("Созданы 2 расширения файлов: «%1», «%1»").arg(i));
}

void TestHistoryWords::filtersLeaveWhatIsAskedFor() {
    ORVO_OK(Batch("Menu").insert("a", {{"caption", "Насосная"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("A", {{"params", "в=ЦЕХ 5"}}).send(*m_boris));
    ORVO_OK(Batch("MenuFolder").insert("a", {{"caption", "caption"}}).send(*m_boris));
    QVERIFY(m_kind.byHand("UPDATE \"NciEvent\" SET \"time\" = \"time\" - 90000 WHERE \"id\" = 1;"));
    Filter filter;
    QCOMPARE(count(filter), 3);
    filter.login = "boris";
    QCOMPARE(count(filter), 2);
    filter.key = "A";
    filter.table = "Menu";
    QCOMPARE(count(filter), 1);
    filter.login.reset();
    QCOMPARE(count(filter), 2);
    filter.since = double(QDateTime::currentSecsSinceEpoch() - 3600);
    QCOMPARE(count(filter), 1);
    filter = {};
    for (const auto& [text, found] : std::initializer_list<std::pair<const char*, int>>{
             {"цех", 1}, {"насос", 2}, {"caption", 1}, {"KeyLink", 0}, {"", 3}}) {
        filter.text = text;
        QVERIFY2(count(filter) == found, text);
    }
}

void TestHistoryWords::longValuesUnfoldAsAWhole() {
    const QString start(200, 'x');
    ORVO_OK(Batch("Menu").insert("a", {{"caption", "А"}, {"params", start + "1"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("a", {{"params", start + "2"}}).send(*m_anna));
    Group group;
    ORVO_OK(readGroup(*m_anna, last(*m_anna), &group));
    LoggedRecords source(*m_anna);
    const ChangeWords change = describe(group.changes.front(), source);
    QCOMPARE(change.fields.size(), size_t(1));
    QCOMPARE(change.fields.front().before, "«" + start + "1»");
    QCOMPARE(change.fields.front().after, "«" + start + "2»");
}

void TestHistoryWords::aTextIsFoundAsItIsShown() {
    const QString odd = R"(Кр "Q" b\c)";
    ORVO_OK(Batch("MenuFolder").insert("8503a5", {{"caption", "Пульт"}}).send(*m_anna));
    ORVO_OK(
        Batch("Menu").insert("10ff", {{"caption", odd}, {"FolderKey", "8503a5"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("10FF", {{"params", "п=1\tq"}}).send(*m_boris));
    ORVO_OK(Batch("MenuFolder").insert("d", {{"caption", "Шкаф"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("10ff", {{"FolderKey", "d"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").remove("10ff").send(*m_boris));
    for (const auto& [text, found] : std::initializer_list<std::pair<QString, int>>{
             {"\"q\"", 4}, // the record's name, also where something else was changed
             {R"(b\c)", 4},
             {"1\tq", 2},  // the value of then and of the deletion
             {"пульт", 3}, // by its link as well: where it stood, and from where it was moved
             {"шкаф", 3},
             {"8503", 0}, // a key
             {"10ff", 0},
             {"order_", 0}}) {
        Filter filter;
        filter.text = text;
        QVERIFY2(count(filter) == found,
                 qPrintable(QString("%1: %2").arg(text).arg(count(filter))));
    }
}

void TestHistoryWords::aBranchIsFollowedBackInTime() {
    ORVO_OK(Batch("MenuFolder").insert("d", {{"caption", "Стол"}}).send(*m_anna)); // 1
    ORVO_OK(Batch("Menu").insert("m", {{"FolderKey", "d"}}).send(*m_anna));        // 2
    ORVO_OK(Batch("Menu").insert("n", {{"FolderKey", "other"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("n", {{"caption", "x"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").update("n", {{"FolderKey", "d"}}).send(*m_anna));     // 3
    ORVO_OK(Batch("Menu").insert("o", {{"FolderKey", "d"}}).send(*m_anna));     // 4
    ORVO_OK(Batch("Menu").update("o", {{"caption", "y"}}).send(*m_anna));       // 5
    ORVO_OK(Batch("Menu").remove("o").send(*m_anna));                           // 6
    ORVO_OK(Batch("Menu").update("m", {{"FolderKey", "other"}}).send(*m_anna)); // 7
    ORVO_OK(Batch("Menu").update("m", {{"caption", "z"}}).send(*m_anna));
    ORVO_OK(Batch("MenuFolder").update("D", {{"caption", "Пульт"}}).send(*m_anna)); // 8
    Filter filter;
    filter.branch = Branch{findTable("MenuFolder"), "D"};
    const std::vector<QString> lines = linesOf(filter);
    QVERIFY2(lines.size() == 8, qPrintable(QStringList(lines.begin(), lines.end()).join('\n')));
}

void TestHistoryWords::aKnownBranchFollowsTheLog() {
    ORVO_OK(Batch("MenuFolder").insert("D", {{"caption", "Стол"}}).send(*m_anna));
    ORVO_OK(Batch("Menu")
                .insert("m", {{"FolderKey", "D"}})
                .insert("out", {{"FolderKey", "other"}})
                .insert("below", {{"parent", "OUT"}})
                .send(*m_anna));
    BranchMembers known({findTable("MenuFolder"), "d"});
    const auto look = [&] {
        BranchMembers fresh({findTable("MenuFolder"), "d"});
        const Status status = known.update(*m_anna);
        return status.ok() && fresh.update(*m_anna).ok() && *known.records() == *fresh.records();
    };
    QVERIFY(look());
    ORVO_OK(
        Batch("Menu").insert("n", {{"parent", "M"}}).insert("o", {{"parent", "n"}}).send(*m_boris));
    ORVO_OK(Batch("Menu").update("m", {{"caption", "x"}}).send(*m_boris));
    QVERIFY(look());
    ORVO_OK(Batch("Menu").update("out", {{"parent", "o"}}).send(*m_boris)); // with what is below
    QVERIFY(look());
    QCOMPARE(known.lookUps(), 1);
    ORVO_OK(Batch("Menu").update("n", {{"parent", "elsewhere"}}).send(*m_boris));
    QVERIFY(look());
    QCOMPARE(known.lookUps(), 2);
}

void TestHistoryWords::aKnownBranchOutlivesAPrunedLog() {
    ORVO_OK(Batch("MenuFolder").insert("d", {{"caption", "Стол"}}).send(*m_anna));
    BranchMembers known({findTable("MenuFolder"), "d"});
    ORVO_OK(known.update(*m_anna));
    ORVO_OK(Batch("Menu").insert("m", {{"FolderKey", "d"}}).send(*m_boris));
    ORVO_OK(Batch("Users").insert("u", {{"login_", "x"}}).send(*m_boris));
    int64_t position = 0;
    ORVO_OK(m_anna->logPosition(&position));
    ORVO_OK(m_anna->pruneLog(position - 1));
    ORVO_OK(known.update(*m_anna));
    QCOMPARE(known.records()->size(), size_t(2));
}

void TestHistoryWords::thirdPartyTablesAreNamed() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "щит.ui", "bytes", {}}}));
    QCOMPARE(words(last(*m_anna)), QString("Создана форма «щит.ui»"));
    ORVO_OK(m_anna->formPut("", {{"", "щит.ui", "other", {}}}));
    QCOMPARE(words(last(*m_anna)), QString("Изменено содержимое файла «щит.ui»"));
}

void TestHistoryWords::whatChangedNothingIsNotTold() {
    ORVO_OK(Batch("MenuResourceFolder").insert("forms", {{"type_", 3}}).send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "щит.ui", "bytes", {}}}));
    ORVO_OK(m_anna->formPut("", {{"", "щит.ui", "other", {}}}));
    const size_t before = linesOf({}).size();
    ORVO_OK(Batch("MenuResourceFolder").update("forms", {{"type_", 3}}).send(*m_anna));
    QVERIFY(linesOf({}).size() == before);
    // Editors write an empty text over none, and nobody sees a change.
    ORVO_OK(Batch("MenuFolder").insert("desk9", {{"caption", "Стол"}}).send(*m_anna));
    ORVO_OK(Batch("Menu").insert("e9", {{"caption", "Э"}, {"FolderKey", "desk9"}}).send(*m_anna));
    const size_t shown = linesOf({}).size();
    ORVO_OK(Batch("Menu").update("e9", {{"params", ""}, {"ico", ""}}).send(*m_anna));
    QVERIFY(linesOf({}).size() == shown);
    ORVO_OK(Batch("Menu").update("e9", {{"params", "а=1"}}).send(*m_anna));
    QVERIFY(linesOf({}).size() == shown + 1);
    ORVO_OK(Batch("MenuFolder").remove("desk9").send(*m_anna));
    ORVO_OK(m_anna->formPut("", {{"", "щит.ui", "third", {}}}));
    // Nor does the echo of the form hide what became of its content.
    Inverse done;
    Reader reader(*m_anna, {});
    std::vector<Group> groups;
    ORVO_OK(reader.next(1, &groups));
    ORVO_OK(undo(*m_anna, {groups.at(0).id}, {}, &done));
    QVERIFY(done.written);
    QCOMPARE(words(last(*m_anna)), QString("Отменено изменение: содержимое файла «щит.ui»"));
    ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
    QCOMPARE(words(last(*m_anna)), QString("Повтор: изменено содержимое файла «щит.ui»"));
}

void TestHistoryWords::aNameStaysOnItsLineAndInItsDirection() {
    QCOMPARE(quoted(QString("а\u2028б\u202Eв\u2067г")), QString("«а б в г»"));
    const QString shown = valueWords(*findTable("Menu"), findTable("Menu")->find("params"),
                                     Value(std::string("x\u2029y\u200Fz")), nullptr);
    QCOMPARE(shown, QString("«x y z»"));
}

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryWords>(argc, argv);
}

#include "tst_history_words.moc"
