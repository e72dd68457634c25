// A module library as the client loads one: a window with a list of what it was told.
#include "frame/OrvoClient.h"

#include <QLabel>

#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

class TestWindow : public COrvoCliMod {
public:
    explicit TestWindow(COrvoCliApp* app) : COrvoCliMod(app), m_label(new QLabel(this)) {
        m_label->setAlignment(Qt::AlignCenter);
        setCentralWidget(m_label);
    }
    bool ModuleStart() override {
        SetModTitle(QStringLiteral("Проба ") + m_moduleName, {});
        // What the test asks for through the environment.
        if (std::getenv("ORVO_TEST_FAIL_START")) {
            m_app->m_logModule->LogFile(5, "TestWindow::ModuleStart", "не вышло");
            return false;
        }
        if (std::getenv("ORVO_TEST_RUN_FILE")) {
            const void* block[3] = {nullptr, "RUN_FILE", std::getenv("ORVO_TEST_RUN_FILE")};
            doCall(64, block);
        }
        m_label->setText(m_paths->workDir + "\n" + m_moduleName);
        return true;
    }

private:
    QLabel* m_label; ///< child of the window
};

} // namespace

extern "C" __attribute__((visibility("default"))) void* CppCliModule(COrvoCliApp* app,
                                                                     const char* name) {
    if (!name || (strcasecmp(name, "Menu") != 0 && strcasecmp(name, "Resources") != 0))
        return nullptr;
    return static_cast<COrvoCliMod*>(new TestWindow(app));
}
