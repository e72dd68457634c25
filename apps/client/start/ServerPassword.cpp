#include "apps/client/start/ServerPassword.h"

#include <optional>

namespace orvo::app {

namespace {

constexpr char variable[] = "PGPASSWORD";

/// None: the variable was not set.
std::optional<QByteArray>& ownPassword() {
    static std::optional<QByteArray> own;
    return own;
}

} // namespace

void keepOwnPassword() {
    ownPassword().reset();
    if (qEnvironmentVariableIsSet(variable))
        ownPassword() = qgetenv(variable);
}

bool hasOwnPassword() {
    return ownPassword().has_value();
}

void offerPassword(const QString& typed) {
    if (!typed.isEmpty())
        qputenv(variable, typed.toUtf8()); // no file and no command line shows it
    else if (ownPassword())
        qputenv(variable, *ownPassword());
    else
        qunsetenv(variable);
}

QProcessEnvironment environmentOffering(const QString& typed) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString name = QString::fromLatin1(variable);
    if (!typed.isEmpty())
        environment.insert(name, typed);
    else if (ownPassword())
        environment.insert(name, QString::fromLocal8Bit(*ownPassword()));
    else
        environment.remove(name);
    return environment;
}

} // namespace orvo::app
