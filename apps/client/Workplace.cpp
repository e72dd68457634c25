#include "apps/client/Workplace.h"

#include "apps/client/DeskDock.h"
#include "apps/client/DesktopDialog.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleLibraries.h"
#include "apps/client/WindowMemory.h"
#include "frame/Keys.h"
#include "frame/OrvoClient.h"
#include "frame/Text.h"
#include "platform/client/ModuleRegistry.h"

#include <QDockWidget>
#include <QInputDialog>

namespace orvo::app {

namespace {

constexpr char moduleName[] = "Desktop";
constexpr char previewName[] = "previewDock";

} // namespace

Workplace::Workplace(const Context& context, QObject* parent)
    : QObject(parent)
    , m_context(context) {
    connect(&context.window, &MainWindow::desktopRequested, this, &Workplace::choose);
    connect(&context.window, &MainWindow::kioskEndRequested, this, &Workplace::askEndOfKiosk);
    // Queued: the pane is still in the middle of closing.
    connect(&context.window, &MainWindow::deskClosed, this, &Workplace::closed,
            Qt::QueuedConnection);
}

COrvoCliMod* Workplace::makeDesk(const QString& desktop, Qt::DockWidgetArea area,
                                 const QString& name) {
    const QString module = QLatin1String(moduleName);
    COrvoCliMod* desk = m_context.libraries.create(&m_context.app, module);
    if (!desk) {
        emit problem(module, Text::tr("Ни одна библиотека модулей не умеет показывать "
                                      "рабочий стол."));
        return nullptr;
    }
    m_context.modules.add(desk, module);
    desk->SetParamMod(QStringLiteral("desktop"), desktop);
    DeskDock* dock = m_context.window.addDesk(
        desk, area, name, m_context.memory ? m_context.memory->paneWidth(name) : 0);
    if (name == QLatin1String(previewName))
        dock->closeBy({keys::preview, keys::closeTab});
    return desk;
}

void Workplace::stopDesk(COrvoCliMod* desk) {
    rememberWidth(desk);
    m_context.modules.stop(desk);
}

/// The pane of a desktop goes with it, and what the window knows of the pane with that.
void Workplace::rememberWidth(const COrvoCliMod* desk) const {
    QDockWidget* dock = DeskDock::of(desk);
    if (!dock || !m_context.memory)
        return;
    const Qt::DockWidgetArea area = m_context.window.dockWidgetArea(dock);
    if (area == Qt::LeftDockWidgetArea || area == Qt::RightDockWidgetArea)
        m_context.memory->savePaneWidth(dock->objectName(), dock->width());
}

void Workplace::open(const QString& name) {
    if (m_desk)
        stopDesk(m_desk);
    m_name = name;
    m_desk = makeDesk(name, Qt::LeftDockWidgetArea, QStringLiteral("deskDock"));
    // If it does not start it has told why.
    if (m_desk && m_context.modules.start(m_desk) && m_context.memory)
        m_context.memory->restoreModule(QLatin1String(moduleName), *m_desk);
    if (m_desk)
        m_desk->setFocus();
}

void Workplace::togglePreview(PreviewRequest* request) {
    request->refusal.clear();
    QDockWidget* dock = DeskDock::of(m_preview);
    if (dock && m_previewed == request->desktop)
        dock->close();
    else if (!openPreview(request->desktop))
        request->refusal = Text::tr("Показать рабочий стол нечем.");
}

bool Workplace::openPreview(const QString& desktop) {
    if (m_preview)
        stopDesk(m_preview);
    m_previewed = desktop;
    m_preview = makeDesk(desktop, Qt::RightDockWidgetArea, QLatin1String(previewName));
    if (!m_preview)
        return false;
    m_preview->SetParamMod(QStringLiteral("preview"), QStringLiteral("1"));
    m_context.modules.start(m_preview); // why not, it has told itself
    return true;
}

void Workplace::followPreview(const PreviewEdit& edit) {
    if (!m_preview || m_context.modules.state(m_preview) != client::ModuleState::Running)
        return;
    if (!edit.desktop.isEmpty() && edit.desktop != m_previewed) {
        m_previewed = edit.desktop;
        m_preview->slot_modNotify(QStringLiteral("desktop"), edit.desktop);
    }
    const bool isHere = edit.desktop == m_previewed;
    m_preview->slot_modNotify(QStringLiteral("edit"),
                              QVariantMap{{QStringLiteral("key"), isHere ? edit.key : QString()},
                                          {QStringLiteral("isNew"), edit.isNew},
                                          {QStringLiteral("values"), edit.values}});
}

void Workplace::tell(const QString& text) {
    if (m_desk && m_context.modules.state(m_desk) == client::ModuleState::Running)
        m_desk->slot_modNotify(QStringLiteral("notice"), text);
}

void Workplace::openRemembered() {
    const QString name = m_context.memory ? m_context.memory->desktop() : QString();
    if (!name.isEmpty())
        open(name);
}

void Workplace::rememberDesk() const {
    rememberWidth(m_desk);
    rememberWidth(m_preview);
    if (m_desk && m_context.memory)
        m_context.memory->saveModule(QLatin1String(moduleName), *m_desk);
}

void Workplace::reopen() {
    if (!m_name.isEmpty())
        open(m_name);
    if (!m_previewed.isEmpty()) {
        openPreview(m_previewed);
        // The editor that is to be followed is another now, and has not asked for it.
        for (const auto& module : m_context.modules.modules(client::ModuleState::Running))
            if (module && module != m_preview)
                module->slot_modNotify(QStringLiteral("preview"), {});
    }
}

void Workplace::choose() {
    if (!m_dialog) {
        m_dialog = new DesktopDialog(&m_context.window);
        m_dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_dialog, &DesktopDialog::chosen, this, [this](const QString& key) {
            if (m_context.memory)
                m_context.memory->saveDesktop(key);
            open(key);
        });
    }
    QString error;
    if (m_dialog->fill(m_context.store, m_name, &error)) {
        m_dialog->open();
    } else {
        m_dialog->deleteLater();
        m_context.window.showError(error);
    }
}

void Workplace::closed(COrvoCliMod* desk) {
    if (desk && desk == m_desk) {
        m_name.clear();
        if (m_context.memory)
            m_context.memory->saveDesktop({});
        stopDesk(desk);
    } else if (desk && desk == m_preview) {
        m_previewed.clear();
        stopDesk(desk);
    }
}

void Workplace::askEndOfKiosk() {
    if (m_context.window.findChild<QInputDialog*>(QStringLiteral("kioskEnd")))
        return;
    auto* question = new QInputDialog(&m_context.window);
    question->setObjectName(QStringLiteral("kioskEnd"));
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setWindowTitle(Text::tr("Закрыть рабочий стол"));
    question->setLabelText(Text::tr("Имя пользователя (вход):"));
    question->setOkButtonText(Text::tr("Закрыть"));
    question->setCancelButtonText(Text::tr("Остаться"));
    question->resize(400, question->sizeHint().height()); // room for its title
    connect(question, &QInputDialog::textValueSelected, this, [this](const QString& login) {
        if (login.trimmed() != QString::fromStdString(m_context.store.login())) {
            m_context.window.showError(Text::tr("Это имя другого пользователя."));
            return;
        }
        m_context.window.endKiosk();
        m_context.window.close();
    });
    question->open();
}

} // namespace orvo::app
