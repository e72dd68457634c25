// The operator's desktop over a real store: what it shows, how it follows, what it asks the host
// for.
#include "tests/desk/DeskFixture.h"

#include <QLineEdit>
#include <QRandomGenerator>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSettings>
#include <QStackedWidget>
#include <QTextDocument>

using namespace orvo::test;

class TestDesk : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
    }

    void aDesktopIsFoundByKeyPathOrCaption_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("why");
        QTest::newRow("key") << "d"
                             << "";
        QTest::newRow("key in another case") << "D"
                                             << "";
        QTest::newRow("path") << "участок 1 / КС-3"
                              << "";
        QTest::newRow("path without blanks") << "Участок 1/КС-3"
                                             << "";
        QTest::newRow("caption") << "кс-3"
                                 << "";
        QTest::newRow("caption of two, path of one") << "Участок 1/КС-4"
                                                     << "d3";
        QTest::newRow("caption of a desktop that is a path too") << "КС-4"
                                                                 << "d2";
        QTest::newRow("nothing") << "КС-5"
                                 << "Рабочего стола «КС-5» нет.";
        QTest::newRow("a folder") << "f"
                                  << "Рабочего стола «f» нет.";
        QTest::newRow("empty") << ""
                               << "Рабочего стола «» нет.";
    }
    void aDesktopIsFoundByKeyPathOrCaption() {
        QFETCH(QString, name);
        QFETCH(QString, why);
        Desk desk;
        const bool refused = why.endsWith('.');
        QCOMPARE(desk.start(name.toUtf8()), !refused);
        QCOMPARE(desk.notice(), refused ? why : QString());
        if (refused)
            QVERIFY(desk.host->logLines.last().text.contains(why));
        else if (why.isEmpty())
            QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
    }

    void theMenuIsShownAsItsElementsSay() {
        Desk desk;
        QVERIFY(desk.start());
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
        QCOMPARE(desk.title(), QString("КС-3"));
        QVERIFY(!desk.view().isExpanded(desk.row("e1")));
        QVERIFY(desk.row("e2").data(DeskModel::SeparatorRole).toBool());
        QCOMPARE(desk.row("e1").data(Qt::DecorationRole).value<QIcon>().actualSize({24, 24}),
                 QSize(24, 24));
        const int plain = desk.view().visualRect(desk.row("e1")).height();
        QVERIFY(plain >= 44);
        QVERIFY(desk.view().visualRect(desk.row("e2")).height() > plain);
        QCOMPARE(desk.host->writes().calls.size(), 0);
    }

    void itReadsItsOwnDesktopAndNothingElse() {
        Desk desk;
        for (int i = 0; i < 50; ++i)
            addElement(desk.store, qPrintable(QString("x%1").arg(i + 10)), nullptr, "Чужое", i,
                       nullptr, "d2");
        desk.reopen();
        QVERIFY(desk.start());
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
    }

    void aClickOpensFoldersAndLaunchesElements() {
        Desk desk;
        QVERIFY(desk.start());
        const auto click = [&](const char* key) { clickRow(&desk.view(), desk.row(key)); };
        click("e1");
        QVERIFY(desk.view().isExpanded(desk.row("e1")));
        QVERIFY(desk.host->launched.empty());
        click("e2");
        QCOMPARE(desk.host->launched.size(), size_t(1));
        const orvo::LaunchRequest& trends = desk.host->launched[0];
        QCOMPARE(trends.key, QString("e2"));
        QCOMPARE(trends.caption, QString("Тренды"));
        QCOMPARE(trends.kind, 1);
        QCOMPARE(trends.name, QString("Trends"));
        QCOMPARE(trends.params, QString("scale=2"));
        QVERIFY(trends.oneCopy);
        click("e2"); // the second half of a double click
        QCOMPARE(desk.host->launched.size(), size_t(1));
        click("e4");
        click("e6");
        QCOMPARE(desk.host->launched.size(), size_t(2));
        QCOMPARE(desk.host->launched[1].kind, 4);
        QCOMPARE(desk.host->launched[1].path, QString("Документы/Схемы"));
        QCOMPARE(desk.host->launched[1].name, QString("plan.pdf"));
    }

    void everythingIsReachedByKeys() {
        Desk desk;
        QVERIFY(desk.start());
        DeskView& view = desk.view();
        view.setFocus();
        view.setCurrentIndex(desk.row("e1"));
        QTest::keyClick(&view, Qt::Key_Right);
        QTest::keyClick(&view, Qt::Key_Down);
        QTest::keyClick(&view, Qt::Key_Return);
        QCOMPARE(desk.host->launched.size(), size_t(1));
        QCOMPARE(desk.host->launched[0].key, QString("e3"));
        // Letters go to the search, arrows from there to what it found.
        auto* search = desk.module->child<QLineEdit>("deskSearch");
        auto* hits = desk.module->child<ElementList>("deskHits");
        QTest::keyClicks(&view, "p");
        QTRY_VERIFY(search->hasFocus());
        search->setText(QString::fromUtf8("еще сброс")); // ё as е, words in any order
        QCOMPARE(hits->count(), 1);
        search->setText(QString::fromUtf8("агрегаты"));
        QCOMPARE(hits->count(), 3);
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(search, Qt::Key_Return);
        QTRY_COMPARE(desk.host->launched.size(), size_t(2));
        QCOMPARE(desk.host->launched[1].key, QString("e5"));
        QVERIFY(search->text().isEmpty());
        QTest::keyClicks(search, "[.*(");
        QCOMPARE(desk.module->child<QStackedWidget>("")->currentWidget()->objectName(),
                 QString("deskNothing"));
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(search->text().isEmpty());
        QVERIFY(view.hasFocus());
    }

    void whatWasUsedLastIsAtHand() {
        Desk desk;
        QVERIFY(desk.start());
        auto* recent = desk.module->child<ElementList>("deskRecent");
        const int before = recent->count(); // of earlier cases on this desktop
        (*desk.module)->launch("e5");
        (*desk.module)->launch("e2");
        QVERIFY(recent->isVisible());
        QVERIFY(recent->count() >= before);
        QCOMPARE(recent->model()->index(0, 0).data().toString(), QString("Тренды"));
        QCOMPARE(recent->model()->index(1, 0).data().toString(), QString("Сброс счётчика"));
        desk.store.remove("Menu", "e5");
        desk.deliver();
        for (int i = 0; i < recent->count(); ++i)
            QVERIFY(recent->model()->index(i, 0).data().toString() != "Сброс счётчика");
        desk.reopen();
        QVERIFY(desk.start());
        recent = desk.module->child<ElementList>("deskRecent");
        QCOMPARE(recent->model()->index(0, 0).data().toString(), QString("Тренды"));
    }

    void textsOfTheStoreAreShownAsTheyAre() {
        const QString text = QString::fromUtf8("<b>Тренды</b> & \"всё\"");
        Desk desk;
        desk.store.update("Menu", {{"KeyLink", "e2"}, {"caption", text}});
        desk.store.update("Menu", {{"KeyLink", "e6"}, {"MenuResourceKey", text}});
        addElement(desk.store, "long", nullptr, "", 3000, "rm");
        desk.store.update("Menu", {{"KeyLink", "long"}, {"caption", QString(1'000'000, 'W')}});
        QVERIFY(desk.start());
        const auto shown = [](const QModelIndex& row) {
            const QString tip = row.data(Qt::ToolTipRole).toString();
            QTextDocument document;
            document.setHtml(tip);
            return Qt::mightBeRichText(tip) ? document.toPlainText() : tip;
        };
        for (const char* key : {"e2", "long"})
            (*desk.module)->launch(QString::fromUtf8(key));
        auto* recent = desk.module->child<ElementList>("deskRecent");
        QCOMPARE(recent->model()->index(1, 0).data().toString(), text);
        QCOMPARE(shown(recent->model()->index(1, 0)), text);
        desk.module->child<QLineEdit>("deskSearch")->setText(QString::fromUtf8("тренды"));
        auto* hits = desk.module->child<ElementList>("deskHits");
        QCOMPARE(hits->count(), 1);
        QCOMPARE(shown(hits->model()->index(0, 0)), text);
        const QModelIndex broken = desk.row("e6");
        QVERIFY(!shown(broken).isEmpty());
        QCOMPARE(shown(broken), DeskModel::value(broken, DeskColumn::Note).toString());
        QVERIFY(shown(recent->model()->index(0, 0)).size() < 3000);
    }

    void aRefusalIsShownAndLogged() {
        Desk desk;
        QVERIFY(desk.start());
        desk.host->refusal = QString::fromUtf8("модуля <b>Trends</b> здесь нет");
        (*desk.module)->launch("e2");
        QCOMPARE(desk.notice(), QString("Тренды: модуля <b>Trends</b> здесь нет"));
        QCOMPARE(desk.host->logLines.last().text, desk.notice());
        desk.host->refusal.clear();
        (*desk.module)->launch("e2");
        QCOMPARE(desk.notice(), QString());
    }

    void whatOthersChangeShowsAtOnceAndMovesNothingElse() {
        Desk desk;
        QVERIFY(desk.start());
        desk.view().expand(desk.row("e1"));
        desk.view().expand(desk.row("e4"));
        desk.view().setCurrentIndex(desk.row("e5"));
        desk.store.update("Menu", {{"KeyLink", "e5"}, {"caption", "Сброс"}});
        addElement(desk.store, "e0", nullptr, "Обзор", 500, "rs");
        desk.store.update("Menu", {{"KeyLink", "e1"}, {"order_", 9000}}); // its row is made anew
        desk.deliver();
        QCOMPARE(desk.tree(), QString("Обзор #e0\nТренды #e2\nАгрегаты #e1\n  Насос №1 #e3\n"
                                      "  Ещё #e4\n    Сброс #e5\n    План цеха #e6\n"));
        QVERIFY(desk.view().isExpanded(desk.row("e1")));
        QVERIFY(desk.view().isExpanded(desk.row("e4")));
        QCOMPARE(desk.view().currentIndex(), desk.row("e5"));
        QCOMPARE(desk.host->launched.size(), size_t(0));
    }

    void elementsComeFromOtherDesktopsAndGoThere() {
        Desk desk;
        QVERIFY(desk.start());
        desk.store.update("Menu", {{"KeyLink", "e2"}, {"FolderKey", "d2"}});
        desk.store.update("Menu", {{"KeyLink", "x1"}, {"FolderKey", "d"}});
        desk.deliver();
        QCOMPARE(desk.tree(), QString("Агрегаты #e1\n  Насос №1 #e3\n  Ещё #e4\n"
                                      "    Сброс счётчика #e5\n    План цеха #e6\nЧужое #x1\n"));
    }

    void aResourceThatGoesOrComesIsSeen() {
        Desk desk;
        QVERIFY(desk.start());
        desk.store.update("MenuResource", {{"KeyLink", "rm"}, {"name_", "Trends2"}});
        desk.deliver();
        (*desk.module)->launch("e2");
        QCOMPARE(desk.host->launched.back().name, QString("Trends2"));
        desk.store.sql("DELETE FROM \"MenuResource\" WHERE \"KeyLink\" = 'rm'");
        desk.deliver();
        QVERIFY(desk.row("e2").data(DeskModel::BrokenRole).toBool());
        (*desk.module)->launch("e2");
        QCOMPARE(desk.host->launched.size(), size_t(1));
        QCOMPARE(desk.notice(), QString("Тренды: Ресурс этого элемента удалён."));
        addResource(desk.store, "rm", 1, "Trends3");
        desk.deliver();
        QVERIFY(!desk.row("e2").data(DeskModel::BrokenRole).toBool());
    }

    void whatTheServerDoesNotAnswerStaysAsItWasUntilItDoes() {
        Desk desk;
        QVERIFY(desk.start());
        desk.view().expand(desk.row("e1"));
        desk.store.update("MenuResource", {{"KeyLink", "rm"}, {"name_", "Trends2"}});
        desk.store.update("Menu", {{"KeyLink", "x1"}, {"FolderKey", "d"}});
        {
            const QScopedValueRollback<COrvoCliSes*> away(desk.host->m_session, nullptr);
            desk.deliver();
        }
        QVERIFY(!desk.row("e2").data(DeskModel::BrokenRole).toBool());
        QVERIFY(!desk.row("x1").isValid());
        (*desk.module)->ModSesReconnect();
        (*desk.module)->launch("e2");
        QCOMPARE(desk.host->launched.back().name, QString("Trends2"));
        QVERIFY(desk.row("x1").isValid());
        QVERIFY(desk.view().isExpanded(desk.row("e1")));
    }

    void aFolderThatBecomesAnElementLosesItsRowsAndBack() {
        Desk desk;
        QVERIFY(desk.start());
        desk.store.update("Menu", {{"KeyLink", "e4"}, {"MenuResourceKey", "rm"}});
        desk.deliver();
        QCOMPARE(desk.tree(), QString("Агрегаты #e1\n  Насос №1 #e3\n  Ещё #e4\nТренды #e2\n"));
        desk.store.update("Menu", {{"KeyLink", "e4"}, {"MenuResourceKey", QString()}});
        desk.deliver();
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
    }

    void aDesktopThatIsRenamedOrDeletedStaysInSight() {
        Desk desk;
        QVERIFY(desk.start());
        desk.store.update("MenuFolder", {{"KeyLink", "d"}, {"caption", "КС-3 Белый Мыс"}});
        desk.deliver();
        QCOMPARE(desk.title(), QString("КС-3 Белый Мыс"));
        QCOMPARE(desk.notice(), QString("Рабочий стол теперь называется «КС-3 Белый Мыс»."));
        desk.store.update("MenuFolder", {{"KeyLink", "d"}, {"ParentKey", QVariant()}});
        desk.deliver();
        QCOMPARE(desk.notice(), QString("Рабочий стол теперь в другой папке."));
        desk.store.sql("DELETE FROM \"MenuFolder\" WHERE \"KeyLink\" = 'd'");
        desk.deliver();
        QVERIFY(desk.notice().contains("удалён"));
        desk.store.sql("DELETE FROM \"Menu\" WHERE \"KeyLink\" = 'e3'");
        desk.deliver();
        (*desk.module)->launch("e2");
        QVERIFY(desk.notice().contains("удалён"));
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
        addDesktop(desk.store, "d", "f", "КС-3");
        desk.deliver();
        QCOMPARE(desk.notice(), QString());
        QVERIFY(!desk.tree().contains("#e3"));
    }

    void whatTheHostHasToSayStandsBelowTheMenu() {
        Desk desk;
        QVERIFY(desk.start());
        (*desk.module)->slot_modNotify("notice", "<b>повреждён</b>");
        QCOMPARE(desk.notice(), QString("<b>повреждён</b>"));
        (*desk.module)->launch("e2");
        QCOMPARE(desk.notice(), QString());
    }

    void anIconThatIsNoPictureGivesWayToThatOfItsKind() {
        Desk desk;
        for (const char* key : {"a1", "a2"})
            addElement(desk.store, key, nullptr, "Схема", key[1] * 10, "rs");
        desk.store.update("Menu", {{"KeyLink", "a1"}, {"ico", "none.png"}});
        QVERIFY(desk.start());
        desk.module->module->show();
        desk.view().setCurrentIndex(desk.row("e1"));
        const auto picture = [&](const char* key) {
            const QRect row = desk.view().visualRect(desk.row(key));
            return desk.view()
                .viewport()
                ->grab({row.left(), row.center().y() - 12, 30, 24})
                .toImage();
        };
        QTRY_COMPARE(picture("a1"), picture("a2"));
    }

    void aCircleOfParentsIsNotShown() {
        Desk desk;
        QVERIFY(desk.start());
        desk.store.moveBelow("Menu", "parent", "e1", "e4");
        desk.deliver();
        QCOMPARE(desk.tree(), QString("Тренды #e2\n"));
        desk.reopen();
        QVERIFY(desk.start());
        QCOMPARE(desk.tree(), QString("Тренды #e2\n"));
        desk.store.moveBelow("Menu", "parent", "e1", QString());
        desk.deliver();
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
    }

    void theSearchFollowsTheMenu() {
        Desk desk;
        QVERIFY(desk.start());
        auto* search = desk.module->child<QLineEdit>("deskSearch");
        auto* hits = desk.module->child<ElementList>("deskHits");
        search->setText(QString::fromUtf8("насос"));
        QCOMPARE(hits->count(), 1);
        addElement(desk.store, "e9", nullptr, "Насос №2", 3000, "rs");
        desk.deliver();
        QCOMPARE(hits->count(), 2);
        desk.store.remove("Menu", "e3");
        desk.deliver();
        QCOMPARE(hits->count(), 1);
    }

    void afterAnyChangesTheTreeIsThatOfAFreshStart_data() {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed : {1u, 7u, 23u})
            QTest::addRow("seed %u", seed) << seed;
    }
    void afterAnyChangesTheTreeIsThatOfAFreshStart() {
        QFETCH(quint32, seed);
        Desk desk;
        QVERIFY(desk.start());
        QRandomGenerator random(seed);
        QStringList keys{"e1", "e2", "e3", "e4", "e5", "e6"};
        const auto any = [&] { return keys[int(random.bounded(quint32(keys.size())))]; };
        for (int step = 0; step < 120; ++step) {
            const QString key = any();
            switch (random.bounded(6u)) {
            case 0: {
                const QString parent = random.bounded(2u) ? any() : QString();
                keys << QString("n%1").arg(step);
                addElement(desk.store, qPrintable(keys.last()),
                           parent.isEmpty() ? nullptr : qPrintable(parent), "Новый",
                           int(random.bounded(10u)) * 500, random.bounded(2u) ? "rm" : nullptr);
            } break;
            case 1:
                if (keys.size() > 4) {
                    desk.store.sql(qPrintable(
                        QString("DELETE FROM \"Menu\" WHERE \"KeyLink\" = '%1'").arg(key)));
                    keys.removeAll(key);
                }
                break;
            case 2:
                desk.store.moveBelow("Menu", "parent", key, random.bounded(3u) ? any() : QString());
                break;
            case 3:
                desk.store.update(
                    "Menu", {{"KeyLink", key},
                             {"MenuResourceKey", random.bounded(2u) ? QString("rm") : QString()}});
                break;
            case 4:
                desk.store.update(
                    "Menu", {{"KeyLink", key}, {"FolderKey", random.bounded(4u) ? "d" : "d2"}});
                break;
            default:
                desk.store.update("Menu",
                                  {{"KeyLink", key}, {"order_", int(random.bounded(10u)) * 500}});
            }
            if (random.bounded(3u) == 0)
                desk.deliver();
            if (const char* broken = static_cast<DeskModel&>(desk.model()).check())
                QFAIL(broken);
        }
        desk.deliver();
        const QString followed = desk.tree();
        desk.reopen();
        QVERIFY(desk.start());
        QCOMPARE(followed, desk.tree());
    }

    void aPreviewMarksWhatOperatorsCouldNotOpen() {
        Desk desk;
        (*desk.module)->SetParamMod("preview", "1");
        desk.host->missing = QStringList{"Reset"};
        QVERIFY(desk.start());
        QVERIFY(desk.title().contains("КС-3") && desk.title() != "КС-3");
        QVERIFY(desk.row("e5").data(DeskModel::BrokenRole).toBool());
        QVERIFY(desk.row("e5").data(Qt::ToolTipRole).toString().contains("Reset is missing"));
        QVERIFY(!desk.row("e2").data(DeskModel::BrokenRole).toBool());
        desk.store.update("MenuResource", {{"KeyLink", "rf"}, {"name_", "Reset2"}});
        desk.deliver();
        QVERIFY(!desk.row("e5").data(DeskModel::BrokenRole).toBool());
    }

    void aPreviewShowsTheOpenEditUntilItEnds() {
        Desk desk;
        QVERIFY(desk.start());
        const auto edit = [&](const char* key, bool isNew, const QVariantMap& values) {
            (*desk.module)
                ->slot_modNotify("edit",
                                 QVariantMap{{"key", key}, {"isNew", isNew}, {"values", values}});
        };
        edit("e2", false, {{"caption", "Графики"}, {"separator", false}});
        QVERIFY(desk.tree().contains("Графики (не сохранено) #e2"));
        QVERIFY(!desk.row("e2").data(DeskModel::SeparatorRole).toBool());
        (*desk.module)->launch("e2");
        QCOMPARE(desk.host->launched.back().caption, QString("Графики"));
        desk.store.update("Menu", {{"KeyLink", "e2"}, {"params", "scale=3"}}); // another's change
        desk.deliver();
        QVERIFY(desk.tree().contains("Графики (не сохранено) #e2"));
        edit("", false, {});
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));

        const QVariantMap folder{{"caption", "Новая"}, {"parent", "e1"}, {"order_", 1500}};
        edit("n1", true, folder);
        QVERIFY2(desk.tree().contains("  Новая (не сохранено) #n1\n  Ещё #e4"),
                 qPrintable(desk.tree()));
        edit("", false, {});
        QCOMPARE(desk.tree(), QString::fromUtf8(plantTree));
        edit("n1", true, folder);
        addElement(desk.store, "n1", "e1", "Новая", 1500); // it is saved
        desk.deliver();
        edit("", false, {});
        QVERIFY(desk.tree().contains("  Новая #n1\n"));
    }

    void aPreviewFollowsToAnotherDesktop() {
        Desk desk;
        (*desk.module)->SetParamMod("preview", "1");
        QVERIFY(desk.start());
        (*desk.module)->slot_modNotify("desktop", "d2");
        QCOMPARE(desk.tree(), QString("Чужое #x1\n"));
        addElement(desk.store, "x2", nullptr, "Второе", 2000, "rm", "d2");
        addElement(desk.store, "e9", nullptr, "Девятое", 2000, "rm", "d");
        desk.deliver();
        QCOMPARE(desk.tree(), QString("Чужое #x1\nВторое #x2\n"));
        (*desk.module)->slot_modNotify("desktop", "nothing");
        QVERIFY(!desk.notice().isEmpty());
        QCOMPARE(desk.tree(), QString("Чужое #x1\nВторое #x2\n"));
    }

private:
    QTemporaryDir m_settings;
};

QTEST_MAIN(TestDesk)
#include "tst_desk.moc"
