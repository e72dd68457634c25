// Choosing a store: the page, the dialog for a server, what is remembered and what is not.
#include "apps/client/FocusMark.h"
#include "apps/client/start/PasswordFile.h"
#include "apps/client/start/RecentStores.h"
#include "apps/client/start/ServerDialog.h"
#include "apps/client/start/StorePage.h"
#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "tests/client/HostFixture.h"

#include <QAction>
#include <QComboBox>
#include <QCommandLinkButton>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QUrl>
#include <QUrlQuery>
#include <QtTest>

using namespace orvo;
using namespace orvo::test;
using app::ChosenStore;
using app::ServerDialog;
using app::StoreMaker;
using app::StorePage;

namespace {

const app::ServerLogin login{"db", "5432", "orvo", "ivanov"};

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("not written: %s", qUtf8Printable(path));
}

template <class Widget>
Widget* part(QWidget& of, const char* name) {
    auto* found = of.findChild<Widget*>(QLatin1String(name));
    if (!found)
        qFatal("there is no %s", name);
    return found;
}

void keepInFile(ServerDialog& dialog) {
    auto* keep = part<QComboBox>(dialog, "serverKeep");
    keep->setCurrentIndex(keep->findData(int(ServerDialog::Keep::PasswordFile)));
}

QString said(QWidget& of, const char* name) {
    return part<QLabel>(of, name)->text();
}

} // namespace

