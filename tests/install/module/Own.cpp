#include <frame/OrvoClient.h>

#include <QPalette>

/// One colour all over.
class Own : public COrvoCliMod {
    Q_OBJECT
public:
    explicit Own(COrvoCliApp* app) : COrvoCliMod(app) {
        setWindowTitle(QStringLiteral("Own"));
        QPalette colours;
        colours.setColor(QPalette::Window, QColor(18, 52, 86));
        setPalette(colours);
        setAutoFillBackground(true);
    }
};

extern "C" __attribute__((visibility("default"))) void* CppCliModule(COrvoCliApp* app,
                                                                     const char* /*name*/) {
    CMDArray records; // the record library is found too
    return records.array ? static_cast<COrvoCliMod*>(new Own(app)) : nullptr;
}

#include "Own.moc"
