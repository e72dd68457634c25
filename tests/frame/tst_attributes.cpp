// Attribute words, user captions, file checks, and the table of event parameters.
#include "Tables.h"

#include "frame/CommonFunctions.h"
#include "frame/EventParameters.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace orvo;
using namespace tables;

namespace {

struct Users {
    CMDArray table;
    Users() {
        define(table, {{"KeyLink", MDX_TEXT},
                       {"login_", MDX_TEXT},
                       {"lastName", MDX_TEXT},
                       {"firstName", MDX_TEXT},
                       {"midlName", MDX_TEXT},
                       {"program", MDX_BOOLEAN}});
    }
    MDRData* user(const QStringList& names, bool program = false) {
        MDRData* record = MDARecNew(table.array);
        for (int i = 0; i < names.size(); ++i) {
            const QByteArray bytes = toRecord(names.at(i));
            if (!names.at(i).isNull())
                table.SetValF(record, i + 1, textVar(bytes));
        }
        table.SetValF(record, "program", booleanVar(program));
        return record;
    }
};

using Names = std::vector<std::string>;

Names split(const char* text) {
    Names names;
    for (const QString& name : QString(text).split(' ', Qt::SkipEmptyParts))
        names.push_back(name.toStdString());
    return names;
}

Names operator+(Names a, const char* further) {
    for (const std::string& name : split(further))
        a.push_back(name);
    return a;
}

std::vector<uint32_t> keys() {
    std::vector<uint32_t> list;
    const QString text =
        "101-105 108 109 703 112 113 116-119 125 126 201 202 205-212 215-222 301-304 306 501 "
        "601-612 621 622 625-627 631 641 701-703 710 711 801-820 901-904 1101-1105 1107 1108 1110 "
        "1201 1202 1301 1302 4001-4007 4011-4017 4101 5101 5102";
    for (const QString& part : text.split(' ')) {
        const QStringList ends = part.split('-');
        for (uint key = ends.first().toUInt(); key <= ends.last().toUInt(); ++key)
            list.push_back(key);
    }
    return list;
}

} // namespace

class Attributes : public QObject {
    Q_OBJECT
private slots:
    void codesBecomeWords() {
        QCOMPARE(convertMenuAttributes(0), QString("папка"));
        QCOMPARE(convertMenuAttributes(1), QString("модуль"));
        QCOMPARE(convertMenuAttributes(2), QString("функция"));
        QCOMPARE(convertMenuAttributes(3), QString("файл"));
        for (const int code : {-1, 4, 5, 100, std::numeric_limits<int>::min()})
            QVERIFY(convertMenuAttributes(code).isEmpty());
    }

    void wordsBecomeCodesWithoutRegardToCase() {
        QCOMPARE(getMenuAttributes("папка"), 0);
        QCOMPARE(getMenuAttributes("МОДУЛЬ"), 1);
        QCOMPARE(getMenuAttributes("Функция"), 2);
        QCOMPARE(getMenuAttributes("файл"), 3);
        for (const char* word : {"", " папка", "файлы", "folder"})
            QCOMPARE(getMenuAttributes(word), -1);
        QCOMPARE(getMenuAttributes(QString()), -1);
    }

    void captions_data() {
        QTest::addColumn<QStringList>("names"); // login, family, given, patronymic
        QTest::addColumn<bool>("program");
        QTest::addColumn<QString>("caption");
        using S = QStringList;
        QTest::newRow("full name")
            << S{"ivanov", "Иванов", "Иван", "Петрович"} << false << "Иванов И.П.";
        QTest::newRow("no patronymic") << S{"ivanov", "Иванов", "Иван", ""} << false << "Иванов И.";
        QTest::newRow("no given name")
            << S{"ivanov", "Иванов", "", "Петрович"} << false << "Иванов";
        QTest::newRow("family name alone") << S{"ivanov", "Иванов"} << false << "Иванов";
        QTest::newRow("no family name") << S{"ivanov", "", "Иван", "Петрович"} << false << "ivanov";
        QTest::newRow("a blank family name") << S{"ivanov", " ", "Иван"} << false << "  И.";
        QTest::newRow("given names in small letters")
            << S{"ivanov", "Иванов", "иван", "петрович"} << false << "Иванов и.п.";
        QTest::newRow("a program") << S{"robot", "Иванов", "Иван", "Петрович"} << true << "robot";
        QTest::newRow("a program without names") << S{"robot"} << true << "robot";
        QTest::newRow("nothing at all") << S{} << false << "";
    }

    void captions() {
        QFETCH(QStringList, names);
        QFETCH(bool, program);
        QFETCH(QString, caption);
        Users users;
        QCOMPARE(getUserCaption(users.user(names, program), &users.table), caption);
    }

