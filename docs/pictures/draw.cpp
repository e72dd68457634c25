// Draws the pictures of the documentation: works with a real client on the demonstration
// installation as a reader would, with mouse and keyboard, and takes what is on the screen.
//
// orvo-pictures FOLDER: to be run on a display of its own, with ORVO_BIN_DIR set.
#include "tests/e2e/Hands.h"
#include "tests/e2e/Scene.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
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
    /// As another engineer of the installation does it.
    void writeAs(const char* login, const char* sql) {
        need(m_scene.store().foreignWrite(
            QString("update NciWriter set login = '%1'; %2; update NciWriter set login = ''")
                .arg(QString(login), QString(sql))));
    }
    void scrollToTop() {
        hands::key("ctrl+Home");
        hands::key("Home");
    }
    ClientProcess& client() { return m_scene.left(); }
    Scene& scene() { return m_scene; }

    /// The window with whatever is open above it.
    void take(const char* name) { take(name, client()); }
    /// The mouse stands beside the window as a rule: no tool tip, no lit button.
    void take(const char* name, ClientProcess& client, const QPoint& mouse = {1390, 990}) {
        need(m_scene.waitFor("the client rests", [&] { return client.settled(); }));
        hands::moveTo(mouse);
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

/// What an operator has, and how an engineer sees it beforehand.
void drawDesktops(Painter& painter) {
    const QString station = "КС-1 «Верхнеозёрск»";
    const char* const menu = "deskTree";
    Scene& scene = painter.scene();
    painter.need(scene.startOperator(
        station, {"--modules", qEnvironmentVariable("ORVO_BIN_DIR") + "/../examples/modules"},
        windowPlace));
    ClientProcess& desk = scene.right();
    const auto clickOn = [&](const char* caption) {
        QThread::msleep(700); // no double click
        painter.need(scene.clickRow(desk, menu, caption));
    };
    const auto opened = [&](int count) {
        painter.need(scene.waitFor("it is open",
                                   [&] { return desk.ask("state")["opened"].toInt() == count; }));
        QThread::msleep(1500); // what is shown comes from another process
    };
    clickOn("Журнал событий станции");
    opened(1);
    clickOn("Вспомогательные системы");
    clickOn("Агрегаты");
    opened(2);
    painter.take("operator.png", desk);
    clickOn("Котельная"); // a module that nobody has installed
    painter.take("operator-missing.png", desk);
    scene.stopRight();

    painter.need(scene.startLeft({"Menu"}, "demo", windowPlace));
    painter.need(scene.clickRow(painter.client(), "tvDesck", station));
    hands::key("F5");
    painter.need(scene.waitFor("the preview is there",
                               [&] { return painter.client().tree(menu).find("Агрегаты") >= 0; }));
    painter.need(scene.clickRow(painter.client(), "tvMenu", "Крановая обвязка"));
    painter.need(scene.fill(painter.client(), "Наименование", "GPA 1-7"));
    painter.take("operator-preview.png");
}

/// The earlier contents of the file that is chosen, which another has replaced.
void drawVersions(Painter& painter) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("instr_grs.txt"));
    if (!file.open(QIODevice::WriteOnly) || file.write("Инструкция оператора ГРС\n") <= 0)
        give(file.errorString());
    file.close();
    if (painter.scene().admin({"put", "file", "--path", "Документы/Инструкции", file.fileName()}) !=
        0)
        give("no new contents");
    hands::key("ctrl+h");
    painter.need(painter.scene().waitFor("the versions are listed", [&] {
        return !painter.client().tree("versionsList").rows.empty();
    }));
    painter.take("versions.png");
    hands::key("Escape");
}

