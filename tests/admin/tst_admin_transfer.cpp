// The whole installation out of one store and into another.
#include "AdminTest.h"

class TestAdminTransfer : public AdminTest {
    Q_OBJECT
public:
    using AdminTest::AdminTest;

private slots:
    void init() {
        // What is refused changes nothing: the hostile files all meet the same store.
        const bool again = qstrcmp(QTest::currentTestFunction(), hostile) == 0 && !m_good.isEmpty();
        if (again)
            m_admin = std::make_unique<AdminRun>();
        else
            AdminTest::init();
    }

    void anInstallationGoesThroughAnotherStoreUnchanged() {
        ORVO_DONE(run({"demo", "--scale", "1000"}));
        const QString first = m_admin->path("1.json"), second = m_admin->path("2.json");
        ORVO_DONE(run({"export", first}));
        QVERIFY(m_other.renew());
        const AdminResult there = runOn(m_other, {"import", first});
        QVERIFY2(there.code == 0, qPrintable(there.err));
        ORVO_DONE(runOn(m_other, {"export", second}));
        const QByteArray bytes = AdminRun::read(first);
        QVERIFY(bytes.size() > 500000);
        QVERIFY(AdminRun::read(second) == bytes);
        QVERIFY(m_kind.renew());
        ORVO_DONE(runOn(m_other, {"export", second}));
        QCOMPARE(run({"import", second}).code, 0);
        QVERIFY(content() == bytes);
        QCOMPARE(run({"check"}).code, 0);
    }

    void oddValuesComeThrough() {
        QVERIFY(
            m_kind.byHand("INSERT INTO \"MenuResource\" (\"KeyLink\", \"MenuResourceFolderKey\", "
                          "\"name_\", \"type_\", "
                          "\"caption\", \"dateTimeEdit\") VALUES "
                          "('B', 'nowhere', '', -2147483648, '\" \\ / «ё» 李 😀', 0.1),"
                          "('a', NULL, NULL, 2147483647, 'строка\tи' || '\n' || 'ещё', 1e300),"
                          "('~ !', NULL, ' ', 0, '\x7f', 1700000000.123456),"
                          "('c', NULL, 'x', NULL, NULL, -1e-300), ('d', NULL, 'x', 1, '', "
                          "123456789012345678901234.0);"));
        const QByteArray before = exported();
        QVERIFY2(before.contains("\"caption\":\"\\\" \\\\ / «ё» 李 😀\",\"dateTimeEdit\":0.1}"),
                 before);
        QVERIFY(m_other.renew());
        const AdminResult there = runOn(m_other, {"import", m_admin->write("1.json", before)});
        QVERIFY2(there.code == 0, qPrintable(there.err));
        QCOMPARE(content(m_other), before);
    }

    void contentsOfAllSizesComeThrough() {
        QStringList files;
        // Around the pieces of an export, and those of a database.
        for (const int size : {0, 1, 2, 3, 49151, 49152, 49153, 524287, 524288, 524289, 3000000}) {
            QByteArray bytes(size, '\0');
            for (int i = 0; i < size; ++i)
                bytes[i] = static_cast<char>(i * 31 + i / 255);
            files << m_admin->write(QString("src/f%1.bin").arg(size), bytes);
        }
        ORVO_DONE(run(QStringList{"put", "file"} + files));
        QVERIFY(m_other.renew());
        const QByteArray before = exported();
        QCOMPARE(runOn(m_other, {"import", m_admin->write("1.json", before)}).code, 0);
        QVERIFY(content(m_other) == before);
        QDir().mkpath(m_admin->path("out"));
        for (const QString& file : files) {
            const QString name = QFileInfo(file).fileName();
            ORVO_DONE(runOn(m_other, {"get", "file", name, m_admin->path("out")}));
            QVERIFY(AdminRun::read(m_admin->path("out/" + name)) == AdminRun::read(file));
        }
    }

