// How stored forms and files are found by their names, and folders by their paths.
#include "StoreTest.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

using namespace orvo::store;
using namespace orvo::store::test;

class TestLookup : public StoreTest {
    Q_OBJECT
public:
    using StoreTest::StoreTest;

private slots:
    void init() {
        StoreTest::init();
        QVERIFY(m_store);
        ORVO_OK(Batch("MenuResourceFolder")
                    .insert("forms", {{"type_", 3}, {"caption", "формы отображения"}})
                    .insert("a", {{"type_", 4}, {"caption", "icons"}})
                    .insert("b", {{"type_", 4}, {"ParentKey", "a"}, {"caption", "Цех"}})
                    .send(*m_store));
    }

    void everyLetterIsFoundInEitherCase() {
        // All texts of one character that the editors can show, and may be part of a file's name.
        QVector<QByteArray> characters;
        for (int code = 1; code < 256; ++code) {
            const char c = static_cast<char>(code);
            const std::string text = orvo::mdx::toUtf8({&c, 1});
            if (isPlainFileName("x" + text) && code != '?')
                characters << QByteArray::fromStdString(text);
        }
        QVERIFY(characters.size() > 200);
        QVector<QByteArray> forms; // one of each that the editors tell apart
        for (const QByteArray& character : characters) {
            const auto isSame = [&](const QByteArray& form) {
                return sameText(form.toStdString(), ("x" + character).toStdString());
            };
            if (std::any_of(forms.begin(), forms.end(), isSame))
                continue;
            forms << "x" + character;
            ORVO_OK(m_store->formPut("", {{{}, forms.back().toStdString(), "bytes", 1.0}}));
        }
        QCOMPARE(characters.size() - forms.size(), 26 + 47); // letters of two cases
        for (const QByteArray& character : characters)
            QVERIFY2(hasForm("X" + character), character);
        // And none of them is taken for another: each of them names the one form that it is.
        for (const QByteArray& form : forms) {
            std::vector<StoredFile> found;
            ORVO_OK(m_store->formGet(form.toStdString(), false, &found));
            QCOMPARE(found.size(), size_t(1));
            QCOMPARE(QByteArray::fromStdString(found.front().name), form);
        }
    }

    void lettersThatLookAlikeAreOthers() {
        ORVO_OK(m_store->formPut("", {{{}, "Ель", "1", 1.0}}));
        QVERIFY(hasForm("ель"));
        QVERIFY(!hasForm("ёль"));
        QVERIFY(!hasForm("Eль")); // Latin
        QVERIFY(!hasForm("ел"));
        QVERIFY(!hasForm("ель "));
        QVERIFY(!hasForm(""));
    }

