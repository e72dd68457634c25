// Deleting folders at once, and resources after a question.
#include "tests/menu/Outage.h"
#include "tests/resources/WritingProbe.h"

using namespace orvo::test;

namespace {

constexpr char referenced[] =
    "Ошибка\nВыполнение операции невозможно, так как на ресурс есть ссылки из меню.";

orvo::store::FileToPut file(const char* path, const char* name, std::string_view bytes) {
    return {path, name, bytes, {}};
}

void put(const orvo::store::Status& status) {
    if (!status.ok())
        qFatal("not stored: %s", status.text.c_str());
}

/// An element of a menu that starts a resource.
void refer(TestStore& store, const char* resource) {
    store.insert("Menu", {{"KeyLink", "e" + QString(resource)},
                          {"FolderKey", QString("desck")},
                          {"caption", QString("Ссылка")},
                          {"MenuResourceKey", QString(resource)}});
}

/// With what was written and asked for since the editor stood there.
struct Deleting : Writing {
    explicit Deleting(Fill fill = nullptr) : Writing(fill) { forget(); }
    void forget() {
        written();
        host.writes().jobs.clear();
    }
    QStringList jobs() { return host.writes().jobs; }
    /// Asks to delete the current row and answers Yes.
    void confirm() {
        forget();
        editor->on_actDelete_triggered();
        if (box().isEmpty())
            qFatal("there is no question");
        answer(YesRole);
    }
    QStringList storedForms() {
        QStringList names;
        for (const char* form : {"Boiler", "Burner", "Drum"}) {
            std::vector<orvo::store::StoredFile> files;
            put(host.ownStore().formGet(form, false, &files));
            if (!files.empty())
                names << form;
        }
        return names;
    }
    QStringList storedFiles() {
        QStringList names;
        put(host.ownStore().fileArea(
            [&](const std::string& path, const orvo::store::StoredFile& stored) {
                names << QString::fromStdString(path + "/" + stored.name);
            }));
        names.sort();
        return names;
    }
};

void storeForms(TestStore& store) {
    const auto connection = store.connect();
    put(connection->formPut("Котлы", {file("", "Boiler", "b"), file("", "Boiler.png", "png")}));
    put(connection->formPut("Котлы", {file("", "Burner", "b")}));
    put(connection->formPut("", {file("", "Drum", "d")}));
}

void storeFiles(TestStore& store) {
    put(store.connect()->filePut({file("docs", "manual.txt", "m"), file("docs", "note.txt", "n"),
                                  file("docs/deep", "low.txt", "l"), file("", "readme.txt", "r")}));
}

} // namespace

class TestResDeletion : public QObject {
    Q_OBJECT
private slots:
    // Folders
    // Folders

