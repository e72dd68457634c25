// A module library as the client loads one: a window with a list of what it was told.
#include "frame/OrvoClient.h"
#include "frame/modules.h"

#include <QCloseEvent>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QWindow>

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <strings.h>

namespace {

/// What the test asks for through the environment; empty: nothing.
QString asked(const char* name) {
    return qEnvironmentVariable(name);
}

class TestWindow : public COrvoCliMod {
public:
    ~TestWindow() override { note("gone"); }
    explicit TestWindow(COrvoCliApp* app) : COrvoCliMod(app), m_label(new QLabel(this)) {
        m_label->setAlignment(Qt::AlignCenter);
        setCentralWidget(m_label);
    }
    bool ModuleStart() override {
        SetModTitle(QStringLiteral("Проба ") + m_moduleName, {});
        note("start");
        if (!asked("ORVO_TEST_WINDOW").isEmpty()) {
            const auto* busy = window()->findChild<QLabel*>("busyLabel");
            const QWindow* shown = window()->windowHandle();
            note(shown && shown->isExposed() ? "in a window on show" : "in a window not shown");
            note(qPrintable("told: " + (busy->isVisible() ? busy->text() : QString())));
        }
        if (!asked("ORVO_TEST_FAIL_START").isEmpty()) {
            m_app->m_logModule->LogFile(5, "TestWindow::ModuleStart", "не вышло");
            return false;
        }
        if (!asked("ORVO_TEST_LOG").isEmpty())
            m_app->m_logModule->LogFile(5, "TestWindow::ModuleStart", asked("ORVO_TEST_LOG"));
        if (std::getenv("ORVO_TEST_RUN_FILE")) {
            const void* block[3] = {nullptr, "RUN_FILE", std::getenv("ORVO_TEST_RUN_FILE")};
            doCall(64, block);
        }
        if (asked("ORVO_TEST_CLOSE") == m_moduleName)
            QTimer::singleShot(100, this, [this] { window()->close(); });
        if (asked("ORVO_TEST_CLOSE") == "Menu in a menu")
            QTimer::singleShot(100, this, &TestWindow::closeInMenu);
        m_label->setText(m_paths->workDir + "\n" + m_moduleName);
        return true;
    }

    bool MessageData(MDXCliParam*) override {
        note("message");
        return true;
    }
    void ModuleStop() override { note("stop"); }
    void SetParamMod(QString name, QString value) override {
        note(qPrintable("param " + name + "=" + value));
    }
    void SetParamCommand(QString command) override { note(qPrintable("command " + command)); }

protected:
    void closeEvent(QCloseEvent* event) override {
        note("close");
        COrvoCliMod::closeEvent(event);
    }

private:
    /// As a user who closes the window while a slot of the module shows its context menu.
    void closeInMenu() {
        QMenu menu;
        menu.addAction(QStringLiteral("Пункт"));
        QTimer::singleShot(50, window(), [top = window()] { top->close(); });
        menu.exec(QPoint(10, 10));
        note("menu left"); // this module must still be there
    }

    void note(const char* what) {
        QFile file(asked("ORVO_TEST_LIFE"));
        if (!file.fileName().isEmpty() && file.open(QIODevice::Append))
            file.write((m_moduleName + ' ' + what + '\n').toUtf8());
    }

    QLabel* m_label; ///< child of the window
};

} // namespace

extern "C" __attribute__((visibility("default"))) void* CppCliModule(COrvoCliApp* app,
                                                                     const char* name) {
    if (name && strcasecmp(name, "Throwing") == 0)
        throw std::runtime_error("no module today");
    if (!name || (strcasecmp(name, "Menu") != 0 && strcasecmp(name, "Resources") != 0))
        return nullptr;
    return static_cast<COrvoCliMod*>(new TestWindow(app));
}

extern "C" __attribute__((visibility("default"))) int
CppCliFunction(COrvoCliApp* app, const char* name, const char* params) {
    if (strcasecmp(name, "Tell") == 0) {
        app->log(0, "Tell", QString::fromLatin1(params));
        return OrvoFunctionDone;
    }
    if (strcasecmp(name, "Fail") == 0)
        return OrvoFunctionFailed;
    if (strcasecmp(name, "Crash") == 0)
        std::abort();
    if (strcasecmp(name, "Throw") == 0)
        throw std::runtime_error("no function today");
    if (strcasecmp(name, "Window") == 0) {
        auto* window = new QLabel("Window");
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
        app->log(0, "Window", app->m_session ? "session" : "no session");
        return OrvoFunctionDone;
    }
    return OrvoFunctionUnknown;
}
