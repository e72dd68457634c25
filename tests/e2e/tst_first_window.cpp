// The window at a first start, on the screen that the display has: all of it is in sight.
#include "tests/e2e/Scene.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <QtTest>

using namespace orvo::test;

class TestFirstWindow : public QObject {
    Q_OBJECT
private slots:
    void itFitsTheScreen() {
        Scene scene;
        QVERIFY2(scene.startLeft({"Menu", "Resources"}, "left", QRect()), scene.why());
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QRect window;
        const auto place = [&] {
            for (const QJsonValue& one : scene.left().ask("windows")["windows"].toArray())
                if (one.toObject()["name"].toString() == "clientWindow") {
                    const QJsonArray r = one.toObject()["rect"].toArray();
                    window = QRect(r[0].toInt(), r[1].toInt(), r[2].toInt(), r[3].toInt());
                }
            return window;
        };
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
};

QTEST_MAIN(TestFirstWindow)
#include "tst_first_window.moc"