    void aCaptionWithoutRecordOrTableIsEmpty() {
        Users users;
        QVERIFY(getUserCaption(nullptr, &users.table).isEmpty());
        QVERIFY(getUserCaption(users.user({"x"}), nullptr).isEmpty());
    }

    void onlyFilesExistAsFiles() {
        QTemporaryDir dir;
        const QString path = dir.filePath("file");
        QVERIFY(!checkFileExists(path));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(checkFileExists(path));
        QVERIFY(!checkFileExists(dir.path()));
        QVERIFY(!checkFileExists(QString()));
    }

    // ---------------------------------------------------------------------------------------------
    // Event parameters

    void theEventTableHasItsRowsInOrder() {
        QCOMPARE(gEventsParameters.size(), size_t(117));
        std::vector<uint32_t> found;
        for (const ParametersForKey& row : gEventsParameters)
            found.push_back(row.key);
        QCOMPARE(found, keys());
    }

    void theEventTableHasTheParametersOfEachKey() {
        const Names place = split("equipmentName equipmentPath objectName objectPath");
        const Names ten = split("signalNum signalName signalVal signalFlg rtuId rtuName") +
                          "equipmentName equipmentPath objectName objectPath";
        const Names limits =
            split("signalNum signalName signalVal signalFlg limVal rtuId rtuName") +
            "equipmentName equipmentPath objectName objectPath";
        const Names user = split("userId username");
        const auto expected = [&](uint32_t key) -> Names {
            if (key <= 104)
                return limits;
            if (key == 108 || key == 109)
                return ten + "dupSignalNum dupSignalName signalValNoDubl signalFlgNoDubl digrDubl";
            if (key == 112 || key == 113 || key == 205 || key == 206)
                return ten + "userName";
            if (key == 211 || key == 212 || key == 702 || key == 703)
                return ten + "signalValNoDubl signalFlgNoDubl userName";
            if (key < 300 || key == 501)
                return ten;
            if (key < 400)
                return split("rtuId rtuName");
            if (key <= 603)
                return split("uuid userId username tableName serverAddr serverName");
            if (key == 621 || key == 622 || key == 1110 || key == 1302)
                return {};
            if (key == 609 || (key >= 1103 && key <= 1108))
                return user + "serverAddr serverName";
            if (key <= 612)
                return user + "tableName serverAddr serverName";
            if (key <= 627)
                return user + "schName serverAddr serverName";
            if (key == 631)
                return user + "uuid serverAddr serverName";
            if (key == 641)
                return user + "text serverAddr serverName";
            if (key == 701) {
                Names names = ten + "signalValNoDubl signalFlgNoDubl userName";
                names[2] = " signalVal";
                return names;
            }
            if (key == 710 || key == 711)
                return ten + "dupSignalNum dupSignalName signalValNoDubl signalFlgNoDubl userName";
            if (key <= 820)
                return split("signalNum signalName signalVal signalFlg limVal") +
                       "equipmentName equipmentPath objectName objectPath";
            if (key <= 904)
                return split("signalNum signalName signalVal rtuId rtuName") +
                       "equipmentName equipmentPath objectName objectPath userName";
            if (key <= 1102)
                return split("serverAddr serverName");
            if (key == 1201)
                return split("serverAddr serverName text");
            if (key == 1202)
                return user + "serverAddr serverName text";
            if (key == 1301)
                return user + "serverAddr serverName tableName";
            if (key <= 4017)
                return place + "userName tneId tneName";
            if (key == 4101)
                return split("tneId tneName");
            return place + "userName noteName";
        };
        for (const ParametersForKey& row : gEventsParameters) {
            if (row.parameters != expected(row.key))
                QFAIL(qPrintable(QString("parameters of %1").arg(row.key)));
        }
    }

    void theSlipsOfTheEventTableStand() {
        QCOMPARE(gEventsParameters.at(6).key, 109u);
        QCOMPARE(gEventsParameters.at(7).key, 703u);
        QCOMPARE(gEventsParameters.at(8).key, 112u);
        std::vector<const ParametersForKey*> twice;
        size_t blanks = 0;
        for (const ParametersForKey& row : gEventsParameters) {
            if (row.key == 703)
                twice.push_back(&row);
            for (const std::string& name : row.parameters) {
                if (name.front() == ' ') {
                    ++blanks;
                    QCOMPARE(row.key, 701u);
                    QCOMPARE(name, std::string(" signalVal"));
                }
            }
        }
        QCOMPARE(blanks, size_t(1));
        QCOMPARE(twice.size(), size_t(2));
        QCOMPARE(twice[0]->parameters, twice[1]->parameters);
    }

    void theBlanksStandAlone() {
        QCOMPARE(gBlanksParameters.key, 0u);
        QCOMPARE(gBlanksParameters.parameters, split("text list equipmentName"));
    }
};

QTEST_GUILESS_MAIN(Attributes)
#include "tst_attributes.moc"