class TestStart : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { app::FocusMark::follow(); }
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        qputenv("PGPASSFILE", (m_dir->path() + "/pgpass").toUtf8());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir->path());
    }
    void cleanup() { qunsetenv("PGPASSFILE"); }

    void recentStoresAreListedOnceTheNewestFirst() {
        for (int i = 0; i < 12; ++i)
            app::rememberStore(QString("/s/%1.db").arg(i));
        app::rememberStore("/s/5.db");
        const QStringList all = app::recentStores();
        QCOMPARE(all.size(), app::mostRecentStores);
        QCOMPARE(all.mid(0, 3),
                 QStringList({"sqlite:///s/5.db", "sqlite:///s/11.db", "sqlite:///s/10.db"}));
        app::forgetStore("/s/5.db");
        QCOMPARE(app::recentStores().first(), QString("sqlite:///s/11.db"));
    }

    void noPasswordIsRemembered() {
        app::rememberStore("postgresql://ivanov:secret@db/orvo?password=secret");
        QCOMPARE(app::recentStores().size(), 1);
        for (const QFileInfo& file : QDir(m_dir->path() + "/Orvo").entryInfoList(QDir::Files))
            QVERIFY(!bytesOf(file.filePath()).contains("secret"));
    }

    void whatIsNoAddressInTheSettingsIsPassedOver() {
        QDir(m_dir->path()).mkpath("Orvo");
        write(m_dir->path() + "/Orvo/orvo-client.ini",
              "[stores]\nrecent=ftp://x, /s/a.db, \"postgresql://[\", /s/a.db\n");
        QCOMPARE(app::recentStores(), QStringList("sqlite:///s/a.db"));
        write(m_dir->path() + "/Orvo/orvo-client.ini", QByteArray(3000, '\xff'));
        QCOMPARE(app::recentStores(), QStringList());
    }

    void aPasswordStandsFirstInPlaceOfTheFormerOne() {
        const QByteArray before =
            "# mine\nother:5432:*:ivanov:x\ndb:5432:orvo:ivanov:old\n*:*:*:*:y";
        QCOMPARE(app::withPassword(before, login, "a:b\\c"),
                 QByteArray("db:5432:orvo:ivanov:a\\:b\\\\c\n# mine\nother:5432:*:ivanov:x\n"
                            "*:*:*:*:y\n"));
        QCOMPARE(app::withPassword({}, {"a:b", "1", "d\\", "u"}, "p"),
                 QByteArray("a\\:b:1:d\\\\:u:p\n"));
    }

    void thePasswordFileIsForItsOwnersEyesOnly() {
        write(app::passwordFile(), "db:5432:orvo:ivanov:old\n");
        QFile::setPermissions(app::passwordFile(), QFile::ReadOwner | QFile::WriteOwner |
                                                       QFile::ReadGroup | QFile::ReadOther);
        QString error;
        QVERIFY2(app::keepPassword(login, "new", &error), qPrintable(error));
        QCOMPARE(bytesOf(app::passwordFile()), QByteArray("db:5432:orvo:ivanov:new\n"));
        QCOMPARE(QFileInfo(app::passwordFile()).permissions() &
                     (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                 QFile::Permissions());
        QVERIFY(!app::keepPassword(login, "two\nlines", &error));
        QCOMPARE(bytesOf(app::passwordFile()), QByteArray("db:5432:orvo:ivanov:new\n"));
        qputenv("PGPASSFILE", (m_dir->path() + "/missing/pgpass").toUtf8());
        QVERIFY(!app::keepPassword(login, "new", &error));
        QVERIFY2(error.contains("missing/pgpass"), qPrintable(error));
    }

    void whatIsTypedMakesAnAddressWithoutThePassword() {
        ServerDialog dialog("Пётр@дом");
        QCOMPARE(dialog.address(), QString("postgresql://") + QUrl::toPercentEncoding("Пётр@дом") +
                                       "@localhost:5432/orvo");
        part<QLineEdit>(dialog, "serverUser")->setText(" ivanov ");
        part<QLineEdit>(dialog, "serverHost")->setText("db1, ::1,");
        part<QSpinBox>(dialog, "serverPort")->setValue(6000);
        part<QLineEdit>(dialog, "serverDatabase")->setText("a/b");
        part<QLineEdit>(dialog, "serverPassword")->setText("secret");
        QCOMPARE(dialog.address(), QString("postgresql://ivanov@db1:6000,[::1]:6000/a%2Fb"));
        dialog.accept();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.password(), QString("secret"));
        QVERIFY(!QFileInfo::exists(app::passwordFile()));
    }

    void tabGoesThroughTheRowsInTheirOrder() {
        ServerDialog dialog("ivanov");
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(part<QLineEdit>(dialog, "serverHost")->selectedText(), QString("localhost"));
        QStringList order;
        for (int i = 0; i < 5; ++i) {
            order << dialog.focusWidget()->objectName();
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order, QStringList({"serverHost", "serverPort", "serverDatabase", "serverUser",
                                     "serverPassword"}));
    }

    void aPasswordToBeKeptIsWrittenForEachHost() {
        ServerDialog dialog("ivanov");
        part<QLineEdit>(dialog, "serverHost")->setText("db1,db2");
        part<QLineEdit>(dialog, "serverPassword")->setText("secret");
        keepInFile(dialog);
        dialog.accept();
        QCOMPARE(dialog.password(), QString());
        QCOMPARE(bytesOf(app::passwordFile()),
                 QByteArray("db2:5432:orvo:ivanov:secret\ndb1:5432:orvo:ivanov:secret\n"));
    }

    void aPasswordThatCannotBeKeptKeepsTheDialogOpen() {
        qputenv("PGPASSFILE", (m_dir->path() + "/missing/pgpass").toUtf8());
        ServerDialog dialog("ivanov");
        dialog.show();
        part<QLineEdit>(dialog, "serverPassword")->setText("secret");
        keepInFile(dialog);
        dialog.accept();
        QVERIFY(dialog.isVisible());
        QVERIFY(said(dialog, "serverResult").contains("missing/pgpass"));
    }

    void theTestSaysWhatIsWrong() {
        ServerDialog dialog("ivanov");
        dialog.show();
        part<QLineEdit>(dialog, "serverHost")->setText(m_dir->path()); // no server listens there
        QTest::mouseClick(part<QPushButton>(dialog, "serverTest"), Qt::LeftButton);
        QTRY_VERIFY(part<QPushButton>(dialog, "serverTest")->isEnabled());
        QVERIFY2(said(dialog, "serverResult").contains(m_dir->path()),
                 qPrintable(said(dialog, "serverResult")));
        part<QLineEdit>(dialog, "serverHost")->clear();
        QCOMPARE(said(dialog, "serverResult"), QString());
        QVERIFY(!part<QPushButton>(dialog, "serverTest")->isEnabled());
        QVERIFY(!part<QPushButton>(dialog, "serverOpen")->isEnabled());
    }

    void theTestOfAServerSaysWhoMayWhat() {
        Host host;
        if (!QString::fromStdString(host.url).startsWith("postgresql:"))
            QSKIP("for a server");
        const QUrl url(QString::fromStdString(host.url));
        ServerDialog dialog(url.userName());
        dialog.show();
        fillFrom(dialog, url);
        QTest::mouseClick(part<QPushButton>(dialog, "serverTest"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(said(dialog, "serverResult"),
                                  QString("Хранилище открыто: пользователь %1 может читать и "
                                          "писать.")
                                      .arg(url.userName()),
                                  20000);
    }

    void aStoreIsMadeByTheAdministratorsCommand() {
        const QString file = m_dir->path() + "/new/orvo.db";
        StoreMaker maker(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin");
        QSignalSpy made(&maker, &StoreMaker::made);
        maker.make(file, true);
        QVERIFY(maker.isRunning());
        QVERIFY(made.wait(60000));
        QCOMPARE(made[0][0].toString(), QString());
        QVERIFY(!maker.isRunning());
        store::Status status;
        const auto store = store::open(file.toStdString(), {"x"}, &status);
        QVERIFY2(store, status.text.c_str());
        CMDArray desktops;
        QVERIFY(store->fetch(table::MenuFolder, desktops.array).ok());
        QVERIFY(mdx::postedCount(desktops.array) > 3);
    }

    void whatCannotBeMadeIsToldInTheWordsOfTheCommand() {
        StoreMaker maker(qEnvironmentVariable("ORVO_BIN_DIR") + "/orvo-admin");
        QSignalSpy made(&maker, &StoreMaker::made);
        const QString file = m_dir->path() + "/text.db";
        write(file, "not a database at all, but quite some text in a file");
        maker.make(file, false);
        QVERIFY(made.wait(60000));
        QVERIFY2(made[0][0].toString().contains("не является хранилищем"),
                 qPrintable(made[0][0].toString()));
        write(m_dir->path() + "/file", "x");
        maker.make(m_dir->path() + "/file/below/orvo.db", false);
        QVERIFY(made.wait(60000));
        QVERIFY(made[1][0].toString().contains("не создан"));
    }

    void aFirstStartOffersToMakeAStoreAndSaysWhatIsMissing() {
        StorePage page(m_dir->path() + "/orvo.db", "ivanov");
        page.setReason("Хранилища ещё нет.");
        page.show();
        QVERIFY(!part<QListWidget>(page, "storeRecent")->isVisible());
        QVERIFY(!part<QPushButton>(page, "storeOpen")->isVisible());
        QVERIFY(part<QLabel>(page, "storeReason")->isVisible());
        // Beside a test there is no such command.
        QTest::mouseClick(part<QCommandLinkButton>(page, "storeEmpty"), Qt::LeftButton);
        QTRY_VERIFY(said(page, "storeReason").contains("orvo-admin"));
        QVERIFY(part<QCommandLinkButton>(page, "storeEmpty")->isEnabled());
        QTest::keyClick(&page, Qt::Key_Escape);
        QVERIFY(!page.isVisible());
    }

    void theWaysAreAsHighAsTheirWords() {
        app::StorePage page(m_dir->path() + "/orvo.db", "ivanov");
        page.setReason("С чего начать?");
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        const auto heightOf = [&](const char* way) {
            return part<QCommandLinkButton>(page, way)->height();
        };
        QCOMPARE(heightOf("storeServer"), heightOf("storeFile"));
        QVERIFY(heightOf("storeServer") < heightOf("storeDemo")); // whose words take two lines
        QVERIFY(part<QLabel>(page, "storeReason")->height() < heightOf("storeFile"));
    }

    void theWayThatHasTheKeyboardIsSeen() {
        StorePage page(m_dir->path() + "/orvo.db", "ivanov");
        page.show();
        QVERIFY(QTest::qWaitForWindowActive(&page));
        const auto edge = [](QCommandLinkButton* way) {
            const QImage image = way->grab().toImage();
            std::vector<QRgb> colours;
            for (int x = image.width() / 4; x < image.width() * 3 / 4; ++x)
                colours.push_back(image.pixel(x, 0));
            return colours;
        };
        const auto ways = page.findChildren<QCommandLinkButton*>();
        for (int i = 0; i < ways.size(); ++i) {
            ways[(i + 1) % ways.size()]->setFocus(Qt::TabFocusReason);
            const auto before = edge(ways[i]);
            ways[i]->setFocus(Qt::TabFocusReason);
            QVERIFY(ways[i]->hasFocus());
            const auto now = edge(ways[i]);
            for (size_t x = 0; x < now.size(); ++x)
                QVERIFY2(now[x] != before[x], qPrintable(ways[i]->text()));
        }
    }

    void aRecentStoreIsOpenedByEnterAndForgottenByDelete() {
        const QString own = m_dir->path() + "/orvo.db";
        write(own, "x");
        app::rememberStore(m_dir->path() + "/gone.db");
        app::rememberStore("postgresql://ivanov@db/orvo");
        StorePage page(own, "ivanov");
        page.show();
        QVERIFY(page.findChild<QCommandLinkButton*>("storeOwn"));
        QVERIFY(!page.findChild<QCommandLinkButton*>("storeDemo"));
        auto* recent = part<QListWidget>(page, "storeRecent");
        QCOMPARE(recent->count(), 2);
        QVERIFY(recent->item(1)->text().endsWith("(файла нет)"));
        recent->setCurrentRow(1);
        recent->actions().first()->trigger();
        QCOMPARE(recent->count(), 1);
        QCOMPARE(app::recentStores().size(), 1);
        QVERIFY(QTest::qWaitForWindowActive(&page));
        recent->setFocus();
        QTest::keyClick(recent, Qt::Key_Return);
        QCOMPARE(page.result(), int(QDialog::Accepted));
        QCOMPARE(page.chosen().address, QString("postgresql://ivanov@db/orvo"));
    }

private:
    /// The address of a test's server names a directory of sockets in its query.
    static void fillFrom(ServerDialog& dialog, const QUrl& url) {
        const QUrlQuery query(url);
        const QString host = query.hasQueryItem("host")
                                 ? query.queryItemValue("host", QUrl::FullyDecoded)
                                 : url.host(QUrl::FullyDecoded);
        part<QLineEdit>(dialog, "serverHost")->setText(host);
        const int port =
            query.hasQueryItem("port") ? query.queryItemValue("port").toInt() : url.port(5432);
        part<QSpinBox>(dialog, "serverPort")->setValue(port);
        part<QLineEdit>(dialog, "serverDatabase")->setText(url.path().mid(1));
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(TestStart)
#include "tst_start.moc"
