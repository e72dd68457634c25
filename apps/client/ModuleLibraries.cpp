#include "apps/client/ModuleLibraries.h"

#include "frame/OrvoClient.h"
#include "frame/RecordText.h"
#include "frame/Text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#include <exception>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::app {

namespace {

/// Why a file or directory could be another's work; empty if it could not.
QString whyUnsafe(const QString& path) {
    struct stat found {};
    if (::stat(QFile::encodeName(path).constData(), &found) != 0)
        return Text::tr("%1 нет").arg(path);
    if (found.st_uid != 0 && found.st_uid != ::geteuid())
        return Text::tr("%1 принадлежит другому пользователю").arg(path);
    const bool isOthers = (found.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    const bool isSticky = S_ISDIR(found.st_mode) && (found.st_mode & S_ISVTX) != 0;
    if (isOthers && !isSticky)
        return Text::tr("в %1 могут писать другие пользователи").arg(path);
    return {};
}

/// The same of a directory and of all above it, where links lead to.
QString whyUnsafeDirectory(const QString& directory) {
    QString path = QFileInfo(directory).canonicalFilePath();
    if (path.isEmpty())
        return Text::tr("%1 нет").arg(directory);
    for (;;) {
        QString why = whyUnsafe(path);
        if (!why.isEmpty() || path == QLatin1String("/"))
            return why;
        path = QFileInfo(path).path();
    }
}

} // namespace

void ModuleLibraries::load(const QString& own, const QStringList& further) {
    loadDirectory(own, true);
    for (const QString& directory : further)
        loadDirectory(directory, false);
    if (isEmpty() && m_problems.isEmpty())
        m_problems
            << Text::tr("Библиотек модулей нет: в каталоге %1 ни одной libOrvo*.so.").arg(own);
}

void ModuleLibraries::loadDirectory(const QString& directory, bool isTrusted) {
    const auto refuse = [&](const QString& why) {
        m_problems << Text::tr("Каталог модулей %1 не взят: %2.").arg(directory, why);
    };
    if (!isTrusted)
        if (const QString why = whyUnsafeDirectory(directory); !why.isEmpty())
            return refuse(why);
    const QFileInfoList files = QDir(directory).entryInfoList(
        {QStringLiteral("libOrvo*.so")}, QDir::Files | QDir::System, QDir::Name);
    for (const QFileInfo& file : files) {
        const QString place = file.canonicalFilePath();
        QString why;
        if (!isTrusted && !place.isEmpty()) {
            why = whyUnsafe(place);
            if (why.isEmpty() && file.isSymLink())
                why = whyUnsafeDirectory(QFileInfo(place).path());
        }
        if (why.isEmpty())
            loadLibrary(file.absoluteFilePath());
        else
            m_problems << Text::tr("Библиотека модулей %1 не взята: %2.")
                              .arg(file.absoluteFilePath(), why);
    }
}

void ModuleLibraries::loadLibrary(const QString& file) {
    QLibrary library(file);
    // Symbols missing in a library are told now, not by a crash later.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!library.load()) {
        m_problems << Text::tr("Библиотека модулей не загружена: %1")
                          .arg(library.errorString().simplified());
        return;
    }
    const Library loaded{
        file, reinterpret_cast<CppCliModuleFunction>(library.resolve("CppCliModule")),
        reinterpret_cast<CppCliFunctionFunction>(library.resolve("CppCliFunction"))};
    if (loaded.makeModule || loaded.callFunction)
        m_libraries.push_back(loaded);
    else
        m_problems << Text::tr(
                          "В библиотеке модулей %1 нет ни функции CppCliModule, ни CppCliFunction.")
                          .arg(file);
}

COrvoCliMod* ModuleLibraries::create(COrvoCliApp* app, const QString& name) const {
    const QByteArray bytes = toRecord(name);
    for (const Library& library : m_libraries) {
        if (!library.makeModule)
            continue;
        try {
            if (void* made = library.makeModule(app, bytes.constData()))
                return static_cast<COrvoCliMod*>(made);
        } catch (const std::exception& failure) {
            app->log(5, library.file,
                     Text::tr("Модуль «%1» не создан: %2")
                         .arg(name, QString::fromLocal8Bit(failure.what())));
        } catch (...) {
            app->log(5, library.file, Text::tr("Модуль «%1» не создан.").arg(name));
        }
    }
    return nullptr;
}

bool ModuleLibraries::knows(COrvoCliApp* app, const QString& name) {
    const QString folded = name.toCaseFolded();
    const auto known = m_known.constFind(folded);
    if (known != m_known.constEnd())
        return *known;
    const bool found = std::unique_ptr<COrvoCliMod>(create(app, name)) != nullptr;
    m_known.insert(folded, found);
    return found;
}

bool ModuleLibraries::hasFunctions() const {
    for (const Library& library : m_libraries)
        if (library.callFunction)
            return true;
    return false;
}

OrvoFunctionResult ModuleLibraries::call(COrvoCliApp* app, const QString& name,
                                         const QString& params) const {
    const QByteArray nameBytes = toRecord(name);
    const QByteArray paramBytes = toRecord(params);
    for (const Library& library : m_libraries) {
        if (!library.callFunction)
            continue;
        try {
            const int result =
                library.callFunction(app, nameBytes.constData(), paramBytes.constData());
            if (result != OrvoFunctionUnknown)
                return result == OrvoFunctionDone ? OrvoFunctionDone : OrvoFunctionFailed;
        } catch (const std::exception& failure) {
            app->log(5, library.file, QString::fromLocal8Bit(failure.what()));
            return OrvoFunctionFailed;
        } catch (...) {
            app->log(5, library.file, Text::tr("Неизвестное исключение."));
            return OrvoFunctionFailed;
        }
    }
    return OrvoFunctionUnknown;
}

} // namespace orvo::app
