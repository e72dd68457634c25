// Every verb on every kind of store.
#include "AdminTest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

class TestAdminStores : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

private slots:
    void initAgainChangesNothing() {
        const QByteArray before = content();
        const AdminResult again = run({"init"});
        QCOMPARE(again.code, 0);
        QVERIFY(again.out.startsWith("хранилище уже есть: "));
        QCOMPARE(content(), before);
    }

    void aDroppedTriggerIsNamedByCheckAndMadeAgainByInit() {
        QVERIFY(m_kind.byHand(isPostgres() ? "DROP TRIGGER \"updated\" ON \"Menu\";"
                                           : "DROP TRIGGER \"Menu.updated\";"));
        const QString named =
            isPostgres() ? "Нет триггера updated таблицы Menu" : "Нет триггера Menu.updated";
        const AdminResult check = run({"check"});
        QCOMPARE(check.code, 1);
        QVERIFY2(check.out.contains(named), qPrintable(check.out));
        const AdminResult made = run({"init"});
        QCOMPARE(made.code, 0);
        QVERIFY2(made.out.contains("исправлено: " + named), qPrintable(made.out));
        QCOMPARE(run({"check"}).code, 0);
        QVERIFY(!run({"init"}).out.contains("исправлено"));
    }

    void theDemonstrationIsSoundAndTheSameInEveryStore() {
        ORVO_DONE(run({"demo"}));
        const AdminResult check = run({"check"});
        QCOMPARE(check.code, 0);
        QVERIFY2(check.out.contains("ошибок: 0, замечаний: 1,"), qPrintable(check.out));
        ORVO_REFUSED(run({"demo"}), "уже есть данные");
        QVERIFY(m_other.renew());
        ORVO_DONE(runOn(m_other, {"init"}));
        ORVO_DONE(runOn(m_other, {"demo"}));
        QCOMPARE(runOn(m_other, {"list", "forms"}).out, run({"list", "forms"}).out);
        QCOMPARE(runOn(m_other, {"list", "files"}).out, run({"list", "files"}).out);
        QVERIFY(run({"list", "files"}).lines().size() > 10);
    }

    void usersAreAddedOnceAndListed() {
        ORVO_DONE(run({"user", "add", "petrov_t", "--last", "Петров", "--first", "Пётр"}));
        ORVO_REFUSED(run({"user", "add", "PETROV_T"}), "уже есть");
        QCOMPARE(run({"user", "list"}).out, QString("petrov_t\tПетров Пётр\tчеловек\n"));
    }

    void usersAreChanged() {
        ORVO_DONE(run({"user", "add", "petrov_t", "--last", "Петров", "--first", "Пётр"}));
        ORVO_DONE(run({"user", "change", "Petrov_T", "--last", "Ильин", "--middle", "Ильич"}));
        QCOMPARE(run({"user", "list"}).out, QString("petrov_t\tИльин Пётр Ильич\tчеловек\n"));
        ORVO_DONE(run({"user", "change", "petrov_t", "--program", "--first", ""}));
        QCOMPARE(run({"user", "list"}).out, QString("petrov_t\tИльин Ильич\tпрограмма\n"));
        ORVO_DONE(run({"user", "change", "petrov_t", "--person"}));
        ORVO_REFUSED(run({"user", "change", "petrov_t"}), "не сказано, что изменить");
        ORVO_REFUSED(run({"user", "change", "petrov_t", "--person", "--program"}), "не оба");
        ORVO_REFUSED(run({"user", "change", "petrof_t", "--last", "А"}), "может быть, «petrov_t»?");
        ORVO_REFUSED(run({"user", "change", "petrov_t", "--last", "李"}), "Windows-1251");
        QCOMPARE(run({"user", "list"}).out, QString("petrov_t\tИльин Ильич\tчеловек\n"));
        if (!isPostgres())
            ORVO_REFUSED(run({"user", "change", "petrov_t", "--viewer"}), "паролей и прав");
    }

    void aUserWhoIsRemovedLeavesNoLock() {
        ORVO_DONE(run({"put", "form", m_admin->write("src/a.ui", "text")}));
        ORVO_DONE(run({"put", "form", m_admin->write("src/b.ui", "text")}));
        ORVO_DONE(run({"user", "add", "anna_t"}));
        ORVO_DONE(run({"user", "add", "boris_t"}));
        ORVO_DONE(run({"lock", "a.ui", "--login", "anna_t"}));
        ORVO_DONE(run({"lock", "b.ui", "--login", "boris_t"}));
        const AdminResult removed = run({"user", "remove", "ANNA_T"});
        QCOMPARE(removed.code, 0);
        QVERIFY2(removed.out.contains("снято блокировок форм: 1"), qPrintable(removed.out));
        QCOMPARE(run({"list", "forms"}).out, QString("a.ui\ta.ui\t\nb.ui\tb.ui\tboris_t\n"));
        QCOMPARE(run({"user", "list"}).out, QString("boris_t\t\tчеловек\n"));
        ORVO_REFUSED(run({"user", "remove", "anna_t"}), "нет");
        QCOMPARE(run({"check"}).code, 0);
        // Clients follow both.
        const QString history = run({"history", "--limit", "2"}).out;
        QVERIFY2(history.contains("Удалён пользователь «anna_t»") &&
                     history.contains("Освобождена форма «a.ui»"),
                 qPrintable(history));
    }

    void rightsAtTheServerFollowTheUser() {
        if (!isPostgres())
            QSKIP("a file has no logins");
        const auto rights = [&](const char* role) {
            QByteArray found;
            const bool asked = m_kind.byHand(
                QByteArray("SELECT pg_has_role('anna_t', '") + role + "', 'MEMBER');", &found);
            return asked && found == "t";
        };
        const auto password = [&] {
            QByteArray found;
            m_kind.byHand("SELECT rolpassword FROM pg_authid WHERE rolname = 'anna_t';", &found);
            return found;
        };
        ORVO_DONE(run({"user", "add", "anna_t"}));
        QVERIFY(rights("orvo_engineer"));
        ORVO_DONE(run({"user", "change", "anna_t", "--viewer"}));
        QVERIFY(rights("orvo_viewer") && !rights("orvo_engineer"));
        ORVO_DONE(run({"user", "change", "anna_t", "--engineer"}));
        QVERIFY(rights("orvo_engineer") && !rights("orvo_viewer"));
        const AdminResult changed = m_admin->plain(
            onStore(m_kind, {"user", "change", "anna_t", "--password-stdin"}), "geheim");
        QVERIFY2(changed.code == 0, qPrintable(changed.err));
        QVERIFY2(password().startsWith("SCRAM-SHA-256$"), password().constData());
        // Who is not in the table is not changed, whatever he may do at the server.
        QVERIFY(m_kind.byHand("CREATE ROLE stranger_t LOGIN; GRANT orvo_engineer TO stranger_t;"));
        ORVO_REFUSED(run({"user", "change", "stranger_t", "--viewer"}), "нет");
        QVERIFY(m_kind.byHand("DROP ROLE stranger_t;"));
        ORVO_DONE(run({"user", "remove", "anna_t"}));
        QVERIFY(!rights("orvo_viewer") && !rights("orvo_engineer"));
        QVERIFY(m_kind.byHand("DROP ROLE anna_t;"));
    }

    void extensionsAreAddedOnceAndListed() {
        ORVO_DONE(run({"ext", "add", ".ui"}));
        ORVO_REFUSED(run({"ext", "add", ".UI"}), "уже есть");
        QCOMPARE(run({"ext", "list"}).out, QString(".ui\n"));
    }

    void extensionsAreChangedAndRemoved() {
        ORVO_DONE(run({"ext", "add", ".ui"}));
        ORVO_DONE(run({"ext", "add", ".svg"}));
        ORVO_REFUSED(run({"ext", "change", ".ui", ".SVG"}), "уже есть");
        ORVO_REFUSED(run({"ext", "change", ".ui", "a b"}), "пробел");
        ORVO_REFUSED(run({"ext", "remove", ".svgg"}), "может быть, «.svg»?");
        ORVO_DONE(run({"ext", "change", ".ui", ".UI"}));
        ORVO_DONE(run({"ext", "remove", ".SVG"}));
        QCOMPARE(run({"ext", "list"}).out, QString(".UI\n"));
    }

    void listingsForPrograms() {
        const auto objects = [](const AdminResult& result) {
            QJsonArray all;
            for (const QString& line : result.lines())
                all << QJsonDocument::fromJson(line.toUtf8()).object();
            return all;
        };
        ORVO_DONE(run({"user", "add", "anna_t", "--last", "Ильина"}));
        ORVO_DONE(run({"ext", "add", ".ui"}));
        ORVO_DONE(run({"put", "form", "--make-folders", "--path", "КС-4",
                       m_admin->write("src/a.ui", "text")}));
        ORVO_DONE(run({"put", "file", "--path", "icons", m_admin->write("src/x.png", "png")}));
        ORVO_DONE(run({"lock", "a.ui", "--login", "anna_t"}));
        QCOMPARE(objects(run({"user", "list", "--json"})),
                 (QJsonArray{QJsonObject{{"login", "anna_t"},
                                         {"last", "Ильина"},
                                         {"first", ""},
                                         {"middle", ""},
                                         {"isProgram", false}}}));
        QCOMPARE(objects(run({"ext", "list", "--json"})),
                 (QJsonArray{QJsonObject{{"extension", ".ui"}}}));
        QCOMPARE(
            objects(run({"list", "forms", "--json"})),
            (QJsonArray{QJsonObject{
                {"path", "КС-4"}, {"name", "a.ui"}, {"caption", "a.ui"}, {"lockedBy", "anna_t"}}}));
        const QJsonObject file = objects(run({"list", "files", "--json"})).first().toObject();
        QCOMPARE(file["path"].toString() + "/" + file["name"].toString(), QString("icons/x.png"));
        QCOMPARE(file["size"].toInt(), 3);
        QVERIFY(file["time"].toDouble() > 1e9);
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuResourceFolder\" VALUES ('a', 'b', 1, 'А'), "
                              "('b', 'a', 1, 'Б');"));
        const QJsonArray findings = objects(run({"check", "--json"}));
        QVERIFY(findings.size() >= 2); // the circle, and the summary
        QCOMPARE(findings[0].toObject()["severity"].toString(), QString("error"));
        QCOMPARE(findings[0].toObject()["table"].toString(), QString("MenuResourceFolder"));
        QVERIFY(findings.last().toObject()["errors"].toInt() >= 1); // the summary
    }

    void aFormIsLockedShownAndUnlocked() {
        ORVO_DONE(run({"put", "form", m_admin->write("src/схема.ui", "text")}));
        ORVO_DONE(run({"user", "add", "anna_t"}));
        ORVO_DONE(run({"lock", "СХЕМА.ui", "--login", "anna_t"}));
        QCOMPARE(run({"list", "forms"}).out, QString("схема.ui\tсхема.ui\tanna_t\n"));
        ORVO_DONE(run({"unlock", "схема.ui"}));
        QCOMPARE(run({"list", "forms"}).out, QString("схема.ui\tсхема.ui\t\n"));
    }

    void formsComeBackAsTheyWere() {
        QByteArray bytes(1 << 20, '\0');
        for (int i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(i * 7 + i / 251);
        ORVO_DONE(run({"put", "form", "--make-folders", "--path", "Станции/КС-4",
                       m_admin->write("src/a.ui", bytes), m_admin->write("src/a.ui.txt", "")}));
        QDir().mkpath(m_admin->path("out"));
        ORVO_DONE(run({"get", "form", "a.ui", m_admin->path("out")}));
        QCOMPARE(AdminRun::read(m_admin->path("out/a.ui")), bytes);
        QVERIFY(QFile::exists(m_admin->path("out/a.ui.txt")));
        QCOMPARE(QFileInfo(m_admin->path("out/a.ui.txt")).size(), 0);
    }

    void filesComeBackAsTheyWere() {
        ORVO_DONE(run({"put", "file", "--path", "icons", m_admin->write("src/значок.png", "png")}));
        ORVO_DONE(
            run({"put", "file", "--path", "icons", m_admin->write("src/значок.png", "newer")}));
        QDir().mkpath(m_admin->path("out"));
        ORVO_DONE(run({"get", "file", "--path", "icons", "значок.png", m_admin->path("out")}));
        QCOMPARE(AdminRun::read(m_admin->path("out/значок.png")), QByteArray("newer"));
        ORVO_REFUSED(run({"put", "file", "--path", "нет", m_admin->write("src/x", "x")}), "нет");
    }

    void checkFindsACircleOfParents() {
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuResourceFolder\" VALUES ('a', 'b', 1, 'А'), "
                              "('b', 'a', 1, 'Б');"));
        const AdminResult check = run({"check"});
        QCOMPARE(check.code, 1);
        QVERIFY2(check.out.contains("круг"), qPrintable(check.out));
    }

    void aLoginIsGivenToAUserOfTheTable() {
        QVERIFY(m_kind.byHand(
            "INSERT INTO \"Users\" (\"KeyLink\", \"login_\") VALUES ('k', 'Clara_t');"));
        if (!isPostgres()) {
            ORVO_REFUSED(run({"user", "login", "Clara_t"}), "нет входов");
            return;
        }
        ORVO_REFUSED(run({"user", "login", "nobody_t"}), "нет");
        QVERIFY(m_kind.byHand("DROP ROLE IF EXISTS \"Clara_t\";"));
        ORVO_DONE(run({"user", "login", "clara_t"}));
        QByteArray found;
        QVERIFY(m_kind.byHand("SELECT pg_has_role('Clara_t', 'orvo_engineer', 'MEMBER');", &found));
        QCOMPARE(found, QByteArray("t"));
        // A second time changes nothing; a password of a login that is there is not touched.
        ORVO_DONE(run({"user", "login", "clara_t"}));
        QVERIFY(m_kind.byHand("DROP ROLE \"Clara_t\";"));
    }

    void aStoreThatCannotBeReachedIsOneLine() {
        const QString url = isPostgres() ? "postgresql://nobody@/none?host=" + m_admin->path()
                                         : "sqlite://" + m_admin->path("none.db");
        for (const QStringList& verb :
             {QStringList{"check"}, QStringList{"history"}, QStringList{"export", "-"},
              QStringList{"prune", "--older-than", "1d"},
              QStringList{"backup", m_admin->path("copy")}})
            ORVO_REFUSED(m_admin->plain(QStringList{"--store", url} + verb), "");
        QVERIFY(!QFile::exists(m_admin->path("copy")));
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestAdminStores>(argc, argv);
}
#include "tst_admin_stores.moc"
