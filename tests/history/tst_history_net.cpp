// An action that writes a record several times is told by what is different afterwards.
#include "HistoryTest.h"

#include <functional>

using namespace orvo::store;
using namespace orvo::history;
using namespace orvo::history::test;

namespace {

/// Hands on the records that are wanted, one of them under another caption.
class Picking : public Receiver {
public:
    Picking(Receiver& next, std::function<bool(const std::string& key)> isWanted,
            std::string renamed = {}, std::string caption = {})
        : m_next(next)
        , m_isWanted(std::move(isWanted))
        , m_renamed(std::move(renamed))
        , m_caption(std::move(caption)) {}

    Status expect(uint64_t records, uint64_t contents, uint64_t bytes) override {
        return m_next.expect(records, contents, bytes);
    }
    Status record(const TableDef& table, const std::vector<Value>& values,
                  const std::string& place) override {
        const std::string key = textOf(values.front());
        std::vector<Value> handed = values;
        if (key == m_renamed)
            handed[size_t(table.find("caption"))] = m_caption;
        return m_isWanted && !m_isWanted(key) ? Status() : m_next.record(table, handed, place);
    }
    Status content(const std::vector<Value>& values, const std::string& place) override {
        return m_next.content(values, place);
    }
    Status bytes(std::string_view piece) override { return m_next.bytes(piece); }

private:
    Receiver& m_next;
    const std::function<bool(const std::string& key)> m_isWanted;
    const std::string m_renamed, m_caption;
};

} // namespace

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
        QCOMPARE(words(newest()), QString("Записаны заново те же значения"));
        ORVO_OK(m_anna->replaceAll([&](Receiver& into) {
            Picking renaming(into, {}, "b", "Бак");
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

    void whatALargeReplacementTookAwayIsToldAsDeleted() {
        Batch many("Menu");
        for (int i = 0; i < 2500; ++i)
            many.insert(qPrintable(QString("n%1").arg(i)), {{"parent", "a"}, {"FolderKey", "d"}});
        ORVO_OK(many.send(*m_anna));
        const auto keep = [&](const std::function<bool(const std::string&)>& isKept) {
            return m_anna->replaceAll([&](Receiver& into) {
                Picking picking(into, isKept);
                return m_boris->writeOut(picking);
            });
        };
        ORVO_OK(keep([](const std::string& key) { return key != "n7" && key != "n8"; }));
        QCOMPARE(counted(newest()),
                 QString("Записаны заново: рабочий стол «Стол» и ещё 2501 запись; удалено 2"));
        ORVO_OK(keep([](const std::string& key) { return key == "d" || key == "a"; }));
        QCOMPARE(counted(newest()), QString("Удалён элемент меню «Б» и ещё 2499 записей"));
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
        QVERIFY2(words(again).startsWith("Повтор: "), qPrintable(words(again)));
        std::vector<int64_t> undos;
        for (const char* key : {"a", "c"}) {
            ORVO_OK(undo(*m_anna, {rename(*m_anna, key, "В1")}, {}, &done));
            undos.push_back(last(*m_anna));
        }
        ORVO_OK(undo(*m_anna, undos, {}, &done));
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