    void anEmptyFolderIsDeletedAtOnce() {
        Deleting live;
        live.makeCurrent("alarms");
        QVERIFY(live.editor.action("actDelete")->isEnabled());
        live.editor.action("actDelete")->trigger();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString("MenuResourceFolder\n  -alarms\n"));
        QVERIFY(live->row("alarms").isValid());
        QVERIFY(orvo::seekKey(live->m_tabResFolder, "alarms"));
        live.deliver();
        QVERIFY(!live->row("alarms").isValid());
        QVERIFY(!orvo::seekKey(live->m_tabResFolder, "alarms"));
        QCOMPARE(live.currentKey(), QString("trends"));
    }

    void aFolderWithRowsOffersNoDeletion() {
        Deleting live;
        live.makeCurrent("trends");
        QVERIFY(!live.editor.action("actDelete")->isEnabled());
        live.makeCurrent("docs");
        QVERIFY(!live.editor.action("actDelete")->isEnabled());
    }

    void whatOthersPutIntoAFolderKeepsIt_data() {
        QTest::addColumn<QString>("what");
        QTest::addColumn<bool>("told");
        for (const char* what : {"resource", "folder"})
            for (const bool told : {true, false})
                QTest::addRow("%s %s", what, told ? "known here" : "not yet known here")
                    << what << told;
    }

    void whatOthersPutIntoAFolderKeepsIt() {
        QFETCH(QString, what);
        QFETCH(bool, told);
        Deleting live;
        live.makeCurrent("alarms");
        if (what == "resource")
            addItem(live.store, "late", 1, "alarms", "Late", "Позже");
        else
            addFolder(live.store, "late", 1, "alarms", "Позже"); // has no row before the next start
        if (told)
            live.deliver();
        QVERIFY(live.editor.action("actDelete")->isEnabled());
        live.editor.action("actDelete")->trigger();
        QCOMPARE(live.written(), QString());
        QVERIFY2(live.box().startsWith("Ошибка\nНе удалено: папка «Аварии» не пуста."),
                 qPrintable(live.box()));
        live.deliver();
        QVERIFY(orvo::seekKey(live->m_tabResFolder, "alarms"));
    }

    void anActionLeftSwitchedOnDeletesNoFullFolder_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("reason");
        dataRow("full", "trends", "Не удалено: папка «Тренды» не пуста");
        dataRow("of a kind", "frm", "Не удалено: папка «формы отображения» держит все ресурсы");
        dataRow("top row", "MenuResources", "Не удалено: папка «Ресурсы меню» держит все ресурсы");
    }

    void anActionLeftSwitchedOnDeletesNoFullFolder() {
        QFETCH(QString, folder);
        QFETCH(QString, reason);
        Deleting live;
        live.makeCurrent("rlog");
        live.type("caption", "Дневник");
        live.makeCurrent(qPrintable(folder)); // saves, and leaves the actions as they are
        QVERIFY(live.editor.action("actDelete")->isEnabled());
        live.forget();
        live.editor.action("actDelete")->trigger();
        QVERIFY2(live.box().contains(reason), qPrintable(live.box()));
        QCOMPARE(live.written(), QString());
    }

    void aFolderWithoutAStructureStays() {
        Deleting live;
        live.makeCurrent("alarms");
        const StructureOutage outage;
        live.editor.action("actDelete")->trigger();
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.box(), QString());
    }

    void aRefusedFolderStays() {
        Deleting live;
        live.makeCurrent("alarms");
        live.host.writes().refusedTable = "MenuResourceFolder";
        live.editor.action("actDelete")->trigger();
        live.deliver();
        QVERIFY(live->row("alarms").isValid());
        QCOMPARE(live.host.failures.size(), 1);
        QCOMPARE(live.box(), QString());
    }

    // The question
    // The question

    void theQuestion_data() {
        QTest::addColumn<QStringList>("selected");
        QTest::addColumn<QString>("question");
        const QString words =
            "Уведомление\nВы действительно хотите удалить выделенные элементы (%1) "
            "из списка %2";
        dataRow("module", QStringList("rlog"),
                words.arg("1", "ресурсов меню?\nБудет удалено: модуль «Журнал» "
                               "(Log)."));
        dataRow("function", QStringList("rcalc"),
                words.arg("1", "ресурсов меню?\nБудет удалено: функция «Расчёт» "
                               "(Calc)."));
        // Of several the current one goes, and is the one that stays selected.
        dataRow("modules", QStringList({"rlog", "rtable"}),
                words.arg("1", "ресурсов меню?\nБудет удалено: модуль «Архив» "
                               "(Table)."));
        dataRow("forms", QStringList({"rboiler", "rburner"}),
                words.arg("2", "ресурсов меню?\nформа «Котёл» (Boiler)\n"
                               "форма «Горелка» (Burner)"));
        dataRow("file", QStringList("rmanual"),
                words.arg("1", "системных ресурсов?\nфайл «Руководство» "
                               "(manual.txt)"));
        dataRow("orphan", QStringList("rlost"),
                words.arg("1", "ресурсов меню?\nформа «Потерянная» (Lost)"));
    }

    void theQuestion() {
        QFETCH(QStringList, selected);
        Deleting live;
        live.makeCurrent(qPrintable(selected.first()));
        for (const QString& key : selected)
            live.view()->selectionModel()->setCurrentIndex(live->row(qPrintable(key)),
                                                           QItemSelectionModel::Select |
                                                               QItemSelectionModel::Rows);
        live.editor.action("actDelete")->setEnabled(true);
        live.editor.action("actDelete")->trigger();
        QTEST(live.box(), "question");
        QVERIFY(boxButton(*live.editor.module, YesRole));
        QVERIFY(boxButton(*live.editor.module, NoRole));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.jobs(), QStringList());
    }

    void withoutACurrentRowThereIsNoQuestion() {
        Deleting live;
        live.makeCurrent("rlog");
        live->m_currentKey = "nosuch";
        live->on_actDelete_triggered();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString());
    }

    void aNegativeAnswerLeavesNothingSelected() {
        Deleting live;
        live.select({"rlog", "rtable"});
        live.editor.action("actDelete")->trigger();
        live.answer(NoRole);
        QCOMPARE(live.box(), QString());
        QVERIFY(!live.view()->selectionModel()->hasSelection());
        QCOMPARE(live.currentKey(), QString("rtable"));
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.jobs(), QStringList());
    }

    void aClosedBoxIsANegativeAnswer() {
        Deleting live;
        live.select({"rlog"});
        live.editor.action("actDelete")->trigger();
        live->removeResourceMessage(nullptr);
        QCOMPARE(live.box(), QString());
        QVERIFY(!live.view()->selectionModel()->hasSelection());
        QCOMPARE(live.written(), QString());
    }

    void whatIsCurrentThenCounts() {
        Deleting live;
        live.makeCurrent("rlog");
        live.editor.action("actDelete")->trigger();
        live.makeCurrent("rcalc");
        live.answer(YesRole);
        QCOMPARE(live.written(), QString("MenuResource\n  -rcalc\n"));
    }

    void aRowThatIsGoneIsLeft() {
        Deleting live;
        live.makeCurrent("rlog");
        live.editor.action("actDelete")->trigger();
        live->m_currentKey = "nosuch";
        live.answer(YesRole);
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.jobs(), QStringList());
    }

    void aRowWithoutAKindIsLeft() {
        Deleting live;
        for (const char* key : {"MenuResources", "WrongFolder"}) {
            live.makeCurrent("rlog");
            live.editor.action("actDelete")->trigger();
            live.makeCurrent(key);
            live.answer(YesRole);
            QCOMPARE(live.written(), QString());
            QCOMPARE(live.jobs(), QStringList());
        }
    }

    // Modules and functions
    // Modules and functions

    void aModuleIsDeleted() {
        Deleting live;
        live.makeCurrent("rlog");
        live.confirm();
        QCOMPARE(live.jobs(), QStringList("look up Menu MenuResourceKey rlog"));
        QCOMPARE(live.written(), QString("MenuResource\n  -rlog\n"));
        QCOMPARE(live.box(), QString());
        QVERIFY(live->row("rlog").isValid());
        live.deliver();
        QVERIFY(!live->row("rlog").isValid());
        QVERIFY(!orvo::seekKey(live->m_tabResource, "rlog"));
        QCOMPARE(live.currentKey(), QString("rtable"));
    }

    void aFunctionIsDeleted() {
        Deleting live;
        live.makeCurrent("rcalc");
        live.confirm();
        QCOMPARE(live.written(), QString("MenuResource\n  -rcalc\n"));
        live.deliver();
        QCOMPARE(live.currentKey(), QString("calc"));
    }

    void ofSeveralModulesTheCurrentOneIsDeleted() {
        Deleting live([](TestStore& store) {
            addItem(store, "rextra", 1, "mod", "Extra", "Ещё");
            refer(store, "rlog"); // selected, not current
        });
        live.select({"rlog", "rextra", "rtable"});
        live.editor.action("actDelete")->trigger();
        QVERIFY2(live.box().contains("элементы (1) из"), qPrintable(live.box()));
        QCOMPARE(live->m_popMessageBox->subjectKeys(), QStringList("rtable"));
        const QModelIndexList rows = live.view()->selectionModel()->selectedRows();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first(), live->row("rtable"));
        live.confirm();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.jobs(), QStringList("look up Menu MenuResourceKey rtable"));
        QCOMPARE(live.written(), QString("MenuResource\n  -rtable\n"));
    }

    void aModuleThatMenusReferToStays() {
        Deleting live([](TestStore& store) { refer(store, "rlog"); });
        live.makeCurrent("rlog");
        live.confirm();
        QVERIFY(live.box().startsWith(referenced));
        QCOMPARE(live.host.logLines.last().text,
                 QString("модуль «Журнал» (Log): ссылаются элементы меню: «Ссылка»"));
        QCOMPARE(live.written(), QString());
        live->on_common_error_message(nullptr);
        QCOMPARE(live.box(), QString());
        // Another client takes the reference away.
        live.store.remove("Menu", "erlog");
        live.confirm();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString("MenuResource\n  -rlog\n"));
    }

    void aModuleWithoutAStructureStays() {
        Deleting live;
        live.makeCurrent("rlog");
        const StructureOutage outage;
        live.confirm();
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.box(), QString());
    }

    void aRefusedModuleStays() {
        Deleting live;
        live.makeCurrent("rlog");
        live.host.writes().refusedTable = "MenuResource";
        live.confirm();
        live.deliver();
        QVERIFY(live->row("rlog").isValid());
        QCOMPARE(live.box(), QString());
    }

    // Forms
    // Forms

    void theSelectedFormsAreDeleted() {
        Deleting live(storeForms);
        live.select({"rboiler", "rburner"});
        live.confirm();
        QCOMPARE(live.jobs(), QStringList({"look up Menu MenuResourceKey rboiler",
                                           "look up Menu MenuResourceKey rburner",
                                           "delete forms Boiler Burner"}));
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.written(), QString());
        QCOMPARE(live.storedForms(), QStringList("Drum"));
        QVERIFY(live->row("rboiler").isValid());
        live.deliver();
        QVERIFY(!live->row("rboiler").isValid());
        QVERIFY(!live->row("rburner").isValid());
        QVERIFY(live->row("rdrum").isValid());
        QCOMPARE(live.host.failures, QStringList());
    }

    void aFormThatMenusReferToIsDeletedAllTheSame() {
        Deleting live([](TestStore& store) {
            storeForms(store);
            refer(store, "rburner");
        });
        live.select({"rburner"});
        live.confirm();
        QVERIFY(live.box().startsWith(referenced));
        QCOMPARE(live.jobs().last(), QString("delete forms Burner"));
        QCOMPARE(live.storedForms(), QStringList({"Boiler", "Drum"}));
        live.deliver();
        QVERIFY(!live->row("rburner").isValid());
        QVERIFY(live.box().startsWith(referenced));
        // The words that it has to have deny what is done: below them stands what is.
        QVERIFY2(live.box().contains("Форма «Горелка» (Burner) всё же удаляется") &&
                     live.box().contains("«Отменить»"),
                 qPrintable(live.box()));
    }

    void theFirstReferenceEndsTheSearch() {
        Deleting live([](TestStore& store) {
            storeForms(store);
            addItem(store, "rpipe", 3, "boilers", "Pipe", "Труба");
            refer(store, "rburner");
        });
        live.select({"rboiler", "rburner", "rpipe"});
        live.confirm();
        QVERIFY(live.box().startsWith(referenced));
        QCOMPARE(live.jobs(), QStringList({"look up Menu MenuResourceKey rboiler",
                                           "look up Menu MenuResourceKey rburner",
                                           "delete forms Boiler Burner Pipe"}));
    }

    void whatIsNotHighlightedIsHighlightedBeforeTheQuestion() {
        Deleting live(storeForms);
        live.makeCurrent("rboiler");
        live.editor.action("actDelete")->trigger();
        live.answer(NoRole); // leaves nothing selected
        live.editor.action("actDelete")->trigger();
        QVERIFY(live.box().contains(" (1) "));
        QVERIFY(live.box().endsWith("форма «Котёл» (Boiler)"));
        QVERIFY(live.view()->selectionModel()->isRowSelected(live.current().row(),
                                                             live.current().parent()));
        live.answer(YesRole);
        QCOMPARE(live.jobs().last(), QString("delete forms Boiler"));
    }

    void aRowThatIsCurrentAndNotHighlightedIsNotDeleted_data() {
        QTest::addColumn<QString>("clicked");
        dataRow("another folder's", "rtrend");
        dataRow("of another kind", "rcalc");
        dataRow("a folder", "alarms");
    }

    void aRowThatIsCurrentAndNotHighlightedIsNotDeleted() {
        QFETCH(QString, clicked);
        Deleting live;
        live.view()->expandAll();
        clickRow(live.view(), live->row("rlog"));
        clickRow(live.view(), live->row(qPrintable(clicked)), Qt::ControlModifier);
        QCOMPARE(live.currentKey(), clicked);
        QVERIFY(live.view()->selectionModel()->isRowSelected(live->row("rlog").row(),
                                                             live->row("mod")));
        live.editor.action("actDelete")->setEnabled(true);
        live.editor.action("actDelete")->trigger();
        QVERIFY2(live.box().endsWith("(1) из списка ресурсов меню?\nБудет удалено: модуль «Журнал» "
                                     "(Log)."),
                 qPrintable(live.box()));
        live.answer(YesRole);
        QCOMPARE(live.written(), QString("MenuResource\n  -rlog\n"));
    }

    void ofTwoFormsOfOneNameTheHighlightedOneGoes() {
        Deleting live([](TestStore& store) {
            storeForms(store);
            addItem(store, "rtwin", 3, "old", "Boiler", "Старый котёл");
        });
        for (const char* key : {"rtwin", "rboiler"}) {
            live.makeCurrent(key);
            live.confirm();
            QVERIFY(!live.jobs().join(' ').contains(key == QString("rtwin") ? "delete" : "rtwin"));
            live.deliver();
            QVERIFY(!live->row(key).isValid());
            if (key == QString("rtwin"))
                QCOMPARE(live.storedForms(), QStringList({"Boiler", "Burner", "Drum"}));
        }
        QCOMPARE(live.storedForms(), QStringList({"Burner", "Drum"}));
    }

    // Files
    // Files

    void theSelectedFilesAreDeleted() {
        Deleting live(storeFiles);
        QVERIFY(findRow(*live->m_resModel, "note.txt", ResColumn::Name).isValid());
        live.makeCurrent("rmanual");
        live.view()->selectionModel()->setCurrentIndex(
            findRow(*live->m_resModel, "note.txt", ResColumn::Name),
            QItemSelectionModel::Select | QItemSelectionModel::Rows);
        live.confirm();
        QCOMPARE(live.jobs(), QStringList("delete files docs/manual.txt docs/note.txt"));
        QCOMPARE(live.storedFiles(), QStringList({"/readme.txt", "docs/deep/low.txt"}));
        QVERIFY(live->row("rmanual").isValid());
        live.deliver();
        QVERIFY(!live->row("rmanual").isValid());
        QVERIFY(!findRow(*live->m_resModel, "note.txt", ResColumn::Name).isValid());
        // Deeper, the path is longer.
        live.makeCurrent(findRow(*live->m_resModel, "low.txt", ResColumn::Name));
        live.confirm();
        QCOMPARE(live.jobs(), QStringList("delete files docs/deep/low.txt"));
        QCOMPARE(live.host.failures, QStringList());
    }

    void aFileAtTheTopIsDeleted() {
        Deleting live(storeFiles);
        live.makeCurrent("rreadme");
        live.confirm();
        QCOMPARE(live.jobs(), QStringList("delete files /readme.txt"));
        QVERIFY(!live.storedFiles().contains("/readme.txt"));
        live.deliver();
        QVERIFY(!live->row("rreadme").isValid());
    }

    void filesAreDeletedWhateverMenusReferTo() {
        Deleting live([](TestStore& store) {
            storeFiles(store);
            refer(store, "rmanual");
        });
        live.makeCurrent("rmanual");
        live.confirm();
        QCOMPARE(live.box(), QString());
        QCOMPARE(live.jobs(), QStringList("delete files docs/manual.txt"));
    }
};

QTEST_MAIN(TestResDeletion)
#include "tst_res_deletion.moc"
