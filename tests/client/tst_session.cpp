// The session: requests, the one statement, writes, and the reports of failures.
#include "platform/client/Session.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/client/HostFixture.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QSet>
#include <QTimer>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;

namespace {

/// A reply that frees itself, read as the editors read it.
struct Reply {
    COrvoCliSes& session;
    MDXCliParam* block = nullptr;
    ~Reply() {
        if (block)
            session.PrmFree(block);
    }
    bool ask(const char* name, const std::string& data = {}) {
        return session.PacketExec(name, data.empty() ? nullptr : data.data(),
                                  static_cast<int>(data.size()), &block) &&
               session.WaitResult(&block, -1);
    }
    int code() const {
        MDRVar value{};
        MDRGetVal(MDRFldByNum(block->array, 0), block->record, &value);
        return value.type == MDX_INTEGER ? value.value.integer : -1000;
    }
    QString info() const {
        uint32_t length = 0;
        const char* text = nullptr;
        if (MDRGetTextRef(MDRFldByNum(block->array, 2), block->record, &length, &text) != MDX_OK)
            return {};
        return QString(text); // UTF-8, as a C string
    }
    bool unpack(CMDArray& table) const {
        const char* bytes = nullptr;
        MDRGetTextPtr(MDRFldByNum(block->array, 2), block->record, &bytes);
        return MDXArrayUnPack(table.array, bytes, 1) == MDX_OK;
    }
};

} // namespace

class TestSession : public QObject {
    Q_OBJECT
private slots:
    void writesOfOneActionAreOneGroup() {
        Host host;
        const auto write = [&](const char* key) {
            QVERIFY(host.write("MenuFolder", 1, {{"KeyLink", key}}));
        };
        QEventLoop loop; // the bare one
        QTimer::singleShot(0, &loop, [&] {
            write("a");
            QEventLoop question;
            QTimer::singleShot(80, &question, &QEventLoop::quit);
            question.exec();
            write("b");
            QTimer::singleShot(0, &loop, [&] {
                write("c");
                write("d");
                loop.quit();
            });
        });
        loop.exec();
        write("e");
        QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
        QSpontaneKeyEvent::setSpontaneous(&key);
        QCoreApplication::instance()->notify(&loop, &key); // as it comes from the display
        write("f");
        std::vector<store::Change> changes;
        QVERIFY(host.store().readLog(0, 10, &changes).ok());
        QString groups;
        for (const store::Change& change : changes)
            groups += QString::fromStdString(change.key) + QString::number(change.group) + ' ';
        QCOMPARE(groups, QString("a1 b1 c3 d3 e5 f6 "));
    }

    void tableRecordsBringsStructureRecordsAndKeyLinkKey() {
        Host host;
        QVERIFY(host.write("MenuFolder", 1,
                           {{"KeyLink", "b"}, {"caption", "Пульт «Ё»"}, {"isFolder", "1"}}));
        QVERIFY(host.write("MenuFolder", 1, {{"KeyLink", "a"}, {"caption", ""}}));
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableRecords", "MenuFolder"));
        QCOMPARE(reply.code(), 0);
        CMDArray table;
        QVERIFY(reply.unpack(table));
        QCOMPARE(int(table.array->fieldCount), 5);
        QCOMPARE(table.array->keyCount, 1u);
        QCOMPARE(table.array->recordCount, 2u);
        MDRData* first = MDARec(table.array, 0, 0);
        QCOMPARE(textOf(table.array, first, "KeyLink"), QString("a"));
        QCOMPARE(textOf(table.array, first, "caption"), QString(""));
        QVERIFY(!textOf(table.array, first, "caption").isNull());
        QCOMPARE(textOf(table.array, MDARec(table.array, 0, 1), "caption"), QString("Пульт «Ё»"));
        MDRVar folder{};
        table.GetVal(MDARec(table.array, 0, 1), "IsFolder", folder);
        QCOMPARE(int(folder.type), int(MDX_BOOLEAN));
        QCOMPARE(int(folder.value.boolean), 1);
        QVERIFY(host.failures.isEmpty());
    }

