#include "apps/client/Launcher.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/FileKind.h"
#include "apps/client/FormViewer.h"
#include "apps/client/Look.h"
#include "apps/client/MainWindow.h"
#include "apps/client/ModuleLibraries.h"
#include "apps/client/ModuleTabs.h"
#include "frame/Kinds.h"
#include "frame/OrvoClient.h"
#include "frame/Text.h"
#include "platform/client/ModuleRegistry.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <exception>

namespace orvo::app {

namespace {

constexpr int keptContents = 32 << 10; // KiB
constexpr int gatherContentsMs = 500;  // contents that change together are one comparison

/// Whether the store could not be asked: what was read before may then be shown.
bool isAway(const store::Status& status) {
    return status.code == store::ConnectionBroken || status.code == store::CannotConnect ||
           status.code == store::Timeout || status.code == store::NotActive;
}

QString noFiles(const LaunchRequest& request) {
    return request.kind == Kind::Form
               ? Text::tr("формы «%1» нет, или у неё нет файлов").arg(oneLine(request.name))
               : Text::tr("файла «%1» нет").arg(oneLine(request.name));
}

/// Kind::None for a number that is no kind.
int32_t openedAs(int32_t number) {
    const ResourceKind* kind = resourceKind(number);
    return kind ? kind->opensAs : Kind::None;
}

bool isSame(const QString& a, const std::string& b) {
    return a.compare(QString::fromStdString(b), Qt::CaseInsensitive) == 0;
}

} // namespace

Launcher::Launcher(Context context, QObject* parent)
    : QObject(parent)
    , m_context(std::move(context))
    , m_contents(keptContents) {
    m_compare.setSingleShot(true);
    m_compare.setInterval(gatherContentsMs);
    connect(&m_compare, &QTimer::timeout, this, &Launcher::compareContents);
    connect(&m_context.window, &MainWindow::pageCloseRequested, this, &Launcher::closePage);
}

Launcher::~Launcher() = default;

void Launcher::launch(LaunchRequest* request) {
    request->refusal.clear();
    if (request->oneCopy)
        if (const Opened* known = first(request->key))
            return bringToFront(*known);
    switch (openedAs(request->kind)) {
    case Kind::Module:
        request->refusal = openModule(*request);
        if (request->refusal.isEmpty())
            m_context.window.showPage(m_open.back().page);
        break;
    case Kind::Function:
        request->refusal = openFunction(*request);
        break;
    case Kind::Form:
        request->refusal = openForm(*request);
        break;
    case Kind::File:
        request->refusal = openFile(*request);
        break;
    default:
        request->refusal = Text::tr("ресурс неизвестного вида %1").arg(request->kind);
    }
}

void Launcher::check(LaunchRequest* request) {
    request->refusal.clear();
    std::vector<store::StoredFile> files;
    store::Status status;
    switch (openedAs(request->kind)) {
    case Kind::Module:
        if (!m_context.libraries.knows(&m_context.app, request->name))
            request->refusal = Text::tr("модуля «%1» здесь нет").arg(oneLine(request->name));
        return;
    case Kind::Function: // which ones a library has, only a call would tell
        if (!m_context.libraries.hasFunctions())
            request->refusal = Text::tr("функции «%1» здесь нет").arg(oneLine(request->name));
        return;
    case Kind::Form:
        status = m_context.store.formGet(request->name.toStdString(), false, &files);
        break;
    case Kind::File:
        status = m_context.store.fileGet(request->path.toStdString(), request->name.toStdString(),
                                         false, &files);
        break;
    default:
        return;
    }
    if (files.empty() && (status.ok() || status.code == store::UnknownName))
        request->refusal = noFiles(*request);
}

// ---------------------------------------------------------------------------------------------
// Modules and functions

QString Launcher::openModule(const LaunchRequest& request) {
    const QPointer<COrvoCliMod> module = m_context.libraries.create(&m_context.app, request.name);
    if (!module)
        return Text::tr("модуля «%1» здесь нет: его не знает ни одна библиотека модулей")
            .arg(oneLine(request.name));
    m_context.modules.add(module, request.name);
    QString why;
    try {
        const LaunchParameters parameters = parseLaunchParameters(request.params);
        for (const auto& [name, value] : parameters.pairs)
            module->SetParamMod(name, value);
        if (!parameters.command.isEmpty())
            module->SetParamCommand(parameters.command);
        module->setFollowsOthers(m_context.window.followsOthers());
        m_context.window.tabs()->addPage(module, request.caption);
        if (!m_context.modules.start(module))
            why = Text::tr("модуль «%1» не запущен; причина в журнале").arg(oneLine(request.name));
    } catch (const std::exception& failure) {
        why = Text::tr("модуль «%1» не запущен: %2")
                  .arg(oneLine(request.name), QString::fromLocal8Bit(failure.what()));
    }
    if (!why.isEmpty()) {
        m_context.modules.stop(module);
        return why;
    }
    connect(module, &QObject::destroyed, this, [this](QObject* gone) { forget(gone); });
    m_open.push_back({request, module.data(), nullptr, {}});
    return {};
}

QString Launcher::openFunction(const LaunchRequest& request) {
    if (!m_context.libraries.hasFunctions())
        return Text::tr("функции «%1» здесь нет: ни у одной библиотеки модулей нет функций")
            .arg(oneLine(request.name));
    auto process = std::make_unique<FunctionProcess>();
    FunctionProcess& started = *process;
    connect(&started, &FunctionProcess::logged, this, &Launcher::logged);
    connect(&started, &FunctionProcess::ended, this,
            [this, &started, caption = request.caption](const QString& failure) {
                if (!failure.isEmpty())
                    emit problem(caption, failure);
                forget(&started);
            });
    m_open.push_back({request, nullptr, std::move(process), {}});
    checkInvariants();
    started.run(m_context.functions, request.name, request.params, m_isConnected);
    return {};
}

// ---------------------------------------------------------------------------------------------
// Forms and files

/// While the store is away: what was read before.
store::Status Launcher::readContents(const LaunchRequest& request, Files* files) {
    const std::string name = request.name.toStdString();
    store::Status status{store::ConnectionBroken, StdText::tr("Нет связи с хранилищем.")};
    if (m_isConnected)
        status = request.kind == Kind::Form
                     ? m_context.store.formGet(name, true, files)
                     : m_context.store.fileGet(request.path.toStdString(), name, true, files);
    const QString key =
        QStringLiteral("%1/%2/%3").arg(request.kind).arg(request.path, request.name).toCaseFolded();
    if (status.ok() && !files->empty()) {
        size_t bytes = 0;
        for (const store::StoredFile& file : *files)
            bytes += file.bytes.size();
        m_contents.insert(key, new Files(*files), static_cast<int>(bytes >> 10) + 1);
    } else if (isAway(status)) {
        if (const Files* known = m_contents.object(key))
            *files = *known;
        else if (request.kind == Kind::File)
            *files = mirrored(request);
        if (!files->empty())
            return {};
    }
    return status;
}

/// The copy in the work directory.
Launcher::Files Launcher::mirrored(const LaunchRequest& request) const {
    const QString root = QDir(m_context.app.m_workDir + QLatin1String(mirrorPath)).canonicalPath();
    const QFileInfo info(root + QLatin1Char('/') + request.path + QLatin1Char('/') + request.name);
    // A caption may be anything, "..", too.
    if (root.isEmpty() || !info.isFile() ||
        !info.canonicalFilePath().startsWith(root + QLatin1Char('/')))
        return {};
    QFile copy(info.filePath());
    if (!copy.open(QIODevice::ReadOnly))
        return {};
    store::StoredFile file;
    file.name = request.name.toStdString();
    file.bytes = copy.readAll().toStdString();
    file.size = file.bytes.size();
    return {file};
}

QString Launcher::openForm(const LaunchRequest& request) {
    Files files;
    const store::Status status = readContents(request, &files);
    if (files.empty())
        return status.ok() || status.code == store::UnknownName
                   ? noFiles(request)
                   : QString::fromStdString(status.text);
    showFiles(request, files);
    return {};
}

QString Launcher::openFile(const LaunchRequest& request) {
    Files files;
    const store::Status status = readContents(request, &files);
    if (files.empty())
        return status.ok() || status.code == store::UnknownName
                   ? noFiles(request)
                   : QString::fromStdString(status.text);
    if (canBeShown(files.front()))
        showFiles(request, files);
    else
        saveFile(files.front());
    return {};
}

void Launcher::showFiles(const LaunchRequest& request, const Files& files) {
    const LaunchParameters parameters = parseLaunchParameters(request.params);
    auto* page = new FormWindow(m_context.viewer, request.name, files,
                                {parameters.pairs.toVector(), true, true}, {}, &m_context.window);
    connect(
        page, &FormWindow::problem, this,
        [this, caption = request.caption](const QString& text) { emit problem(caption, text); });
    connect(page, &QObject::destroyed, this, [this](QObject* gone) { forget(gone); });
    Files listing = files;
    for (store::StoredFile& file : listing)
        std::string().swap(file.bytes);
    m_open.push_back({request, page, nullptr, std::move(listing)});
    checkInvariants();
    m_context.window.tabs()->addPage(page, request.caption);
    m_context.window.showPage(page);
}

/// What cannot be shown the user may have as a file. Nothing waits for his answer.
void Launcher::saveFile(const store::StoredFile& file) {
    const QString name = QString::fromStdString(file.name);
    auto* dialog = new QFileDialog(&m_context.window, Text::tr("Сохранить файл"));
    dialog->setObjectName(QStringLiteral("saveFileDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDirectory(QDir::homePath());
    // Of the name only what names a file here; the dialog neither renames nor deletes others.
    if (store::isPlainFileName(file.name))
        dialog->selectFile(name);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    connect(dialog, &QFileDialog::fileSelected, this, [this, file, name](const QString& place) {
        QSaveFile out(place);
        const auto size = static_cast<qint64>(file.bytes.size());
        if (!out.open(QIODevice::WriteOnly) || out.write(file.bytes.data(), size) != size ||
            !out.commit())
            emit problem(name, Text::tr("Файл %1 не записан: %2").arg(place, out.errorString()));
        else
            emit logged(0, name, Text::tr("Файл сохранён: %1").arg(place));
    });
    dialog->open();
}

// ---------------------------------------------------------------------------------------------
// What is open

Launcher::Opened* Launcher::first(const QString& key) {
    const auto found = std::find_if(m_open.begin(), m_open.end(), [&](const Opened& one) {
        return one.request.key.compare(key, Qt::CaseInsensitive) == 0 &&
               !(one.process && one.process->isClosing());
    });
    return found == m_open.end() ? nullptr : &*found;
}

void Launcher::bringToFront(const Opened& opened) {
    if (opened.process)
        opened.process->raiseWindows();
    else if (opened.page)
        m_context.window.showPage(opened.page);
}

void Launcher::forget(const QObject* gone) {
    const auto found = std::find_if(m_open.begin(), m_open.end(), [&](const Opened& one) {
        return one.process.get() == gone ||
               (!one.process && (one.page.isNull() || one.page == gone));
    });
    if (found == m_open.end())
        return;
    if (found->process)
        found->process.release()->deleteLater(); // it is the sender
    m_open.erase(found);
    checkInvariants();
}

void Launcher::checkInvariants() const {
    for ([[maybe_unused]] const Opened& one : m_open)
        Q_ASSERT((one.process != nullptr) != (one.page != nullptr)); // 2
}

void Launcher::closePage(QWidget* page) {
    auto* module = qobject_cast<COrvoCliMod*>(page);
    if (!module) {
        // To where it was opened, by keys: a widget that goes gives its focus to none.
        if (page->isAncestorOf(QApplication::focusWidget()))
            connect(page, &QObject::destroyed, &m_context.window, &MainWindow::returnToPage,
                    Qt::QueuedConnection);
        page->deleteLater();
        return;
    }
    const QPointer<COrvoCliMod> alive(module);
    const auto go = [this, alive] {
        if (alive)
            m_context.modules.stop(alive);
    };
    if (module->ModEditText().isEmpty() ||
        m_context.guard.mayGo(&m_context.window, Text::tr("Закрыть"), {go, {}}, module))
        go();
}

void Launcher::rememberModules() {
    m_toReopen.clear();
    for (const Opened& one : m_open)
        if (one.page && qobject_cast<COrvoCliMod*>(one.page))
            m_toReopen.push_back(one.request);
}

void Launcher::reopenModules() {
    for (const LaunchRequest& request : std::exchange(m_toReopen, {}))
        if (const QString why = openModule(request); !why.isEmpty())
            emit problem(request.caption, why);
}

void Launcher::changed(const store::Change& change) {
    if (m_open.empty())
        return;
    const bool isElement = change.table == table::Menu;
    const bool isResource = change.table == table::MenuResource;
    // Of a content that is replaced the log does not tell whose it is.
    if (change.table == table::MenuResourceFile && !m_compare.isActive())
        m_compare.start();
    if (!isElement && !isResource)
        return;
    for (Opened& one : m_open) {
        if (one.isMarked)
            continue;
        const bool isGone = change.code == OrvoEventDelete;
        if (isElement && isSame(one.request.key, change.key))
            mark(one, isGone ? Text::tr("Этого элемента в меню больше нет.")
                             : Text::tr("Элемент меню изменён после открытия."));
        else if (isResource && isSame(one.request.resource, change.key))
            mark(one, isGone ? Text::tr("Этот ресурс удалён.")
                             : Text::tr("Ресурс изменён после открытия."));
    }
}

void Launcher::compareContents() {
    for (Opened& one : m_open) {
        if (one.isMarked || one.listing.empty() || !m_isConnected)
            continue;
        Files now;
        const LaunchRequest& request = one.request;
        const std::string name = request.name.toStdString();
        const store::Status status =
            request.kind == Kind::Form
                ? m_context.store.formGet(name, false, &now)
                : m_context.store.fileGet(request.path.toStdString(), name, false, &now);
        if (!status.ok() && status.code != store::UnknownName)
            continue;
        if (!std::equal(now.begin(), now.end(), one.listing.begin(), one.listing.end(),
                        [](const store::StoredFile& a, const store::StoredFile& b) {
                            return a.name == b.name && a.size == b.size && a.time == b.time;
                        }))
            mark(one, Text::tr("Содержимое изменено после открытия: откройте заново, чтобы "
                               "увидеть новое."));
    }
}

void Launcher::mark(Opened& opened, const QString& why) {
    if (!opened.page)
        return;
    opened.isMarked = true;
    m_context.window.markPage(opened.page, why);
}

} // namespace orvo::app
