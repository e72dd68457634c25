// The passport of a folder or a resource.
#include "tests/resources/ResProbe.h"

#include "frame/CommonFunctions.h"

#include <QDateTime>
#include <QLineEdit>

using namespace orvo::test;

namespace {

constexpr double noon = 1700000000;

orvo::store::FileToPut file(const char* path, const char* name, std::string_view bytes,
                            std::optional<double> time = noon) {
    return {path, name, bytes, time};
}

void put(const orvo::store::Status& status) {
    if (!status.ok())
        qFatal("not stored: %s", status.text.c_str());
}

/// "name caption=value" of each row; a category has no value. "*" marks what can be edited.
QStringList rowsOf(const PropModel& model, const QModelIndex& parent = {}) {
    QStringList lines;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const auto value = [&](int column) { return model.index(row, column, parent).data(); };
        const QModelIndex index = model.index(row, 0, parent);
        if (model.isEditorRow(index))
            lines << value(4).toString() + (value(3).toBool() ? " " : "* ") + value(0).toString() +
                         "=" + value(1).toString();
        else
            lines << value(4).toString() + ": " + value(0).toString();
        lines << rowsOf(model, index);
    }
    return lines;
}

} // namespace

class TestResPassports : public QObject {
    Q_OBJECT
private slots:
    void aFolderHasThreeRows() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("trends"));
        QCOMPARE(rowsOf(*editor->m_propModel),
                 QStringList({"properties: Свойства", "keylink Идентификатор=trends",
                              "type Тип=папка", "caption* Наименование=Тренды"}));
        QVERIFY(editor.view("tvProp")->isExpanded(editor->m_propModel->index(0, 0)));
        QVERIFY(editor.view("tvProp")->findChildren<QLineEdit*>().isEmpty());
    }

    void aNewFolderOpensItsCaption() {
        StartedCatalogue editor;
        editor->m_resModel->setData(editor->row("trends", ResColumn::IsNew), true);
        editor.view("tvRes")->setCurrentIndex(editor->row("trends"));
        const auto* line = editor.view("tvProp")->findChild<QLineEdit*>();
        QVERIFY(line);
        QCOMPARE(line->text(), QString("Тренды"));
    }

    void aNewModuleOpensNothing() {
        StartedCatalogue editor;
        editor->m_resModel->setData(editor->row("rlog", ResColumn::IsNew), true);
        editor.view("tvRes")->setCurrentIndex(editor->row("rlog"));
        QVERIFY(editor.view("tvProp")->findChildren<QLineEdit*>().isEmpty());
        // What it starts can still be named.
        QVERIFY(rowsOf(*editor->m_propModel).contains("object* Объект=Log"));
    }

    void aModuleHasSixRows() {
        TestStore store;
        fillCatalogue(store);
        store.update("MenuResource", {{"KeyLink", QString("rlog")},
                                      {"ico", QString("pump.png")},
                                      {"params", QString("/x")}});
        ResourcesOn editor(store);
        editor.view("tvRes")->setCurrentIndex(editor->row("rlog"));
        QCOMPARE(
            rowsOf(*editor->m_propModel),
            QStringList({"properties: Свойства", "keylink Идентификатор=rlog", "type Тип=модуль",
                         "caption* Наименование=Журнал", "object Объект=Log",
                         "icon* Иконка=pump.png", "params* Параметры=/x"}));
        const QModelIndex category = editor->m_propModel->index(0, 0);
        QVERIFY(editor.view("tvProp")->isExpanded(category));
        QCOMPARE(editor->m_propModel->index(4, 2, category).data().toInt(),
                 static_cast<int>(MyEditorButton));
        editor.view("tvRes")->setCurrentIndex(editor->row("rcalc"));
        QCOMPARE(editor->passport("type"), QVariant("функция"));
    }

    void theTypeOfAFileIsEmpty() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("rmanual"));
        QCOMPARE(editor->passport("type").toString(), QString());
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        QCOMPARE(editor->passport("type"), QVariant("файл"));
    }

    void aFormShowsItsFiles() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        put(host.ownStore().formPut("Котлы",
                                    {file("", "Boiler", "12345"), file("", "Boiler.png", "abc")}));
        ResEditor editor(host, "Resources");
        QVERIFY(editor.start());
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        const QString time = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(noon))
                                 .toString("dd.MM.yyyy hh:mm:ss");
        QCOMPARE(rowsOf(*editor->m_propModel).mid(7),
                 QStringList({"file0: файл", "filename0 имя файла=Boiler",
                              "filedate0 дата изменения=" + time, "filesize0 размер=5",
                              "file1: файл", "filename1 имя файла=Boiler.png",
                              "filedate1 дата изменения=" + time, "filesize1 размер=3"}));
        for (int row = 0; row < editor->m_propModel->rowCount(); ++row)
            QVERIFY(editor.view("tvProp")->isExpanded(editor->m_propModel->index(row, 0)));
    }

    void aFormWithoutFilesShowsTheCommonRows() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("rdrum"));
        QCOMPARE(rowsOf(*editor->m_propModel).size(), 7);
        QVERIFY(editor.view("tvProp")->isExpanded(editor->m_propModel->index(0, 0)));
    }

    void emptyFilesAreCountedNotShown() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        put(host.ownStore().formPut("Котлы",
                                    {file("", "Boiler", ""), file("", "Boiler.txt", "text")}));
        ResEditor editor(host, "Resources");
        QVERIFY(editor.start());
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        QVERIFY(!editor->passport("filename0").isValid());
        QCOMPARE(editor->passport("filename1"), QVariant("Boiler.txt"));
        QCOMPARE(editor->m_propModel->rowCount(), 2);
    }

    void aFileWithoutTimeShowsNone() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        put(host.ownStore().formPut("Котлы", {file("", "Boiler", "1", std::nullopt)}));
        ResEditor editor(host, "Resources");
        QVERIFY(editor.start());
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        QVERIFY(editor->m_propModel->findIndexByKey("filedate0").isValid());
        QVERIFY(!editor->passport("filedate0").isValid());
        QCOMPARE(editor->passport("filesize0"), QVariant(1));
    }

    void aFileShowsTheOddYear() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        put(host.ownStore().filePut({file("docs", "manual.txt", "four")}));
        ResEditor editor(host, "Resources");
        QVERIFY(editor.start());
        editor.view("tvRes")->setCurrentIndex(editor->row("rmanual"));
        const QDateTime time = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(noon));
        QCOMPARE(editor->passport("filedate0").toString(),
                 time.toString("dd.MM.yyyy") + "y " + time.toString("hh:mm:ss"));
        QCOMPARE(editor->passport("filename0"), QVariant("manual.txt"));
        // A name that stands in another folder is another file.
        editor.view("tvRes")->setCurrentIndex(editor->row("rpump"));
        QCOMPARE(editor->m_propModel->rowCount(), 1);
    }

    void aFailedJobLeavesTheCommonRows() {
        TestStore store;
        fillCatalogue(store);
        TestHost host(store);
        put(host.ownStore().formPut("Котлы", {file("", "Boiler", "1")}));
        ResEditor editor(host, "Resources");
        QVERIFY(editor.start());
        store.sql("ALTER TABLE \"MenuResourceFile\" RENAME TO \"Away\"");
        editor.view("tvRes")->setCurrentIndex(editor->row("rboiler"));
        QCOMPARE(rowsOf(*editor->m_propModel).size(), 7);
        QCOMPARE(host.failures.size(), 1);
        QVERIFY(!editor->m_popMessageBox);
        store.sql("ALTER TABLE \"Away\" RENAME TO \"MenuResourceFile\"");
    }

    void theFixedRowsHaveFolderPassports() {
        StartedCatalogue editor;
        for (const char* key : {"MenuResources", "FileResources", "WrongFolder"}) {
            editor.view("tvRes")->setCurrentIndex(editor->row(key));
            QCOMPARE(rowsOf(*editor->m_propModel).size(), 4);
            QCOMPARE(editor->passport("keylink"), QVariant(key));
        }
    }

    void aRowOfAnUnknownKindIsNotExpanded() {
        StartedCatalogue editor;
        editor->m_resModel->setData(editor->row("rlog", ResColumn::Type), 7);
        editor.view("tvRes")->setCurrentIndex(editor->row("rlog"));
        QCOMPARE(rowsOf(*editor->m_propModel).size(), 7);
        QCOMPARE(editor->passport("type").toString(), QString());
        QVERIFY(!editor.view("tvProp")->isExpanded(editor->m_propModel->index(0, 0)));
    }

    void aFileWithoutContentShowsTheCommonRows() {
        StartedCatalogue editor;
        editor.view("tvRes")->setCurrentIndex(editor->row("rmanual"));
        QCOMPARE(rowsOf(*editor->m_propModel).size(), 7);
        QVERIFY(editor.view("tvProp")->isExpanded(editor->m_propModel->index(0, 0)));
        // Only a look: nothing is missed.
        QCOMPARE(editor.host.failures, QStringList());
    }
};

QTEST_MAIN(TestResPassports)
#include "tst_res_passports.moc"