    void tableStructureHasFieldsAndKeyButNoRecords() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "a"}});
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableStructure", "Menu"));
        QCOMPARE(reply.code(), 0);
        CMDArray table;
        QVERIFY(reply.unpack(table));
        QCOMPARE(int(table.array->fieldCount), 10);
        QCOMPARE(table.array->keyCount, 1u);
        QCOMPARE(table.array->recordCount, 0u);
        addRecord(table, 2, {{"KeyLink", "a"}, {"caption", "1"}});
        QCOMPARE(table.array->recordCount, 1u);
    }

    void everyTableHasTheFieldsThatTheEditorsRead_data() {
        QTest::addColumn<QString>("fields");
        QTest::newRow("MenuFolder") << "KeyLink 9, ParentKey 9, caption 9, order_ 9, isFolder 1";
        QTest::newRow("Menu") << "KeyLink 9, parent 9, FolderKey 9, caption 9, order_ 5, ico 9, "
                                 "separator 1, oneCopy 1, MenuResourceKey 9, params 9";
        QTest::newRow("MenuResource")
            << "KeyLink 9, MenuResourceFolderKey 9, name_ 9, type_ 5, caption 9, params 9, ico 9, "
               "UsersKey 9, dateTimeEdit 7";
        QTest::newRow("MenuResourceFolder") << "KeyLink 9, ParentKey 9, type_ 5, caption 9";
        QTest::newRow("Users")
            << "KeyLink 9, login_ 9, lastName 9, firstName 9, midlName 9, program 1";
        QTest::newRow("MenuFileExt") << "KeyLink 9, fileExt 9";
    }
    void everyTableHasTheFieldsThatTheEditorsRead() {
        QFETCH(QString, fields);
        Host host;
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableStructure", QTest::currentDataTag()));
        CMDArray table;
        QVERIFY(reply.unpack(table));
        QStringList found;
        for (int i = 0; i < table.array->fieldCount; ++i) {
            const MDRField field = MDRFldByNum(table.array, i);
            found << QStringLiteral("%1 %2").arg(mdx::fieldName(field)).arg(mdx::fieldType(field));
        }
        QCOMPARE(found.join(", "), fields);
    }

    void changesOfOneKeyAllStayInATableOfChanges() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "a"}});
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableStructure", "Menu"));
        CMDArray table;
        QVERIFY(reply.unpack(table));
        addRecord(table, 2, {{"KeyLink", "a"}, {"caption", "раз"}});
        addRecord(table, 2, {{"KeyLink", "a"}, {"params", "два"}});
        QCOMPARE(table.array->recordCount, 2u);
        QVERIFY(host.session->SqlUpdate("Menu", table.array, true, nullptr));
        CMDArray rows;
        QVERIFY(host.store().fetch("Menu", rows.array).ok());
        MDRData* row = MDARec(rows.array, 0, 0);
        QCOMPARE(textOf(rows.array, row, "caption"), QString("раз"));
        QCOMPARE(textOf(rows.array, row, "params"), QString("два"));
    }

    void unknownTableIsNameNotFoundWithInformation() {
        Host host;
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableRecords", "Нет"));
        QCOMPARE(reply.code(), 5);
        QVERIFY(!reply.info().isEmpty());
        QVERIFY(reply.info().contains(QRegularExpression("[а-я]")));
        QCOMPARE(host.failures.size(), 1);
    }

    void structureOfAnUnknownTableIsAnArrayWithoutFields() {
        Host host;
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableStructure", "Nowhere"));
        QCOMPARE(reply.code(), 0);
        CMDArray table;
        QVERIFY(reply.unpack(table));
        QCOMPARE(int(table.array->fieldCount), 0);
        QCOMPARE(host.failures.size(), 1);
    }

    void userPropTellsKeyCaptionAndLogin() {
        Host host("petrov");
        host.write("Users", 1,
                   {{"KeyLink", "u1"},
                    {"login_", "petrov"},
                    {"lastName", "Петров"},
                    {"firstName", "Пётр"}});
        Reply reply{*host.session};
        QVERIFY(reply.ask("UserProp"));
        QCOMPARE(reply.code(), 0);
        CMDArray table;
        QVERIFY(reply.unpack(table));
        QCOMPARE(int(table.array->fieldCount), 3);
        MDRData* row = MDARec(table.array, 0, 0);
        QVERIFY(row);
        QCOMPARE(textOf(table.array, row, mdx::fieldName(MDRFldByNum(table.array, 0))),
                 QString("u1"));
        QCOMPARE(textOf(table.array, row, mdx::fieldName(MDRFldByNum(table.array, 1))),
                 QString("Петров Пётр"));
        QCOMPARE(textOf(table.array, row, mdx::fieldName(MDRFldByNum(table.array, 2))),
                 QString("petrov"));
    }

    void aLoginWithoutAUserHasItsOwnNameAsCaption() {
        Host host("гость");
        Reply reply{*host.session};
        QVERIFY(reply.ask("UserProp"));
        CMDArray table;
        QVERIFY(reply.unpack(table));
        MDRData* row = MDARec(table.array, 0, 0);
        QCOMPARE(textOf(table.array, row, "KeyLink"), QString(""));
        QCOMPARE(textOf(table.array, row, "caption"), QString("гость"));
        QCOMPARE(textOf(table.array, row, "login"), QString("гость"));
    }

    void unusableRequestsAreNotSent() {
        Host host;
        MDXCliParam* block = nullptr;
        QCOMPARE(host.session->PacketExec(nullptr, nullptr, 0, &block), 0);
        QCOMPARE(host.session->PacketExec("TableRecords", "Menu", 4, nullptr), 0);
        QCOMPARE(host.session->PacketExec("TableRecords", nullptr, 4, &block), 0);
        QCOMPARE(host.session->PacketExec("TableRecords", "Menu", -4, &block), 0);
        QVERIFY(!block);
        QCOMPARE(host.session->WaitResult(nullptr, -1), 0);
        QCOMPARE(host.session->WaitResult(&block, -1), 0);
        host.session->PrmFree(nullptr);
    }

    void anUnknownRequestIsAnswered() {
        Host host;
        Reply reply{*host.session};
        QVERIFY(reply.ask("DropTable", "Menu"));
        QCOMPARE(reply.code(), 5);
    }

    void aRequestIsAnsweredOnce() {
        Host host;
        Reply reply{*host.session};
        QVERIFY(reply.ask("TableStructure", "Menu"));
        MDXCliParam* answered = reply.block;
        QCOMPARE(host.session->WaitResult(&reply.block, -1), 0);
        QCOMPARE(reply.block, answered);
    }

    void requestsNeverWaitedForAreFreed() {
        Host host;
        MDXCliParam* first = nullptr;
        MDXCliParam* second = nullptr;
        QVERIFY(host.session->PacketExec("TableRecords", "Menu", 4, &first));
        QVERIFY(host.session->PacketExec("TableRecords", "Menu", 4, &second));
        host.session->PrmFree(first); // the other goes with the session
    }

    void severalRequestsKeepTheirOwnReplies() {
        Host host;
        MDXCliParam* menu = nullptr;
        MDXCliParam* users = nullptr;
        QVERIFY(host.session->PacketExec("TableStructure", "Menu", 4, &menu));
        QVERIFY(host.session->PacketExec("TableStructure", "Users", 5, &users));
        Reply second{*host.session, users};
        Reply first{*host.session, menu};
        QVERIFY(host.session->WaitResult(&second.block, -1));
        QVERIFY(host.session->WaitResult(&first.block, -1));
        CMDArray a;
        CMDArray b;
        QVERIFY(first.unpack(a));
        QVERIFY(second.unpack(b));
        QCOMPARE(int(a.array->fieldCount), 10);
        QCOMPARE(int(b.array->fieldCount), 6);
    }

    void sqlRequestFindsTheElementsOfOneDesktop() {
        Host host;
        const std::string key = "O'Brien''s \" ; пульт";
        host.write("Menu", 1, {{"KeyLink", "a"}, {"FolderKey", key}, {"caption", "один"}});
        host.write("Menu", 1, {{"KeyLink", "b"}, {"FolderKey", "other"}});
        CMDArray rows;
        rows.Attach(host.session->SqlRequest(
            mdx::toCp1251("select * from Menu where FolderKey = '" + key + "'").c_str()));
        QCOMPARE(rows.status, 0);
        QCOMPARE(rows.array->recordCount, 1u);
        QCOMPARE(textOf(rows.array, MDARec(rows.array, 0, 0), "caption"), QString("один"));
    }

    void sqlRequestTakesTheLiteralAsAValueOnly() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "a"}, {"FolderKey", "x"}});
        CMDArray rows;
        rows.Attach(
            host.session->SqlRequest("select * from Menu where FolderKey = 'x' or '1'='1'"));
        QCOMPARE(rows.status, 0);
        QCOMPARE(rows.array->recordCount, 0u);
        QCOMPARE(int(rows.array->fieldCount), 10);
        CMDArray none;
        none.Attach(host.session->SqlRequest("select * from Menu where FolderKey = ''"));
        QCOMPARE(none.status, 0);
        QCOMPARE(none.array->recordCount, 0u);
    }

    void hostileKeysFindTheirOwnElementsOnly_data() {
        QTest::addColumn<QString>("key");
        QTest::newRow("a quote") << "'";
        QTest::newRow("quotes") << "''' or '' = '";
        QTest::newRow("double quotes") << "\"Menu\"";
        QTest::newRow("backslashes") << "\\ \\\\ \\' \\x27 \\000 \\";
        QTest::newRow("a second statement") << "x'; delete from \"Menu\"; --";
        QTest::newRow("a comment") << "x' /* ' */ -- ";
        QTest::newRow("patterns") << "%_*?[a-z]";
        QTest::newRow("places of parameters") << "$1 ?1 :key @key %s %1";
        QTest::newRow("dollar quotes") << "$$ or $a$";
        QTest::newRow("control characters") << "\t\r\n\x01\x7f";
        QTest::newRow("Cyrillic") << QStringLiteral("Ёж №1 «ЯЫ»");
        QTest::newRow("10 kB") << QStringLiteral("'\\Ж\"").repeated(2560);
    }
    void hostileKeysFindTheirOwnElementsOnly() {
        QFETCH(QString, key);
        const std::string text = key.toStdString();
        Host host;
        QCOMPARE(host.write("Menu", 1, {{"KeyLink", "own"}, {"FolderKey", text}}), 1);
        host.write("Menu", 1, {{"KeyLink", "longer"}, {"FolderKey", text + "'"}});
        host.write("Menu", 1, {{"KeyLink", "other"}, {"FolderKey", "x"}});
        CMDArray rows;
        rows.Attach(host.session->SqlRequest(
            mdx::toCp1251("select * from Menu where FolderKey = '" + text + "'").c_str()));
        QCOMPARE(host.failures, QStringList());
        QCOMPARE(rows.status, 0);
        QCOMPARE(rows.array->recordCount, 1u);
        QCOMPARE(textOf(rows.array, MDARec(rows.array, 0, 0), "KeyLink"), QString("own"));
        QCOMPARE(textOf(rows.array, MDARec(rows.array, 0, 0), "FolderKey"), key);
        CMDArray all;
        QVERIFY(host.store().fetch("Menu", all.array).ok());
        QCOMPARE(all.array->recordCount, 3u);
    }

    void aZeroByteEndsTheRequestWhichIsRefused() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "a"}, {"FolderKey", "x"}});
        QVERIFY(!host.session->SqlRequest("select * from Menu where FolderKey = 'x\0' or '1'='1'"));
        QCOMPARE(host.failures.size(), 1);
    }

    void sqlRequestRefusesEverythingElse_data() {
        QTest::addColumn<QByteArray>("sql");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("other table") << QByteArray("select * from Users where login_ = 'a'");
        QTest::newRow("no quotes") << QByteArray("select * from Menu where FolderKey = 1");
        QTest::newRow("one quote") << QByteArray("select * from Menu where FolderKey = '");
        QTest::newRow("tail") << QByteArray("select * from Menu where FolderKey = 'a';");
        QTest::newRow("write") << QByteArray("delete from Menu where FolderKey = 'a'");
    }
    void sqlRequestRefusesEverythingElse() {
        QFETCH(QByteArray, sql);
        Host host;
        QVERIFY(!host.session->SqlRequest(sql.constData()));
        QCOMPARE(host.failures.size(), 1);
    }

    void aSelectionThatFailsLeavesTheTableAsItWas() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "a"}, {"FolderKey", "x"}});
        CMDArray rows;
        rows.Attach(host.session->SqlRequest("select * from Menu where FolderKey = 'x'"));
        QCOMPARE(rows.array->recordCount, 1u);
        rows.Attach(host.session->SqlRequest("select * from Menu"));
        QCOMPARE(rows.status, -3);
        QCOMPARE(rows.array->recordCount, 1u);
    }

    void sqlRequestOfNullIsRefused() {
        Host host;
        QVERIFY(!host.session->SqlRequest(nullptr));
    }

    void sqlUpdateIsAllOrNothingAndReportsWhy() {
        Host host;
        host.write("Menu", 1, {{"KeyLink", "there"}});
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_MULTI);
        addRecord(array, 1, {{"KeyLink", "new"}});
        addRecord(array, 1, {{"KeyLink", "there"}});
        Reply reply{*host.session};
        QCOMPARE(host.session->SqlUpdate("Menu", array.array, true, &reply.block), 0);
        QVERIFY(reply.block);
        QCOMPARE(reply.code(), int(store::Refused));
        QVERIFY(!reply.info().isEmpty());
        CMDArray rows;
        QVERIFY(host.store().fetch("Menu", rows.array).ok());
        QCOMPARE(rows.array->recordCount, 1u);
        QCOMPARE(host.failures.size(), 1);
        QVERIFY2(host.failures.first().contains(reply.info()), qPrintable(host.failures.first()));
        QVERIFY(host.failures.first().contains("Menu"));
    }

    void sqlUpdateSucceedsWithACode() {
        Host host;
        CMDArray array;
        store::makeStructure(*store::findTable("Menu"), array.array);
        array.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
        addRecord(array, 1, {{"KeyLink", "new"}});
        Reply reply{*host.session};
        QSignalSpy written(&client::sessionEvents(*host.session), &client::SessionEvents::written);
        QVERIFY(host.session->SqlUpdate("Menu", array.array, true, &reply.block));
        QCOMPARE(reply.code(), 0);
        QCOMPARE(written.count(), 1);
    }

    void sqlUpdateOfNothingUsableDoesNotCrash() {
        Host host;
        CMDArray empty;
        CMDArray strange;
        mdx::addField(strange.array, "KeyLink", MDX_TEXT);
        mdx::addField(strange.array, "surprise", MDX_INTEGER);
        strange.KeyAdd("KeyLink", MDX_KEY_UNIQUE);
        addRecord(strange, 1, {{"KeyLink", "a"}, {"surprise", "5"}});
        QCOMPARE(host.session->SqlUpdate("Menu", nullptr, true, nullptr), 0);
        QCOMPARE(host.session->SqlUpdate(nullptr, empty.array, true, nullptr), 0);
        QCOMPARE(host.session->SqlUpdate("Nowhere", strange.array, true, nullptr), 0);
        QCOMPARE(host.session->SqlUpdate("Menu", strange.array, true, nullptr), 0);
        QCOMPARE(host.failures.size(), 4);
    }

    void theCallIsMarkedAsRunningAndShowsTheWaitCursor() {
        Host host;
        bool busy = false;
        bool cursor = false;
        QObject::connect(&client::sessionEvents(*host.session), &client::SessionEvents::failed,
                         this, [&] {
                             busy = client::sessionBusy(*host.session);
                             cursor = QGuiApplication::overrideCursor() != nullptr;
                         });
        host.session->SqlUpdate("Nowhere", nullptr, true, nullptr);
        QVERIFY(busy);
        QVERIFY(cursor);
        QVERIFY(!client::sessionBusy(*host.session));
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void guidsAreThirtyTwoHexDigitsAndDiffer() {
        QSet<QByteArray> seen;
        for (int i = 0; i < 10000; ++i) {
            const QByteArray guid = GenGuid32();
            QCOMPARE(guid.size(), 32);
            QVERIFY(QRegularExpression("^[0-9a-fA-F]{32}$").match(guid).hasMatch());
            seen.insert(guid);
        }
        QCOMPARE(seen.size(), 10000);
    }

    void timesGoToTheServerAndBack() {
        Host host;
        const QDateTime moment(QDate(2024, 2, 29), QTime(23, 59, 58, 250));
        const double server = DateTime_To_MdxTime(moment);
        QCOMPARE(server, double(moment.toMSecsSinceEpoch()) / 1000);
        QCOMPARE(host.session->MdxTimeToSesTime(server), moment);
        QCOMPARE(host.session->MdxTimeToSesTime(server).timeSpec(), Qt::LocalTime);
        QCOMPARE(DateTime_To_MdxTime(QDateTime()), 0.0);
        QVERIFY(!host.session->MdxTimeToSesTime(qQNaN()).isValid());
        QVERIFY(!host.session->MdxTimeToSesTime(1e300).isValid());
    }

    void aSessionNeedsAStore() {
        store::Status status;
        QVERIFY(!client::makeSession(nullptr, &status));
        QVERIFY(!status.ok());
    }
};

QTEST_MAIN(TestSession)
#include "tst_session.moc"
