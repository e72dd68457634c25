// The window at a first start, on the screen that the display has: all of it is in sight.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QDir>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <QTemporaryDir>
#include <QtTest>

using namespace orvo::test;

class TestFirstWindow : public QObject {
    Q_OBJECT

    static QRect placeOf(ClientProcess& client) {
        for (const QJsonValue& one : client.ask("windows")["windows"].toArray())
            if (one.toObject()["name"].toString() == "clientWindow") {
                const QJsonArray r = one.toObject()["rect"].toArray();
                return {r[0].toInt(), r[1].toInt(), r[2].toInt(), r[3].toInt()};
            }
        return {};
    }

private slots:
    void itFitsTheScreen() {
        Scene scene;
        QVERIFY2(scene.startLeft({"Menu", "Resources"}, "left", QRect()), scene.why());
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QRect window;
        const auto place = [&] { return window = placeOf(scene.left()); };
        // The window manager may take its time with it.
        const bool fits =
            scene.waitFor("the window is in sight", [&] { return screen.contains(place()); });
        QVERIFY2(fits, qPrintable(QString("%1x%2 at %3,%4")
                                      .arg(window.width())
                                      .arg(window.height())
                                      .arg(window.x())
                                      .arg(window.y())));
        // The status line, which is the lowest of it.
        const std::vector<Control> user = scene.left().controls("userLabel");
        QCOMPARE(user.size(), size_t(1));
        QVERIFY(screen.contains(user.front().rect));
        QVERIFY(window.width() > 900);
    }

    void theStatusLineHoldsItNoWiderThanTheScreen() {
        Scene scene;
        const QString store = scene.store().url().mid(int(strlen("sqlite://")));
        QTemporaryDir directory;
        const QString far =
            directory.path() + "/servers/dispatcher/installations/compressor-stations/orvo";
        QVERIFY(QDir().mkpath(QFileInfo(far).path()));
        QVERIFY(QFile::link(QFileInfo(store).path(), far));
        const QString url = "sqlite://" + far + '/' + QFileInfo(store).fileName();
        ClientProcess other(directory.path(), url, "another.engineer", QRect());
        QVERIFY(other.waitUp());
        ClientProcess client(directory.path(), url, "left", QRect(), {"Menu", "Resources"});
        QVERIFY(client.waitUp());

        QVERIFY(scene.store().foreignWrite("update Menu set ico = 'gone.png' where ico <> ''"));
        QVERIFY(scene.store().foreignWrite(
            "create trigger refused before update on Menu when new.caption = 'refused' begin "
            "select raise(abort, 'the disk behind the installation is full until tomorrow'); end"));
        const auto renames = [&](const char* text) {
            return scene.fill(client, "Наименование", text) && scene.press(client, "Сохранить") &&
                   scene.waitFor("the client rests", [&] { return client.settled(); });
        };
        QVERIFY2(scene.clickRow(client, "tvDesck", "КС-1 «Верхнеозёрск»"), scene.why());
        QVERIFY2(scene.clickRow(client, "tvMenu", "Общая схема КС-1"), scene.why());
        QVERIFY2(renames("renamed"), scene.why());
        QVERIFY2(renames("refused"), scene.why());
        QVERIFY(scene.waitFor("the failure is told", [&] { return !client.failure().isEmpty(); }));
        QVERIFY2(scene.clickRow(client, "tvMenu", "Агрегаты"), scene.why());
        QVERIFY(hands::key("ctrl+z"));
        Control done;
        QVERIFY(scene.waitFor("what was done is told", [&] {
            const std::vector<Control> found = client.controls("doneLabel");
            done = found.empty() ? Control() : found.front();
            return done.visible && done.text.contains("renamed");
        }));

        QVERIFY(scene.waitFor("the problems are counted", [&] {
            const std::vector<Control> found = client.controls("problemsButton");
            return found.size() == 1 && found.front().visible && client.settled();
        }));

        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QRect window = placeOf(client);
        QVERIFY2(screen.left() <= window.left() && window.right() <= screen.right(),
                 qPrintable(QString("%1 wide at %2").arg(window.width()).arg(window.x())));
        // Asked one after the other, while parts may still come: until nothing moves.
        QByteArray wrong;
        const bool inOrder = scene.waitFor("the status line is in order", [&] {
            wrong.clear();
            int right = window.left();
            for (const char* name : {"storeLabel", "userLabel", "othersLabel", "problemsButton",
                                     "doneLabel", "failureButton"}) {
                const std::vector<Control> found = client.controls(name);
                const QRect rect = found.empty() ? QRect() : found.front().rect;
                if (found.size() != 1 || !found.front().visible || rect.left() < right ||
                    rect.right() > window.right() || rect.width() < 40)
                    wrong = name;
                right = rect.right();
            }
            return wrong.isEmpty();
        });
        QVERIFY2(inOrder, wrong.constData());
        QVERIFY2(done.rect.width() >= 200, qPrintable(QString::number(done.rect.width())));
    }
};

QTEST_MAIN(TestFirstWindow)
#include "tst_first_window.moc"
