// What stands below a folder that the open resource editor does not show is told, until the modules
// are opened anew.
#include "platform/mdx/MdxBuild.h"
#include "tests/client/RunningClient.h"

#include <QLineEdit>

using namespace orvo;
using namespace orvo::test;

namespace {

const QString remedy = QStringLiteral("«Открыть модули заново» (Ctrl+R)");

struct Fixture : RunningClient {
    Fixture() {
        stop();
        for (const char* kind : {"1", "2", "3"}) // a kind without a folder ends the tree
            otherWrites(MDX_INSERT, {{"KeyLink", kind}, {"type_", kind}, {"caption", kind}},
                        "MenuResourceFolder");
        otherFolder("docs", "4", {}, "Документы");
        otherFolder("icons", "4", {}, "Иконки");
        otherFolder("old", "4", "docs", "Старые");
        otherFile("a", "docs", "a.txt");
        start();
    }
    void otherFolder(const char* key, const char* kind, const char* parent, const char* caption) {
        Fields fields = {{"KeyLink", key}, {"type_", kind}, {"caption", caption}};
        if (parent)
            fields.emplace_back("ParentKey", parent);
        otherWrites(MDX_INSERT, fields, "MenuResourceFolder");
    }
    void otherFile(const char* key, const char* folder, const char* name) {
        otherWrites(MDX_INSERT,
                    {{"KeyLink", key},
                     {"type_", "4"},
                     {"name_", name},
                     {"caption", name},
                     {"MenuResourceFolderKey", folder}},
                    "MenuResource");
    }
    void otherMoves(const char* key, const char* folder) {
        otherWrites(MDX_UPDATE, {{"KeyLink", key}, {"MenuResourceFolderKey", folder}},
                    "MenuResource");
    }
    void othersFolderIsTold() {
        otherFolder("new", "4", "docs", "Новые");
        QTRY_COMPARE(logged("Не видно в дереве ресурсов: папка ресурсов «Новые» (теперь в "
                            "«Документы»). На место ставит " +
                            remedy),
                     1);
    }
    QString files() const {
        const QAbstractItemModel* model = view("tvRes")->model();
        return below(*model, model->index(1, 0));
    }
    int roots() const { return view("tvRes")->model()->rowCount(); }
};

} // namespace

class TestUnseenPlaces : public QObject {
    Q_OBJECT
private slots:
    void aFileThatMovesIntoAnothersNewFolderIsTold() {
        Fixture fixture;
        QTRY_COMPARE(fixture.files(), QString("Документы(Старые a.txt) Иконки"));
        fixture.othersFolderIsTold();
        fixture.otherMoves("a", "new");
        QTRY_COMPARE(fixture.roots(), 3); // as it is shown until then
        QTRY_COMPARE(fixture.logged("Не на своём месте в дереве ресурсов: файл «a.txt» (теперь в "
                                    "«Документы / Новые»). На место ставит " +
                                    remedy),
                     1);
        QVERIFY2(fixture.failure().contains(remedy), qPrintable(fixture.failure()));
        emit fixture.client->window()->reopenRequested();
        QTRY_COMPARE(fixture.files(), QString("Документы(Новые(a.txt) Старые) Иконки"));
        QCOMPARE(fixture.roots(), 2);
        // From now on that folder is seen.
        fixture.otherFile("b", "new", "b.txt");
        QTRY_COMPARE(fixture.files(), QString("Документы(Новые(a.txt b.txt) Старые) Иконки"));
        QCOMPARE(fixture.logged(remedy), 2);
    }

    void aFileThatSomebodyHoldsIsTold() {
        Fixture fixture;
        QVERIFY(fixture.host.byHand(R"(UPDATE "MenuResource" SET "UsersKey" = 'u1', )"
                                    R"("dateTimeEdit" = 1700000000.5 WHERE "KeyLink" = 'a')"));
        fixture.otherFolder("new", "4", "docs", "Новые");
        fixture.otherMoves("a", "new");
        QTRY_COMPARE(fixture.logged("Не на своём месте в дереве ресурсов: файл «a.txt»"), 1);
    }

    void whatIsNewInSuchAFolderIsToldOnce() {
        Fixture fixture;
        fixture.othersFolderIsTold();
        fixture.otherFile("b", "new", "b.txt");
        fixture.otherMoves("a", "new"); // told after that one
        QTRY_COMPARE(fixture.logged("Не на своём месте"), 1);
        QCOMPARE(fixture.logged("Не видно"), 1);
    }