    void nameWithLettersOutsideTheEncodingIsFoundAsItIsShown() {
        ORVO_OK(m_store->formPut("", {{{}, "omega", "1", 1.0}}));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResource\" SET \"name_\" = 'Знак Ω';"));
        QVERIFY(hasForm("знак ?"));
        QVERIFY(hasForm("Знак Ω"));
        QVERIFY(!hasForm("знак"));
        QVERIFY(!hasForm("omega"));
    }

    void nameEndsAtAZeroByteAsInRecords() {
        ORVO_OK(m_store->formPut("", {{{}, "omega", "1", 1.0}}));
        if (!m_kind.byHand("UPDATE \"MenuResource\" SET \"name_\" = " +
                           m_kind.rawText(QByteArray("Печь\0x", 10)) + ";"))
            return; // this database keeps no such text
        QVERIFY(hasForm("печь"));
        QVERIFY(!hasForm("печьx"));
    }

    void otherKindsOfThatNameAreNoForms() {
        ORVO_OK(Batch("MenuResource")
                    .insert("m", {{"type_", 1}, {"name_", "same"}})
                    .insert("n", {{"name_", "same"}})
                    .send(*m_store));
        ORVO_OK(put("", "same"));
        QVERIFY(!hasForm("same"));
        ORVO_OK(m_store->formPut("", {{{}, "same", "1", 1.0}}));
        QVERIFY(hasForm("same"));
        QVERIFY(hasFile("", "SAME"));
    }

    void renamedFormIsFoundByItsNewNameOnly() {
        ORVO_OK(m_store->formPut("", {{{}, "Щит", "1", 1.0}}));
        QVERIFY(m_kind.byHand(
            "UPDATE \"MenuResource\" SET \"name_\" = 'Юла' WHERE \"name_\" = 'Щит';"));
        QVERIFY(hasForm("юла"));
        QVERIFY(!hasForm("щит"));
        // What becomes a form is found from then on, and what was one no more.
        QVERIFY(m_kind.byHand("UPDATE \"MenuResource\" SET \"type_\" = 1;"));
        QVERIFY(!hasForm("юла"));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResource\" SET \"type_\" = 3;"));
        QVERIFY(hasForm("юла"));
    }

    void fileIsFoundInItsFolderOnly() {
        ORVO_OK(put("icons", "насос.png"));
        QVERIFY(hasFile("ICONS", "НАСОС.PNG"));
        QVERIFY(!hasFile("icons/Цех", "насос.png"));
        QVERIFY(!hasFile("", "насос.png"));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResource\" SET \"MenuResourceFolderKey\" = 'B';"));
        QVERIFY(!hasFile("icons", "насос.png"));
        QVERIFY(hasFile("icons/цех", "насос.png"));
    }

    void fileAtTheTopIsFoundUnderBothItsLinks() {
        ORVO_OK(put("", "Чертёж.txt"));
        QVERIFY(hasFile("", "чертёж.txt"));
        QVERIFY(m_kind.byHand(
            "UPDATE \"MenuResource\" SET \"MenuResourceFolderKey\" = 'FILEresources';"));
        QVERIFY(hasFile("", "чертёж.txt"));
        QVERIFY(!hasFile("icons", "чертёж.txt"));
    }

    void foldersRenamedElsewhereAreSeenAtOnce() {
        const auto other = another("other");
        QVERIFY(other);
        ORVO_OK(put("icons/Цех", "a.png"));
        for (const char* caption : {"Двор", "Склад", "Цех"}) {
            QVERIFY(hasFile("icons", "a.png") == false);
            // Changes of other records in between are no reason to read the folders.
            ORVO_OK(Batch("MenuFileExt")
                        .insert(caption == QByteArray("Двор")    ? "k1"
                                : caption == QByteArray("Склад") ? "k2"
                                                                 : "k3")
                        .send(*other));
            QVERIFY(hasFile("icons", "a.png") == false);
            ORVO_OK(Batch("MenuResourceFolder").update("b", {{"caption", caption}}).send(*other));
            QVERIFY(hasFile((std::string("icons/") + caption).c_str(), "a.png"));
        }
        QVERIFY(!hasFile("icons/Двор", "a.png"));
        ORVO_OK(Batch("MenuResourceFolder").remove("b").send(*other));
        QVERIFY(!hasFile("icons/Цех", "a.png"));
    }

    void foldersRenamedByHandAreSeenAtOnce() {
        ORVO_OK(put("icons/Цех", "a.png"));
        QVERIFY(hasFile("icons/Цех", "a.png"));
        QVERIFY(m_kind.byHand("UPDATE \"MenuResourceFolder\" SET \"caption\" = 'pics' WHERE "
                              "\"KeyLink\" = 'a';"));
        QVERIFY(!hasFile("icons/Цех", "a.png"));
        QVERIFY(hasFile("pics/Цех", "a.png"));
    }

    void foldersAreReadAgainWhenTheLogNoLongerTells() {
        const auto other = another("other");
        ORVO_OK(put("icons/Цех", "a.png"));
        QVERIFY(hasFile("icons/Цех", "a.png"));
        ORVO_OK(Batch("MenuResourceFolder").update("b", {{"caption", "Двор"}}).send(*other));
        int64_t newest = 0;
        ORVO_OK(other->logPosition(&newest));
        ORVO_OK(other->pruneLog(newest)); // and with it the change
        QVERIFY(!hasFile("icons/Цех", "a.png"));
        QVERIFY(hasFile("icons/Двор", "a.png"));
    }

    void refusedWriteLeavesNoFoldersBehind() {
        const auto other = another("other");
        ORVO_OK(put("icons/Цех", "a.png"));
        QVERIFY(hasFile("icons/Цех", "a.png"));
        // Some numbers of the log are given out, and come again when the write is taken back.
        ORVO_FAILS(m_store->filePut({{"icons", "1", "x", 1.0},
                                     {"icons", "2", "x", 1.0},
                                     {"icons", "3", "x", 1.0},
                                     {"nowhere", "4", "x", 1.0}}),
                   Refused);
        ORVO_OK(Batch("MenuResourceFolder").update("b", {{"caption", "Двор"}}).send(*other));
        QVERIFY(!hasFile("icons", "1"));
        QVERIFY(!hasFile("icons/Цех", "a.png"));
        QVERIFY(hasFile("icons/Двор", "a.png"));
    }

    void writeSeesTheFoldersOfTheMoment() {
        const auto other = another("other");
        QVERIFY(!hasFile("icons/Цех", "a.png")); // the folders are known from here on
        ORVO_OK(Batch("MenuResourceFolder").update("b", {{"caption", "Двор"}}).send(*other));
        ORVO_FAILS(put("icons/Цех", "a.png"), Refused);
        ORVO_OK(put("icons/Двор", "a.png"));
        QVERIFY(hasFile("icons/Двор", "a.png", other.get()));
        ORVO_OK(Batch("MenuResourceFolder").update("b", {{"caption", "Цех"}}).send(*other));
        ORVO_OK(m_store->fileDelete({{"icons/Двор", "a.png"}})); // no such place: nothing happens
        QVERIFY(hasFile("icons/Цех", "a.png"));
        ORVO_OK(m_store->fileDelete({{"icons/Цех", "a.png"}}));
        QVERIFY(!hasFile("icons/Цех", "a.png"));
    }

private:
    bool hasForm(const QByteArray& name) {
        std::vector<StoredFile> found;
        const Status status = m_store->formGet(name.toStdString(), false, &found);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return !found.empty();
    }

    bool hasFile(const char* path, const char* name, Store* store = nullptr) {
        std::vector<StoredFile> found;
        const Status status = (store ? store : m_store.get())->fileGet(path, name, false, &found);
        if (!status.ok())
            qWarning("%s", status.text.c_str());
        return !found.empty();
    }
    Status put(const char* path, const char* name) {
        return m_store->filePut({{path, name, "bytes", 1.0}});
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestLookup>(argc, argv);
}

#include "tst_store_lookup.moc"