    void exportReplacesTheFileAtOnce() {
        const QString file = m_admin->write("out.json", "old");
        ORVO_DONE(run({"export", file}));
        QVERIFY(
            AdminRun::read(file).startsWith("{\n\"format\": \"orvo-export\",\n\"version\": 1,\n"));
        QCOMPARE(QFileInfo(file).permissions() & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
        QCOMPARE(QDir(m_admin->path()).entryList(QDir::Files), QStringList{"out.json"});
    }

    void exportRefusesPlacesThatAreNoFiles() {
        ORVO_REFUSED(run({"export", m_admin->path()}), "это каталог");
        ORVO_REFUSED(run({"export", "/dev/null"}), "не обычный файл");
        ORVO_REFUSED(run({"export", m_admin->path("none/x.json")}), "не записан");
        ORVO_REFUSED(run({"export", ""}), "имя пустое");
    }

    void anExportedUserHasNoPassword() {
        if (!isPostgres())
            QSKIP("no passwords there");
        QVERIFY(m_kind.byHand(
            "DROP ROLE IF EXISTS olga_x; CREATE ROLE olga_x LOGIN PASSWORD 'Qwerty7';"
            "INSERT INTO \"Users\" (\"KeyLink\", \"login_\") VALUES ('k', 'olga_x');"));
        const QByteArray json = exported();
        QVERIFY(json.contains("olga_x"));
        QVERIFY(!json.contains("Qwerty7") && !json.contains("SCRAM"));
        QVERIFY(m_kind.byHand("DROP ROLE olga_x;"));
    }

    void importFromStandardInput() {
        fillALittle();
        const QByteArray json = exported();
        QVERIFY(m_kind.renew());
        QProcess process;
        process.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                      onStore(m_kind, {"import", "-"}));
        process.write(json);
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(exported(), json);
    }

    void aStoreInUseNeedsReplace() {
        const QByteArray empty = exported();
        fillALittle();
        const QByteArray full = exported();
        ORVO_REFUSED(import(empty), "не пустое");
        QCOMPARE(exported(), full);
        QCOMPARE(import(empty, {"--replace"}).code, 0);
        QCOMPARE(exported(), empty);
        QCOMPARE(import(full).code, 0);
        QCOMPARE(exported(), full);
    }

    void replacingIsLoggedRecordByRecord() {
        fillALittle();
        const QByteArray json = exported();
        const auto reader = open();
        int64_t position = 0;
        QVERIFY(reader->logPosition(&position).ok());
        QCOMPARE(import(json, {"--replace"}).code, 0);
        std::vector<orvo::store::Change> changes;
        QVERIFY(reader->readLog(position, 1000, &changes).ok());
        std::map<int, int> codes;
        for (const auto& change : changes) {
            ++codes[change.code];
            QCOMPARE(change.login, std::string("admin"));
        }
        // Folders, user, extension, form and its content, desktop, element.
        QCOMPARE(codes, (std::map<int, int>{{601, 10}, {603, 10}}));
    }

