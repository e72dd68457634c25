#include "apps/client/ModuleLibrary.h"

#include "frame/OrvoClient.h"

#include <QTextCodec>

namespace orvo::app {

bool ModuleLibrary::load(const QString& file, QString* error) {
    m_library.setFileName(file);
    // Symbols missing in a library are told now, not by a crash later.
    m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!m_library.load()) {
        *error = QStringLiteral("Библиотека модулей не загружена: %1")
                     .arg(m_library.errorString().simplified());
        return false;
    }
    m_factory = reinterpret_cast<Factory>(m_library.resolve("CppCliModule"));
    if (!m_factory) {
        *error = QStringLiteral("В библиотеке модулей %1 нет функции CppCliModule.")
                     .arg(m_library.fileName());
        return false;
    }
    return true;
}

COrvoCliMod* ModuleLibrary::create(COrvoCliApp* app, const QString& name) const {
    const QByteArray bytes = QTextCodec::codecForName("Windows-1251")->fromUnicode(name);
    return static_cast<COrvoCliMod*>(m_factory(app, bytes.constData()));
}

} // namespace orvo::app