/// An edit that meets another one, the field of a search, and the picker in both its shapes.
void drawEdits(Painter& painter) {
    Scene& scene = painter.scene();
    painter.need(scene.startLeft({"Menu"}, "demo", windowPlace));
    ClientProcess& client = painter.client();
    painter.need(scene.clickRow(client, "tvDesck", "КС-1 «Верхнеозёрск»"));
    painter.need(scene.clickRow(client, "tvMenu", "Агрегаты"));
    hands::key("ctrl+f");
    hands::xdotool({"type", "--delay", "100", "кран"}); // each letter is given a key first
    painter.take("search.png");
    hands::key("Escape");
    painter.need(scene.clickRow(client, "tvMenu", "Крановая обвязка"));
    painter.need(scene.fill(client, "Наименование", "GPA 1-7"));
    hands::key("Return");
    painter.writeAs("sorokin", "update Menu set caption = 'Крановая обвязка (ремонт)' where "
                               "caption = 'Крановая обвязка'");
    hands::key("ctrl+s");
    painter.need(scene.waitFor("what is not written is listed",
                               [&] { return !client.tree("unwrittenTree").rows.empty(); }));
    painter.take("unwritten.png");
    painter.need(scene.press(client, "unwrittenGiveUp"));
    painter.need(scene.waitFor("the list is empty",
                               [&] { return client.tree("unwrittenTree").rows.empty(); }));
    const auto listed = [&] {
        painter.need(scene.waitFor("the resources are listed",
                                   [&] { return !client.tree("tvObj").rows.empty(); }));
    };
    painter.need(scene.clickRow(client, "tvMenu", "Агрегаты"));
    hands::key("ctrl+1");
    listed();
    painter.take("picker.png");
    hands::key("Escape");
    painter.need(scene.clickRow(client, "tvMenu", "Агрегаты"));
    hands::key("F7");
    listed();
    const auto row = scene.reveal(client, "tvObj", "Trends");
    painter.need(row.has_value());
    painter.take("palette.png", client, {row->left() + 20, row->center().y()});
    painter.writeAs("sorokin", "update Menu set caption = 'Крановая обвязка' where caption = "
                               "'Крановая обвязка (ремонт)'");
}

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

    // So that a menu below the row has room in the window.
    for (const char* folder : {"КС-1 Верхнеозёрск", "модули"}) {
        painter.choose(folder);
        hands::key("Left");
    }
    painter.open("Энергоснабжение и связь");
    painter.choose("Однолинейная схема 10 кВ");
    painter.take("locked-form.png");

    painter.need(
        painter.scene().clickRow(painter.client(), "tvRes", "Однолинейная схема 10 кВ", {}, 3));
    painter.take("context-menu.png");
    hands::key("Escape");

    painter.choose("Инструкция оператора ГРС");
    painter.take("file-passport.png");

    drawVersions(painter);

    hands::key("ctrl+k");
    painter.need(painter.scene().waitFor("there is something to find", [&] {
        return !painter.client().controls("findNote").empty();
    }));
    hands::type("instr");
    painter.need(painter.scene().waitFor(
        "it is found", [&] { return !painter.client().tree("findList").rows.empty(); }));
    painter.take("find.png");
    hands::key("Escape");

    painter.writeAs("kovaleva", "update MenuResource set params = 'печать=да', caption = "
                                "'Инструкция оператора ГРС, 2-я редакция' where name_ = "
                                "'instr_grs.txt'");
    painter.writeAs("sorokin", "update MenuResource set caption = 'Инструкция оператора ГРС, 3-я "
                               "редакция' where name_ = 'instr_grs.txt'");
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
    hands::key("F4"); // away, and back with the focus in it
    hands::key("F4");
    hands::key("Home");
    hands::key("Left");
    hands::key("Down");
    painter.need(painter.scene().press(painter.client(), "historyRevert"));
    painter.take("history-conflict.png");
    hands::key("Escape");
    painter.writeAs("sorokin", "update Menu set ico = 'old_pump.png' where caption like 'Насос%'");
    painter.writeAs("sorokin", "update MenuFolder set ParentKey = 'deleted' where caption = "
                               "'КС-2 «Кедровый Лог»'");
    hands::key("F8");
    painter.need(painter.scene().waitFor("the problems are there", [&] {
        return painter.client().tree("problemsTree").rows.size() > 1;
    }));
    hands::key("Home");
    painter.take("problems.png");
    hands::key("F8");

    painter.choose("КС-1: агрегаты");
    hands::key("F9");
    painter.need(painter.scene().waitFor(
        "its places are listed", [&] { return !painter.client().tree("usesList").rows.empty(); }));
    painter.take("uses.png");
    drawEdits(painter);
    drawDesktops(painter);
    return 0;
}