    void circlesOfParentsAreTaken() {
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuResourceFolder\" VALUES ('a', 'b', 1, 'А'), "
                              "('b', 'a', 1, 'Б'), ('s', 's', 1, 'В');"));
        const QByteArray json = exported();
        QCOMPARE(import(json, {"--replace"}).code, 0);
        QCOMPARE(exported(), json);
        QCOMPARE(run({"check"}).code, 1);
    }

    void blanksBetweenValuesAreFree() {
        fillALittle();
        const QByteArray json = exported();
        QByteArray spread;
        bool inText = false;
        for (int i = 0; i < json.size(); ++i) {
            if (json[i] == '"' && json[i - 1] != '\\')
                inText = !inText;
            spread += json[i];
            if (!inText && (json[i] == ',' || json[i] == '{' || json[i] == ':'))
                spread += "\r\n\t ";
        }
        const AdminResult result = import(spread, {"--replace"});
        QVERIFY2(result.code == 0, qPrintable(result.err));
        QCOMPARE(exported(), json);
    }

    void whatIsWrongIsNamedAndChangesNothing_data() {
        QTest::addColumn<QByteArray>("what");
        QTest::addColumn<QByteArray>("by");
        QTest::addColumn<QString>("message");
        const auto row = [](const char* name, const char* what, const char* by,
                            const char* message) {
            QTest::newRow(name) << QByteArray(what) << QByteArray(by) << QString(message);
        };
        const char* item = "\"KeyLink\":\"item\"";
        row("another format", "orvo-export", "other", "это не выгрузка Orvo");
        row("no format", "\"format\": \"orvo-export\",\n", "", "строка 2: это не выгрузка Orvo");
        row("newer version", "\"version\": 1", "\"version\": 2", "выгрузка версии 2, известна 1");
        row("version as text", "\"version\": 1", "\"version\": \"1\"", "здесь не ждали: текст");
        row("no version", "\"version\": 1,\n", "", "нет версии");
        row("unknown name", "\"files\": [", "\"fils\": [", "неизвестное имя \"fils\"");
        row("unknown table", "\"MenuFolder\": [", "\"menufolder\": [",
            "неизвестная таблица \"menufolder\"");
        row("table twice", "\"MenuFolder\": [", "\"Menu\": [], \"Menu\": [",
            "\"Menu\" дана дважды");
        row("unknown field", item, "\"KeyLink\":\"item\",\"color\":1",
            "таблица Menu, запись 1 (ключ \"item\"): неизвестное поле \"color\"");
        row("field of another case", "\"oneCopy\"", "\"onecopy\"", "неизвестное поле \"onecopy\"");
        row("field twice", item, "\"KeyLink\":\"item\",\"KeyLink\":\"other\"",
            "поле \"KeyLink\" дано дважды");
        row("number for a text", "\"caption\":\"Пункт\"", "\"caption\":5",
            "поле \"caption\": нужно текст, а стоит число");
        row("text for a number", "\"order_\":1000", "\"order_\":\"1000\"",
            "поле \"order_\": нужно целое число, а стоит текст");
        row("fraction", "\"order_\":1000", "\"order_\":10.5",
            "нужно целое число, а стоит дробное число");
        row("number too large", "\"order_\":1000", "\"order_\":2147483648", "число слишком велико");
        row("number for a flag", "\"oneCopy\":true", "\"oneCopy\":1", "нужно true или false");
        row("object for a text", "\"caption\":\"Пункт\"", "\"caption\":{\"a\":1}",
            "а стоит объект {}");
        row("list for a text", "\"caption\":\"Пункт\"", "\"caption\":[[[[[[[[[[",
            "а стоит список []");
        row("record is a list", "\"Menu\": [\n", "\"Menu\": [\n[", "здесь не ждали: список []");
        row("record is a text", "\"Menu\": [\n", "\"Menu\": [\n\"x\",", "здесь не ждали: текст");
        row("table is an object", "\"MenuFileExt\": [\n", "\"MenuFileExt\": {}, \"x\": [",
            "здесь не ждали: объект {}");
        row("number beyond all", "\"order_\":1000", "\"order_\":1e999", "не JSON");
        row("no key", "\"KeyLink\":\"item\",", "", "в ключе KeyLink допустимы только");
        row("empty key", item, "\"KeyLink\":\"\"", "в ключе KeyLink допустимы только");
        row("key of letters", item, "\"KeyLink\":\"ключ\"", "в ключе KeyLink допустимы только");
        row("key is null", item, "\"KeyLink\":null", "в ключе KeyLink допустимы только");
        row("key twice", "\"Menu\": [\n", "\"Menu\": [\n{\"KeyLink\":\"ITEM\"},\n",
            "таблица Menu, запись 2 (ключ \"item\"): такой ключ уже есть");
        row("bad Base64", "\"data\":[\"dGV4", "\"data\":[\"!!!!", "не Base64");
        row("cut Base64", "\"data\":[\"dGV4", "\"data\":[\"GV4", "не Base64");
        row("more bytes", "\"size\":4", "\"size\":3", "больше байт, чем сказано");
        row("fewer bytes", "\"size\":4", "\"size\":5", "байт 4, а в \"size\" сказано 5");
        row("negative size", "\"size\":4", "\"size\":-1", "размер содержимого");
        row("huge size", "\"size\":4", "\"size\":2147483647", "размер содержимого");
        row("no size", "\"size\":4,", "", "перед \"data\" нет размера");
        row("no data", ",\"data\":[\"dGV4dA==\"]", "", "нет содержимого \"data\"");
        row("data is a text", "[\"dGV4dA==\"]", "\"dGV4dA==\"", "нужно список кусков Base64");
        row("data of numbers", "[\"dGV4dA==\"]", "[1]", "здесь не ждали: число");
        row("fields behind the data", "\"data\":[\"dGV4dA==\"]", "\"data\":[\"dGV4dA==\"],\"x\":1",
            "после \"data\" полей быть не может");
        row("file name that leads out", "\"name_\":\"a.ui\",\"time\"",
            "\"name_\":\"../a.ui\",\"time\"", "файлы, запись 1");
        row("file name with a backslash", "\"name_\":\"a.ui\",\"time\"",
            "\"name_\":\"..\\\\a.ui\",\"time\"", "недопустимое имя файла");
        row("no file name", "\"name_\":\"a.ui\",\"time\"", "\"time\"", "недопустимое имя файла");
        row("no UTF-8", "Пункт", "\xff\xfe", "не JSON");
        row("half a surrogate", "Пункт", "\\ud83d", "не JSON");
        row("something behind", "]\n}\n", "]\n}\n{}", "не JSON");
        row("no JSON", "{\n\"format\"", "<xml>", "строка 1: это не JSON");
    }

    void whatIsWrongIsNamedAndChangesNothing() {
        QFETCH(QByteArray, what);
        QFETCH(QByteArray, by);
        QFETCH(QString, message);
        if (m_good.isEmpty()) {
            fillALittle();
            m_good = exported();
        }
        QByteArray bad = m_good;
        const int at = what == "]\n}\n" ? bad.lastIndexOf(what) : bad.indexOf(what);
        QVERIFY2(at >= 0, bad);
        bad.replace(at, what.size(), by);
        const AdminResult result = import(bad, {"--replace"});
        QVERIFY2(result.refused("ничего не загружено: строка "), qPrintable(result.err));
        QVERIFY2(result.err.contains(message), qPrintable(result.err));
        QCOMPARE(exported(), m_good);
        // The line that is named is the one that was made bad.
        const int line = bad.left(at + by.size()).count('\n') + 1;
        const int named =
            result.err.section("строка ", 1).section(QRegularExpression("\\D"), 0, 0).toInt();
        QVERIFY2(qAbs(named - line) <= 1, qPrintable(QString::number(line) + ": " + result.err));
    }

    void missingPartsAreNamed() {
        const QByteArray good = exported();
        QByteArray bad = good;
        bad.replace("\"MenuFileExt\": [\n],\n", "");
        ORVO_REFUSED(import(bad), "нет таблицы \"MenuFileExt\"");
        bad = good;
        bad.replace(",\n\"files\": [\n]", "");
        ORVO_REFUSED(import(bad), "нет списка \"files\"");
        ORVO_REFUSED(import("{\"format\":\"orvo-export\",\"version\":1,\"files\":[]}"),
                     "нет таблиц \"tables\"");
        QCOMPARE(exported(), good);
    }

    void everyCutOffFileIsRefused() {
        fillALittle();
        const QByteArray good = exported();
        for (int size = 0; size < good.size() - 1; size += 1 + good.size() / 25) {
            const AdminResult result = import(good.left(size), {"--replace"});
            QVERIFY2(result.refused("файл оборван"),
                     qPrintable(QString::number(size) + result.err));
        }
        QCOMPARE(exported(), good);
    }

    void textThatIsNoUtf8IsNotExported() {
        if (isPostgres())
            QSKIP("the database lets no such text in");
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuFileExt\" VALUES ('k', CAST(x'ff' AS TEXT));"));
        ORVO_REFUSED(run({"export", m_admin->path("x.json")}),
                     "запись \"k\", поле \"fileExt\": текст не в кодировке UTF-8");
        QVERIFY(QDir(m_admin->path()).entryList(QDir::Files).isEmpty());
    }

    void importersNameUsersWithoutLogins() {
        QVERIFY(m_kind.byHand(
            "INSERT INTO \"Users\" (\"KeyLink\", \"login_\") VALUES ('k', 'ghost_x');"));
        const AdminResult result = import(exported(), {"--replace"});
        QCOMPARE(result.code, 0);
        QCOMPARE(result.out.contains("без входа на сервер (дать его: orvo-admin user login ВХОД): "
                                     "ghost_x\n"),
                 isPostgres());
    }

    void progressShowsOnlyWhenAsked() {
        ORVO_DONE(run({"export", m_admin->path("x.json")}));
        const AdminResult result = run({"export", "--progress", m_admin->path("x.json")});
        QCOMPARE(result.code, 0);
        QVERIFY2(result.err.startsWith("выгрузка: "), qPrintable(result.err));
    }

    void longWorkTellsEveryTenSecondsUnasked() {
        if (!qEnvironmentVariableIsSet("ORVO_LONG_WORK"))
            QSKIP("takes 11 seconds: ./orvo soak");
        fillALittle();
        const QByteArray json = exported();
        QProcess import;
        import.start(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin",
                     onStore(m_kind, {"import", "--replace", "-"}));
        QVERIFY(import.waitForStarted());
        import.write(json.left(json.size() / 2));
        QVERIFY(!import.waitForFinished(10500));
        import.write(json.mid(json.size() / 2));
        import.closeWriteChannel();
        QVERIFY(import.waitForFinished(60000));
        QCOMPARE(import.exitCode(), 0);
        const QString told = QString::fromUtf8(import.readAllStandardError());
        QVERIFY2(told.contains(QRegularExpression("^загрузка: \\d+ (%|МБ)\n$")), qPrintable(told));
    }

