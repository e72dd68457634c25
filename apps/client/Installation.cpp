#include "apps/client/Installation.h"

#include <QCoreApplication>
#include <QDir>

namespace orvo::app::installation {

namespace {

QString beside(const char* path, const QString& name) {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                           QLatin1String(path) + QLatin1Char('/') + name);
}

} // namespace

QString moduleDirectory() {
    return beside(ORVO_MODULE_PATH, QString());
}

QString formViewProgram() {
    return beside(ORVO_PROGRAM_PATH, QStringLiteral("orvo-form-view"));
}

QString adminProgram() {
    return beside(".", QStringLiteral("orvo-admin"));
}

QString handbookPage(const QString& page) {
    return beside(ORVO_HANDBOOK_PATH, page);
}

} // namespace orvo::app::installation
