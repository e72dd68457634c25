// Draws the pictures of the documentation: works with a real client on the demonstration
// installation as a reader would, with mouse and keyboard, and takes what is on the screen.
//
// orvo-pictures FOLDER: to be run on a display of its own, with ORVO_BIN_DIR set.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>

#include <cstdio>
#include <cstdlib>

using namespace orvo::test;

namespace {

constexpr QRect windowPlace(4, 24, 1360, 760);

[[noreturn]] void give(const QString& why) {
    std::fprintf(stderr, "orvo-pictures: %s\n", qUtf8Printable(why));
    std::exit(1);
}

class Painter {
public:
    explicit Painter(const QString& folder) : m_folder(folder) {
        QDir().mkpath(folder);
        if (!m_scene.startLeft({"Resources"}, "demo", windowPlace))
            give(m_scene.why());
    }

    void need(bool done) const {
        if (!done)
            give(m_scene.why());
    }
    void choose(const char* row) { need(m_scene.clickRow(client(), "tvRes", row)); }
    void open(const char* row) {
        choose(row);
        hands::key("Right");
    }
    void scrollToTop() {
        hands::key("ctrl+Home");
        hands::key("Home");
    }
    ClientProcess& client() { return m_scene.left(); }
    Scene& scene() { return m_scene; }

    /// The window with whatever is open above it.
    void take(const char* name) {
        need(m_scene.waitFor("the client rests", [&] { return client().settled(); }));
        hands::xdotool({"mousemove", "1390", "990"}); // no tool tip, no lit button
        QThread::msleep(700);
        const QString crop = QString("%1x%2+%3+%4")
                                 .arg(windowPlace.width())
                                 .arg(windowPlace.height())
                                 .arg(windowPlace.x())
                                 .arg(windowPlace.y());
        if (QProcess::execute("import", {"-window", "root", "-crop", crop, "+repage", "-strip",
                                         m_folder + '/' + name}) != 0)
            give(QString("%1 could not be taken").arg(name));
    }

private:
    const QString m_folder;
    Scene m_scene;
};

} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication app(argc, argv);
    if (argc != 2)
        give("which folder?");
    Painter painter(argv[1]);

    painter.open("модули");
    painter.open("формы отображения");
    painter.open("КС-1 Верхнеозёрск");
    painter.choose("КС-1: агрегаты");
    painter.take("resources.png");

    painter.open("Энергоснабжение и связь");
    painter.choose("Однолинейная схема 10 кВ");
    painter.take("locked-form.png");

    painter.need(
        painter.scene().clickRow(painter.client(), "tvRes", "Однолинейная схема 10 кВ", {}, 3));
    painter.take("context-menu.png");
    hands::key("Escape");

    painter.choose("Инструкция оператора ГРС");
    painter.take("file-passport.png");

    painter.need(painter.scene().store().foreignWrite(
        "update MenuResource set caption = 'Инструкция оператора ГРС, 2-я редакция' "
        "where caption = 'Инструкция оператора ГРС'"));
    hands::key("F4");
    painter.need(painter.scene().waitFor("the history is there", [&] {
        return !painter.client().tree("historyTree").rows.empty();
    }));
    hands::key("Home");
    hands::key("Right");
    painter.take("history.png");
    painter.need(painter.scene().press(painter.client(), "historyRevert"));
    painter.take("history-preview.png");
    hands::key("Escape");
    return 0;
}