private:
    static constexpr const char* hostile = "whatIsWrongIsNamedAndChangesNothing";
    QByteArray m_good; ///< what the store holds while the hostile files are tried

    /// A small installation with one of everything.
    void fillALittle() const {
        QCOMPARE(run({"user", "add", "anna_x", "--last", "Иванова"}).code, 0);
        QCOMPARE(run({"ext", "add", ".ui"}).code, 0);
        QCOMPARE(run({"put", "form", m_admin->write("src/a.ui", "text")}).code, 0);
        QVERIFY(m_kind.byHand("INSERT INTO \"MenuFolder\" (\"KeyLink\", \"caption\", \"order_\", "
                              "\"isFolder\") VALUES "
                              "('desk', 'Стол', '2000', '0');"
                              "INSERT INTO \"Menu\" (\"KeyLink\", \"FolderKey\", \"caption\", "
                              "\"order_\", \"oneCopy\") "
                              "VALUES "
                              "('item', 'desk', 'Пункт', 1000, '1');"));
    }

    QByteArray exported() const { return content(); }
    AdminResult import(const QByteArray& json, const QStringList& options = {}) const {
        return run(QStringList{"import"} + options + QStringList{m_admin->write("in.json", json)});
    }
};

int main(int argc, char** argv) {
    return runOnAllKinds<TestAdminTransfer>(argc, argv);
}
#include "tst_admin_transfer.moc"