    void whatAnotherPutsAtTheTopOfTheFilesIsTold() {
        Fixture fixture;
        fixture.otherFile("top", "", "top.txt");
        QTRY_COMPARE(fixture.logged("Не видно в дереве ресурсов: файл «top.txt» (теперь наверху). "
                                    "На место ставит " +
                                    remedy),
                     1);
        fixture.otherFolder("new", "4", nullptr, "Новые");
        QTRY_COMPARE(fixture.logged("Не видно в дереве ресурсов: папка ресурсов «Новые» (теперь "
                                    "наверху)"),
                     1);
        emit fixture.client->window()->reopenRequested();
        QTRY_COMPARE(fixture.files(), QString("Документы(Старые a.txt) Иконки Новые top.txt"));
    }

    void aFolderAtTheTopOfTheFilesIsTold() {
        Fixture fixture;
        fixture.writes(MDX_UPDATE, {{{"KeyLink", "old"}, {"ParentKey", ""}}}, "MenuResourceFolder");
        QTRY_COMPARE(fixture.logged("папка ресурсов «Старые» (теперь наверху)"), 1);
        emit fixture.client->window()->reopenRequested();
        QTRY_COMPARE(fixture.files(), QString("Документы(a.txt) Иконки Старые"));
    }

    void whatHasNoFolderAnyMoreIsToldWithItsCure() {
        Fixture fixture;
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "old"}, {"ParentKey", "gone"}},
                            "MenuResourceFolder");
        QTRY_COMPARE(fixture.logged("Не на своём месте в дереве ресурсов: папка ресурсов «Старые» "
                                    "(папки больше нет). Место дают «Проблемы» (F8)."),
                     1);
        QCOMPARE(fixture.logged(remedy), 0);
    }

    void whatStandsWhereItIsShownIsNotTold() {
        Fixture fixture;
        fixture.otherMoves("a", "icons");
        fixture.otherFile("b", "docs", "b.txt");
        fixture.otherWrites(MDX_UPDATE, {{"KeyLink", "old"}, {"ParentKey", "icons"}},
                            "MenuResourceFolder");
        QTRY_COMPARE(fixture.files(), QString("Документы(b.txt) Иконки(Старые a.txt)"));
        // Told of behind all these.
        fixture.othersFolderIsTold();
        fixture.otherMoves("b", "new");
        QTRY_COMPARE(fixture.logged(remedy), 2);
        QVERIFY2(fixture.failure().contains("файл «b.txt» (теперь в «Документы / Новые»). На"),
                 qPrintable(fixture.failure()));
    }

    void anEditStaysOpenAndIsToldOfNothingBeforeItsEnd() {
        Fixture fixture;
        QAbstractItemModel* model = fixture.view("tvRes")->model();
        const QModelIndexList found = model->match(model->index(0, 0), Qt::DisplayRole, "Старые", 1,
                                                   Qt::MatchExactly | Qt::MatchRecursive);
        QCOMPARE(found.size(), 1);
        COrvoCliMod* editor = fixture.module("Resources");
        fixture.view("tvRes")->setCurrentIndex(found.first());
        auto* passport = editor->findChild<QTreeView*>("tvProp");
        const QAbstractItemModel* values = passport->model();
        const QModelIndexList rows =
            values->match(values->index(0, 0), Qt::AccessibleDescriptionRole, "caption", 1,
                          Qt::MatchExactly | Qt::MatchRecursive);
        QCOMPARE(rows.size(), 1);
        passport->edit(rows.first().siblingAtColumn(1));
        auto* line = passport->findChild<QLineEdit*>();
        QVERIFY(line);
        line->setFocus();
        QTest::keyClicks(line, "1");
        QVERIFY(!editor->ModEditText().isEmpty());
        fixture.otherFolder("new", "4", "docs", "Новые");
        fixture.otherMoves("a", "new");
        QTRY_VERIFY(!fixture.client->window()->statusLine()->held().isEmpty());
        QCOMPARE(fixture.logged(remedy), 0);
        editor->ModEditCancel();
        QTRY_COMPARE(fixture.logged("Не на своём месте"), 1);
    }
};

QTEST_MAIN(TestUnseenPlaces)
#include "tst_unseen_places.moc"
