// FindFixture.h: a client in an active window, for tests in which the focus goes from part to part.
#ifndef ORVO_TESTS_CLIENT_FINDFIXTURE_H
#define ORVO_TESTS_CLIENT_FINDFIXTURE_H

#include "tests/client/RunningClient.h"

namespace orvo::test {

/// Letters of any alphabet, which QTest's own key clicks have not.
inline void keyClicks(QWidget* widget, const QString& text) {
    for (const QChar letter : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(letter));
        QApplication::sendEvent(widget, &press);
    }
}

struct FindFixture : RunningClient {
    FindFixture() { activate(); }
    void activate() const {
        client->window()->activateWindow();
        if (!QTest::qWaitForWindowActive(client->window()))
            qWarning("the window is not active");
    }
    /// What is written is there when the editors open.
    template <class Write>
    void beforeTheStart(const Write& write) {
        stop();
        write();
        start();
        activate();
    }
    void addModules(int count) {
        otherWrites(MDX_INSERT, {{"KeyLink", "rf"}, {"caption", "модули"}, {"type_", "1"}},
                    "MenuResourceFolder");
        for (int i = 1; i <= count; ++i)
            otherWrites(MDX_INSERT,
                        {{"KeyLink", "r" + std::to_string(i)},
                         {"caption", "Тренд " + std::to_string(i)},
                         {"name_", "Trends" + std::to_string(i)},
                         {"type_", "1"},
                         {"MenuResourceFolderKey", "rf"}},
                        "MenuResource");
    }
    QString currentElement() const {
        return view("tvMenu")->currentIndex().siblingAtColumn(0).data().toString();
    }
};

} // namespace orvo::test

#endif
