#include "apps/admin/TimeParsing.h"

#include "apps/admin/Failure.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <QDateTime>

namespace orvo::admin {

namespace {

constexpr qint64 mostDays = 36500;

/// Seconds of "90d" and the like; 0 for anything else.
qint64 ageOf(const QString& text) {
    static const struct {
        char letter;
        qint64 seconds;
    } units[] = {{'d', 86400}, {'h', 3600}, {'m', 60}};
    for (const auto& unit : units) {
        if (!text.endsWith(QLatin1Char(unit.letter)))
            continue;
        bool good = false;
        const qint64 number = text.left(text.size() - 1).toLongLong(&good);
        if (good && number > 0 && number <= mostDays * 86400 / unit.seconds)
            return number * unit.seconds;
    }
    return 0;
}

} // namespace

QString momentForms() {
    return Text::tr(
        "дата 2026-03-31, время 2026-03-31T14:00 (местное; с Z или +03:00 - того пояса) "
        "или давность: 90d, 12h, 30m");
}

double parseMoment(const std::string& text, const std::string& option) {
    const QString given = QString::fromStdString(text).trimmed();
    if (const qint64 age = ageOf(given))
        return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0 -
               static_cast<double>(age);
    QString iso = given;
    iso.replace(QLatin1Char(' '), QLatin1Char('T'));
    const QDateTime moment = iso.contains(QLatin1Char('T'))
                                 ? QDateTime::fromString(iso, Qt::ISODate)
                                 : QDate::fromString(iso, Qt::ISODate).startOfDay();
    if (!moment.isValid())
        throw Failure(option + StdText::tr(" «") + text + StdText::tr("»: нужна ") +
                      momentForms().toStdString());
    return static_cast<double>(moment.toMSecsSinceEpoch()) / 1000.0;
}

std::string shownMoment(double seconds) {
    if (!(seconds > -6e10 && seconds < 2.5e11))
        return {};
    const QDateTime local =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(seconds * 1000.0), Qt::LocalTime);
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate).toStdString();
}

} // namespace orvo::admin
