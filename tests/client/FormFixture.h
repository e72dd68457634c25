// FormFixture.h: stored forms, and the window that shows them. For the tests of the form viewer.
#ifndef ORVO_TESTS_CLIENT_FORMFIXTURE_H
#define ORVO_TESTS_CLIENT_FORMFIXTURE_H

#include "apps/client/FormView.h"
#include "apps/client/FormViewer.h"
#include "tests/client/HostFixture.h"

#include <QBuffer>
#include <QImage>
#include <QTabWidget>

#include <memory>

namespace orvo::test {

constexpr int timeoutMs = 20'000; ///< a process starts slowly on a busy machine

struct FormFixture : Host {
    Module module{&app};
    QString program = qEnvironmentVariable("ORVO_PROGRAM_DIR") + "/orvo-form-view";
    app::ProcessLimits limits;
    FormFixture() {
        write("MenuResourceFolder", 1,
              {{"KeyLink", "f"}, {"type_", "3"}, {"caption", "формы отображения"}});
    }
    void put(const QList<QPair<QString, QByteArray>>& files) {
        CToolFormPut tool(&module);
        for (const auto& [name, bytes] : files)
            tool.AddFile(name, bytes.constData(), bytes.size(), 1);
        tool.Perform(false);
    }
    std::unique_ptr<app::FormWindow> open(const QString& request, QString* error = nullptr) {
        QString ignored;
        std::unique_ptr<app::FormWindow> window(
            app::openForm(store(), request, nullptr, error ? error : &ignored, program, limits));
        if (window)
            window->show();
        return window;
    }
};

inline QByteArray png(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

inline app::FormView* currentView(const app::FormWindow& window) {
    return qobject_cast<app::FormView*>(window.tabs()->currentWidget());
}

inline QWidget* canvasOf(const app::FormView& view) {
    return view.findChild<QWidget*>("formCanvas");
}

/// Whether the form shows a spot of that colour.
inline bool hasColor(const app::FormView& view, const QColor& color) {
    const QImage& image = view.canvas()->image();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y) == color)
                return true;
    return false;
}

} // namespace orvo::test

#endif
