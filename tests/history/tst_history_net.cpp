// An action that writes a record several times is told by what is different afterwards.
#include "HistoryTest.h"

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

class TestHistoryNet : public HistoryTest {
    Q_OBJECT
public:
    using HistoryTest::HistoryTest;

private:
    QString command(int64_t id) const {
        Group group;
        LoggedRecords source(*m_anna);
        const Status status = readForWords(*m_anna, id, &group);
        return status.ok() ? commandWords(group, source) : QString::fromStdString(status.text);
    }
    QString counted(int64_t id) const {
        Group group;
        LoggedRecords source(*m_anna);
        const Status status = readForWords(*m_anna, id, &group);
        return status.ok() ? describe(group, source).what : QString::fromStdString(status.text);
    }
    int64_t newest() const {
        std::vector<Group> groups;
        const Status status = Reader(*m_anna, {}).next(1, &groups);
        return status.ok() && !groups.empty() ? groups.front().id : -1;
    }
    /// Deletes all that is stored and writes it anew, as a load in place of it does.
    Status replaceByItself() {
        return m_anna->replaceAll([&](Receiver& into) { return m_boris->writeOut(into); });
    }

private slots:
    void init() {
        HistoryTest::init();
        plantElements();
    }

    void severalWritesOfARecordAreOneChange() {
        ORVO_OK(Batch("Menu")
                    .update("a", {{"caption", "А1"}, {"ico", "x.png"}})
                    .update("a", {{"params", "-v"}})
                    .update("A", {{"caption", "А2"}})
                    .send(*m_anna));
        QCOMPARE(words(last(*m_anna)), QString("Переименован элемент меню «А2»: было «А»"));
        QCOMPARE(command(last(*m_anna)), QString("переименовать «А2»"));
        Inverse done;
        ORVO_OK(undo(*m_anna, {last(*m_anna)}, {}, &done));
        QCOMPARE(done.count, size_t(1));
        QCOMPARE(words(last(*m_anna)),
                 QString("Отменено переименование: элемент меню «А2», снова «А»"));
    }

    void whatWasMadeAndChangedIsMade() {
        ORVO_OK(Batch("Menu")
                    .insert("n", {{"caption", "Новая"}, {"FolderKey", "d"}})
                    .update("n", {{"caption", "Насосы"}})
                    .send(*m_anna));
        QCOMPARE(words(last(*m_anna)), QString("Создан элемент меню «Насосы»"));
    }

    void whatWasChangedAndDeletedIsDeletedAsItWas() {
        ORVO_OK(Batch("Menu").update("c", {{"caption", "Г"}}).remove("c").send(*m_anna));
        QCOMPARE(words(last(*m_anna)), QString("Удалён элемент меню «В»"));
    }

    void whatCameAndWentIsNotTold() {
        ORVO_OK(Batch("Menu")
                    .insert("n", {{"caption", "Новая"}, {"FolderKey", "d"}})
                    .update("c", {{"caption", "Г"}})
                    .remove("n")
                    .send(*m_anna));
        QCOMPARE(words(last(*m_anna)), QString("Переименован элемент меню «Г»: было «В»"));
    }

    void whatIsReplacedByTheSameIsNotCalledDeleted() {
        const QStringList before = snapshot();
        ORVO_OK(replaceByItself());
        QCOMPARE(snapshot(), before);
        QCOMPARE(words(newest()), QString("Записано то же, что было"));
        ORVO_OK(m_anna->replaceAll([&](Receiver& into) {
            class Renaming : public Receiver {
            public:
                explicit Renaming(Receiver& next) : m_next(next) {}
                Status expect(uint64_t records, uint64_t contents, uint64_t bytes) override {
                    return m_next.expect(records, contents, bytes);
                }
                Status record(const TableDef& table, const std::vector<Value>& values,
                              const std::string& place) override {
                    std::vector<Value> changed = values;
                    if (textOf(values.front()) == "b")
                        changed[size_t(table.find("caption"))] = std::string("Бак");
                    return m_next.record(table, changed, place);
                }
                Status content(const std::vector<Value>& values, const std::string& p) override {
                    return m_next.content(values, p);
                }
                Status bytes(std::string_view piece) override { return m_next.bytes(piece); }

            private:
                Receiver& m_next;
            } renaming(into);
            return m_boris->writeOut(renaming);
        }));
        QCOMPARE(words(newest()), QString("Переименован элемент меню «Бак»: было «Б»"));
    }

    void aLargeReplacementIsNotCalledADeletion() {
        Batch many("Menu");
        many.insert("top", {{"caption", "Верх"}, {"FolderKey", "d"}});
        for (int i = 0; i < 2500; ++i)
            many.insert(qPrintable(QString("n%1").arg(i)), {{"parent", "top"}, {"FolderKey", "d"}});
        ORVO_OK(many.send(*m_anna));
        ORVO_OK(replaceByItself());
        QCOMPARE(counted(newest()),
                 QString("Записаны заново: рабочий стол «Стол» и ещё 2504 записи"));
        QCOMPARE(command(newest()), QString("записать заново «Стол» и ещё 2504 записи"));
    }

    void aReturnOfUndoneAndNewActionsIsNoRepetition() {
        Inverse done;
        ORVO_OK(undo(*m_anna, {rename(*m_anna, "a", "А1")}, {}, &done));
        const int64_t undone = last(*m_anna);
        const int64_t other = rename(*m_anna, "b", "Б1");
        ORVO_OK(undo(*m_anna, {undone, other}, {}, &done));
        QVERIFY2(words(last(*m_anna)).startsWith("Отменено переименование: "),
                 qPrintable(words(last(*m_anna))));
        QVERIFY(words(last(*m_anna)).endsWith(" (2 действия)"));
        const int64_t both = last(*m_anna);
        ORVO_OK(undo(*m_anna, {both}, {}, &done));
        const int64_t again = last(*m_anna);
        ORVO_OK(undo(*m_anna, {rename(*m_anna, "c", "В1")}, {}, &done));
        ORVO_OK(undo(*m_anna, {again, last(*m_anna)}, {}, &done)); // undos both
        QVERIFY2(words(last(*m_anna)).startsWith("Повтор: "), qPrintable(words(last(*m_anna))));
        QVERIFY(words(last(*m_anna)).endsWith(" (2 действия)"));
    }

    void whatOthersPutInAndWentBackDoesNotNameAnUndoOfTheMaking() {
        ORVO_OK(
            Batch("Menu").insert("n", {{"caption", "Новая"}, {"FolderKey", "d"}}).send(*m_anna));
        const int64_t making = last(*m_anna);
        ORVO_OK(Batch("Menu").update("c", {{"parent", "n"}}).send(*m_boris));
        Choices choices;
        choices.othersWorkToo = true;
        Inverse done;
        ORVO_OK(undo(*m_anna, {making}, choices, &done));
        QVERIFY(done.written);
        QCOMPARE(fieldOf("c", "parent"), QString("b"));
        QCOMPARE(words(last(*m_anna)), QString("Отменено создание: элемент меню «Новая»"));
    }
};

int main(int argc, char** argv) {
    return orvo::store::test::runOnAllKinds<TestHistoryNet>(argc, argv);
}

#include "tst_history_net.moc"
