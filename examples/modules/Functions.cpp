#include "Functions.h"

#include <frame/Launch.h>

#include <QMessageBox>

namespace {

constexpr int logError = 5;

/// Taken apart as the client does it for modules: a value may hold ";" and "=" in quotes.
QString valueOf(const QString& parameters, const QString& name) {
    return orvo::parseLaunchParameters(parameters).value(name);
}

} // namespace

OrvoFunctionResult openHelp(COrvoCliApp& app, const QString& parameters) {
    orvo::HandbookRequest request;
    request.chapter = valueOf(parameters, QStringLiteral("Раздел"));
    app.moduleCall(nullptr, orvo::callHandbook, &request); // no module asks
    if (request.refusal.isEmpty())
        return OrvoFunctionDone;
    app.log(logError, QStringLiteral("HelpOpen"), request.refusal);
    return OrvoFunctionFailed;
}

OrvoFunctionResult callDispatcher(COrvoCliApp& app, const QString& parameters) {
    const QString line = valueOf(parameters, QStringLiteral("Линия"));
    auto* box = new QMessageBox(QMessageBox::Information, QStringLiteral("Вызов диспетчера"),
                                line.isEmpty() ? QStringLiteral("Линия не задана.")
                                               : QStringLiteral("Вызов по линии %1.").arg(line));
    box->setObjectName(QStringLiteral("callDispatcher"));
    box->setTextFormat(Qt::PlainText); // a parameter may hold anything
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->show(); // served by the host when we have returned
    app.log(0, QStringLiteral("CallDispatcher"), box->text());
    return OrvoFunctionDone;
}
