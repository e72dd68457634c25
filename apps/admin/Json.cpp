#include "apps/admin/Json.h"

#include "apps/admin/Output.h"
#include "frame/Text.h"

#include <QJsonDocument>

namespace orvo::admin {

void jsonOption(OptionList& options) {
    options.append({QStringLiteral("json"), Text::tr("Каждая строка вывода - объект JSON.")});
}

void outJson(const QJsonObject& object) {
    out(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString());
}

} // namespace orvo::admin
