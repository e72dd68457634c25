#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/TimeParsing.h"
#include "apps/admin/Verb.h"

#include <QDateTime>

namespace orvo::admin {

namespace {

void pruneOptions(OptionList& options) {
    options.append({QStringLiteral("older-than"),
                    QString::fromUtf8("Что старше: ") + QString::fromUtf8(momentForms),
                    QString::fromUtf8("КОГДА")});
    options.append({QStringLiteral("dry-run"),
                    QString::fromUtf8("Только сказать, сколько изменений забылось бы.")});
}

int run(const Invocation& call) {
    if (!call.has("older-than"))
        throw Failure("журнал не сокращён: не сказано, что старше (--older-than КОГДА)");
    const double moment = parseMoment(call.value("older-than"), "--older-than");
    if (moment > static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0)
        throw Failure("журнал не сокращён: это время ещё не наступило");
    const auto store = call.open();
    int64_t id = 0, count = 0;
    require(store->logBefore(moment, &id, &count), "журнал не сокращён");
    const std::string what = "изменений старше " + shownMoment(moment) + ": ";
    if (call.has("dry-run")) {
        out(what + std::to_string(count));
        return Done;
    }
    if (count > 0)
        require(store->pruneLog(id), "журнал не сокращён");
    out(what + std::to_string(count) + (count > 0 ? ", забыты" : ", забывать нечего"));
    return Done;
}

} // namespace

const Verb pruneVerb = {
    "prune",
    "--older-than КОГДА [--dry-run]",
    "Забыть старые изменения в журнале",
    "Данные не меняются, короче становится только журнал изменений. Клиент, который был отключён\n"
    "дольше, чем помнит журнал, замечает это и открывает свои модули заново.",
    0,
    0,
    pruneOptions,
    run,
};

} // namespace orvo::admin
