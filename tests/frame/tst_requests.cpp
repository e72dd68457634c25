// Requests to the server, their failures in words, and the scratch table that writes.
#include "FakeSession.h"
#include "Tables.h"

#include "frame/CommonFunctions.h"
#include "frame/ScratchTable.h"

#include <QTranslator>
#include <QtTest>

using namespace orvo;
using namespace tables;

namespace {

/// Puts a sign before every text that is translated.
struct Signs : QTranslator {
    Signs() { QCoreApplication::installTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* text, const char*, int) const override {
        return '*' + QString::fromUtf8(text);
    }
};

/// A module that keeps what it is told to log.
struct LogKeeper : COrvoCliMod {
    using COrvoCliMod::COrvoCliMod;
    QStringList lines; ///< "level place text"
    void LogFile(int level, QString place, QString text) override {
        lines << QStringLiteral("%1 %2 %3").arg(level).arg(place, text);
    }
};

const QString noResult = "Операция на сервере не вернула результат.";

/// A reply with that code; field 2 is a text, or nothing.
MDXCliParam* failure(int code, const char* text = nullptr) {
    const MdxType types[] = {MDX_INTEGER, MDX_INTEGER, MDX_TEXT};
    MDXCliParam* reply = orvo::mdx::paramCreate(types, 3);
    orvo::mdx::paramSetInt(reply, 0, code);
    if (text)
        orvo::mdx::paramSetText(reply, 2, text);
    return reply;
}

MDXCliParam* success(const void* bytes, size_t length) {
    const MdxType types[] = {MDX_INTEGER, MDX_INTEGER, MDX_BLOCK};
    MDXCliParam* reply = orvo::mdx::paramCreate(types, 3);
    orvo::mdx::paramSetInt(reply, 0, 0);
    if (bytes)
        orvo::mdx::paramSetBlock(reply, 2, bytes, length);
    return reply;
}

MDXCliParam* success(const CMDArray& table, bool withRecords) {
    void* packed = nullptr;
    const uint32_t length = orvo::mdx::packReply(table.array, withRecords, &packed);
    MDXCliParam* reply = success(packed, length);
    MDMemFree(packed);
    return reply;
}

struct Server {
    SessionScript script;
    std::unique_ptr<COrvoCliSes> session = makeSession(script);
    CMDArray stored; ///< what the server holds

    Server() {
        define(stored);
        setKeys(stored, {"caption"});
        add(stored, "a", "", "x", 1);
        add(stored, "b", "a", "y", 2);
    }
    void answer(MDXCliParam* reply) { script.reply = reply; }
    void answerStructure() { answer(success(stored, false)); }
};

using Fetch = int (*)(COrvoCliSes*, const std::string&, CMDArray&, QString*);

} // namespace

Q_DECLARE_METATYPE(Fetch)

class Requests : public QObject {
    Q_OBJECT
private slots:
    void recordsAreFetchedWithTheirStructure() {
        Server server;
        server.answer(success(server.stored, true));
        CMDArray table;
        QString error = "old";
        QVERIFY(GetTableRecords(server.session.get(), "Menu", table, &error));
        QCOMPARE(error, QString());
        QCOMPARE(server.script.request, QByteArray("TableRecords"));
        QCOMPARE(server.script.data, QByteArray("Menu"));
        QCOMPARE(server.script.timeout, -1);
        QCOMPARE(int(table.array->fieldCount), 6);
        QCOMPARE(order(table, 0), QString("a b"));
    }

    void aStructureIsFetchedWithoutRecords() {
        Server server;
        server.answerStructure();
        CMDArray table;
        QString error;
        QVERIFY(GetTableStructure(server.session.get(), "MenuFolder", table, &error));
        QCOMPARE(server.script.request, QByteArray("TableStructure"));
        QCOMPARE(server.script.data, QByteArray("MenuFolder"));
        QCOMPARE(int(table.array->fieldCount), 6);
        QCOMPARE(recordCount(table), 0);
    }

    void theResultIsThatOfTheWaiting() {
        Server server;
        server.script.waited = 17;
        server.answer(success(server.stored, true));
        CMDArray table;
        QString error;
        QCOMPARE(GetTableRecords(server.session.get(), "Menu", table, &error), 17);
    }

    void aRequestThatIsNotSentSaysSo_data() { bothFetches(); }
    void aRequestThatIsNotSentSaysSo() {
        QFETCH(Fetch, fetch);
        Server server;
        server.script.sent = false;
        CMDArray table;
        QString error;
        QCOMPARE(fetch(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, noResult);
    }

    void aReplyThatDoesNotComeSaysSo_data() { bothFetches(); }
    void aReplyThatDoesNotComeSaysSo() {
        QFETCH(Fetch, fetch);
        Server server;
        server.script.waited = 0;
        CMDArray table;
        QString error;
        QCOMPARE(fetch(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, noResult);
        QCOMPARE(server.script.alive, 0);
    }

    void aReplyThatIsNullSaysSo_data() { bothFetches(); }
    void aReplyThatIsNullSaysSo() {
        QFETCH(Fetch, fetch);
        Server server;
        server.script.nullReply = true;
        CMDArray table;
        QString error;
        QCOMPARE(fetch(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, noResult);
    }

    void aServerErrorIsToldInWords_data() { bothFetches(); }
    void aServerErrorIsToldInWords() {
        QFETCH(Fetch, fetch);
        Server server;
        server.answer(failure(5));
        CMDArray table;
        QString error;
        QCOMPARE(fetch(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, QString("Ошибка -> Имя не найдено"));
    }

    void furtherInformationIsUtf8_data() { bothFetches(); }
    void furtherInformationIsUtf8() {
        QFETCH(Fetch, fetch);
        Server server;
        server.answer(failure(-1, "таблица занята"));
        CMDArray table;
        QString error;
        QCOMPARE(fetch(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, QString("Ошибка -> Недостаточно ОП Доп. инф: таблица занята"));
    }

    void emptyFurtherInformationIsAppendedAllTheSame() {
        Server server;
        server.answer(failure(5, ""));
        CMDArray table;
        QString error;
        QCOMPARE(GetTableRecords(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, QString("Ошибка -> Имя не найдено Доп. инф: "));
    }

    void aTableNameGoesAsItsBytes() {
        Server server;
        server.answerStructure();
        CMDArray table;
        QString error;
        const std::string name = "Меню\xff";
        QVERIFY(GetTableStructure(server.session.get(), name, table, &error));
        QCOMPARE(server.script.data, QByteArray::fromStdString(name));
    }

    void theErrorTextIsClearedFirst_data() { bothFetches(); }
    void theErrorTextIsClearedFirst() {
        QFETCH(Fetch, fetch);
        Server server;
        server.answer(failure(99));
        CMDArray table;
        QString error = "old text";
        fetch(server.session.get(), "Menu", table, &error);
        QCOMPARE(error, QString("Ошибка -> Описание ошибки отсутствует"));
    }

    void anEmptyBlockIsAStructureWithoutFields() {
        Server server;
        server.answer(success(nullptr, 0));
        CMDArray table;
        QString error;
        QCOMPARE(GetTableStructure(server.session.get(), "Nothing", table, &error), 0);
        QCOMPARE(error, QString("Отсутствуют поля."));
    }

    void recordsWithoutFieldsAreNoFailure() {
        Server server;
        server.answer(success(nullptr, 0));
        CMDArray table;
        QString error;
        QCOMPARE(GetTableRecords(server.session.get(), "Nothing", table, &error), 1);
        QCOMPARE(error, QString("Ответ сервера не читается."));
        QCOMPARE(int(table.array->fieldCount), 0);
    }

    void aDamagedBlockIsAStructureWithoutFields() {
        Server server;
        server.answer(success("no image at all", 15));
        CMDArray table;
        define(table);
        QString error;
        QCOMPARE(GetTableStructure(server.session.get(), "Menu", table, &error), 0);
        QCOMPARE(error, QString("Отсутствуют поля."));
        QVERIFY(table.status != MDX_OK);
    }

    void aDamagedBlockLeavesNoRecords() {
        Server server;
        server.answer(success("no image at all", 15));
        CMDArray table;
        QString error;
        GetTableRecords(server.session.get(), "Menu", table, &error);
        QCOMPARE(recordCount(table), 0);
        QVERIFY(table.status != MDX_OK);
    }

    void aTableThatCannotBeReadIsLogged() {
        Server server;
        COrvoCliApp app;
        app.m_session = server.session.get();
        LogKeeper module(&app);
        app.m_logModule = &module;
        CMDArray table;
        const auto fetch = [&](COrvoCliSes* session, QString* error) {
            return GetTableRecords(session, "Menu", table, error);
        };
        server.answer(success(server.stored, true));
        QVERIFY(fetchOrLog(module, "Place", fetch));
        QCOMPARE(module.lines, QStringList());
        server.answer(success("no image at all", 15));
        QVERIFY(fetchOrLog(module, "Place", fetch)); // the reply has come, and is no failure of it
        QCOMPARE(module.lines, QStringList{"5 Place Ответ сервера не читается."});
        server.answer(failure(3));
        QVERIFY(!fetchOrLog(module, "Place", fetch));
        QCOMPARE(module.lines.size(), 2);
    }

    void everyBlockIsFreedOnEveryWayOut() {
        Server server;
        QString error;
        for (const Fetch fetch : {Fetch(GetTableRecords), Fetch(GetTableStructure)}) {
            for (MDXCliParam* reply : {success(server.stored, true), success(nullptr, 0),
                                       failure(3), failure(4, "text"), failure(0)}) {
                CMDArray table;
                server.answer(reply);
                fetch(server.session.get(), "Menu", table, &error);
                QCOMPARE(server.script.alive, 0);
            }
        }
        for (MDXCliParam* reply : {success(server.stored, true), success(nullptr, 0), failure(3)}) {
            CMDArray table;
            server.answer(reply);
            getUserInfo(server.session.get(), table, error);
            QCOMPARE(server.script.alive, 0);
        }
        QCOMPARE(server.script.freed, 13);
    }

    void userInfoIsFetchedWithoutData() {
        Server server;
        server.answer(success(server.stored, true));
        CMDArray table;
        QString error;
        QVERIFY(getUserInfo(server.session.get(), table, error));
        QCOMPARE(server.script.request, QByteArray("UserProp"));
        QVERIFY(server.script.data.isNull());
        QCOMPARE(server.script.timeout, -1);
        QCOMPARE(textOf(MDARec(table.array, 0, 0), 2), QString("x"));
    }

    void userInfoReplacesTheErrorText() {
        Server server;
        CMDArray table;
        QString error = "old";
        server.script.sent = false;
        QCOMPARE(getUserInfo(server.session.get(), table, error), 0);
        QCOMPARE(error, noResult);
        server.script.sent = true;
        server.script.waited = 0;
        error = "old";
        QCOMPARE(getUserInfo(server.session.get(), table, error), 0);
        QCOMPARE(error, noResult);
        server.script.waited = 1;
        server.answer(failure(2, "ещё"));
        error = "old";
        QCOMPARE(getUserInfo(server.session.get(), table, error), 0);
        QCOMPARE(error, QString("Ошибка -> Сессия не активна Доп. инф: ещё"));
    }

    void userInfoClearsTheErrorOnSuccess() {
        Server server;
        server.answer(success(server.stored, true));
        CMDArray table;
        QString error = "old";
        getUserInfo(server.session.get(), table, error);
        QCOMPARE(error, QString());
    }

    void userInfoWithoutFieldsHasNoFullStop() {
        Server server;
        server.answer(success(nullptr, 0));
        CMDArray table;
        QString error = "old";
        QCOMPARE(getUserInfo(server.session.get(), table, error), 0);
        QCOMPARE(error, QString("Отсутствуют поля"));
    }

    void everyErrorIsTranslated() {
        const Signs signs;
        Server server;
        CMDArray table;
        QString error;
        server.answer(success(nullptr, 0));
        GetTableStructure(server.session.get(), "Nothing", table, &error);
        QCOMPARE(error, QString("*Отсутствуют поля."));
        server.answer(success(nullptr, 0));
        getUserInfo(server.session.get(), table, error);
        QCOMPARE(error, QString("*Отсутствуют поля"));
        server.script.sent = false;
        for (const Fetch fetch : {Fetch(GetTableRecords), Fetch(GetTableStructure)}) {
            fetch(server.session.get(), "Menu", table, &error);
            QCOMPARE(error, '*' + noResult);
        }
        getUserInfo(server.session.get(), table, error);
        QCOMPARE(error, '*' + noResult);
        server.script.sent = true;
        server.script.waited = 0;
        GetTableRecords(server.session.get(), "Menu", table, &error);
        QCOMPARE(error, '*' + noResult);
        getUserInfo(server.session.get(), table, error);
        QCOMPARE(error, '*' + noResult);
    }

    void errorTexts_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        const QMap<int, QString> texts{{-4, "Нарушение структуры данных"},
                                       {-3, "Ошибка операции с сокетом"},
                                       {-2, "Неверные параметры"},
                                       {-1, "Недостаточно ОП"},
                                       {1, "Модуль не инициализирован"},
                                       {2, "Сессия не активна"},
                                       {3, "Подключение к серверу не удалось"},
                                       {4, "Пользователь не найден или неправильный пароль"},
                                       {5, "Имя не найдено"},
                                       {6, "Нарушен порядок блочных операций"},
                                       {7, "Истек таймаут"},
                                       {9, "Превышено количество неверных попыток ввода пароля"},
                                       {10, "Подключение с недопустимого IP-адреса"}};
        for (int code = -6; code <= 12; ++code)
            QTest::addRow("%d", code) << code << texts.value(code, "Описание ошибки отсутствует");
    }

    void errorTexts() {
        QFETCH(int, code);
        QFETCH(QString, text);
        QCOMPARE(getServerErrorText(code), text);
    }

    // Scratch tables
    // ---------------------------------------------------------------------------------------------
    // Scratch tables

    void aScratchTableSendsItsRecordsOnce() {
        Server server;
        server.answerStructure();
        {
            ScratchTable out(*server.session, "Menu");
            QVERIFY(out.isEmpty());
            QVERIFY(out.fetch());
            out.add(MDX_INSERT).text("KeyLink", "k1").integer("order_", 5).flag("flag", true);
            out.add(MDX_UPDATE).text("KeyLink", "k2").null("parent");
            out.add(MDX_DELETE).text("KeyLink", "k3");
            QVERIFY(!out.isEmpty());
            out.send();
            out.send();
        }
        QCOMPARE(server.script.updates,
                 QStringList{"Menu 1:KeyLink=\"k1\",order_=5,flag=1 2:KeyLink=\"k2\",parent=NULL "
                             "4:KeyLink=\"k3\""});
        QCOMPARE(server.script.alive, 0);
    }

    void anEmptyScratchTableIsNotSent() {
        Server server;
        server.answerStructure();
        ScratchTable out(*server.session, "Menu");
        QVERIFY(out.fetch());
        out.send();
        QVERIFY(server.script.updates.isEmpty());
        // One that is filled later still goes out.
        out.add(MDX_DELETE).text("KeyLink", "k");
        out.send();
        QCOMPARE(server.script.updates.size(), 1);
    }

    void aScratchTableWithoutStructureTakesNothing() {
        Server server;
        server.answer(failure(5));
        ScratchTable out(*server.session, "Menu");
        QString error;
        QVERIFY(!out.fetch(&error));
        QCOMPARE(error, QString("Ошибка -> Имя не найдено"));
        RowWriter row = out.add(MDX_INSERT);
        row.text("KeyLink", "k").copyAll(nullptr);
        QVERIFY(!row.record());
        QCOMPARE(row.post(), 0u);
        out.send();
        QVERIFY(out.isEmpty());
        QVERIFY(server.script.updates.isEmpty());
    }

    void fieldsTheTableLacksAreDropped() {
        Server server;
        server.answerStructure();
        ScratchTable out(*server.session, "Menu");
        QVERIFY(out.fetch());
        out.add(MDX_INSERT).text("KeyLink", "k").text("nothing", "x").integer("none", 1);
        out.send();
        QCOMPARE(server.script.updates, QStringList{"Menu 1:KeyLink=\"k\""});
    }

    void emptyTextIsWrittenAsTextAndNullOnlyWhereAsked() {
        Server server;
        server.answerStructure();
        ScratchTable out(*server.session, "Menu");
        QVERIFY(out.fetch());
        out.add(MDX_INSERT).text("KeyLink", "a").text("parent", QString()).text("caption", "");
        out.add(MDX_INSERT)
            .text("KeyLink", "b")
            .textOrNull("parent", "")
            .textOrNull("caption", "Ё");
        out.send();
        QCOMPARE(server.script.updates, QStringList{"Menu 1:KeyLink=\"a\",parent=\"\",caption=\"\" "
                                                    "1:KeyLink=\"b\",parent=NULL,caption=\"Ё\""});
    }

    void recordsAreCopiedFieldByField() {
        Server server;
        server.answerStructure();
        ScratchTable out(*server.session, "Menu");
        QVERIFY(out.fetch());
        setKeys(out.table(), {"parent;order_"});
        out.add().copyAll(seekKey(server.stored, "b"));
        out.add().copyAll(seekKey(server.stored, "a"));
        QCOMPARE(order(out.table(), 0), QString("a b"));
        out.send();
        QCOMPARE(
            server.script.updates,
            QStringList{
                "Menu 0:KeyLink=\"b\",parent=\"a\",caption=\"y\",order_=2,flag=NULL,stamp=NULL "
                "0:KeyLink=\"a\",parent=\"\",caption=\"x\",order_=1,flag=NULL,stamp=NULL"});
    }

    void aFieldIsCopiedWithItsNull() {
        Server server;
        server.answerStructure();
        ScratchTable out(*server.session, "Menu");
        QVERIFY(out.fetch());
        const MDRData* source = seekKey(server.stored, "b");
        out.add(MDX_INSERT)
            .text("KeyLink", "n")
            .copy("caption", source)
            .copy("order_", source)
            .copy("flag", source);
        out.send();
        QCOMPARE(server.script.updates,
                 QStringList{"Menu 1:KeyLink=\"n\",caption=\"y\",order_=2,flag=NULL"});
    }

    void aReplyAskedForIsTheCallers() {
        Server server;
        server.answerStructure();
        ScratchTable out(*server.session, "Menu");
        QVERIFY(out.fetch());
        out.add(MDX_DELETE).text("KeyLink", "k");
        MDXCliParam* reply = nullptr;
        out.send(&reply);
        QVERIFY(reply);
        server.session->PrmFree(reply);
        QCOMPARE(server.script.alive, 0);
    }

private:
    static void bothFetches() {
        QTest::addColumn<Fetch>("fetch");
        QTest::newRow("records") << Fetch(GetTableRecords);
        QTest::newRow("structure") << Fetch(GetTableStructure);
    }
};

QTEST_MAIN(Requests)
#include "tst_requests.moc"
