#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/TimeParsing.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <QDateTime>

namespace orvo::admin {

namespace {

constexpr int keptDays = 90;
constexpr uint64_t keptMebibytes = 1024;

void pruneOptions(OptionList& options) {
    const auto add = [&](const char* name, const QString& text, const QString& value) {
        options.append({QString::fromUtf8(name), text, value});
    };
    const QString forms = momentForms();
    add("older-than", Text::tr("Забыть и изменения журнала старше: ") + forms, Text::tr("КОГДА"));
    add("versions-older-than",
        Text::tr("Какое прежнее содержимое старо, если не %1d: ").arg(keptDays) + forms,
        Text::tr("КОГДА"));
    add("versions-limit",
        Text::tr("Сколько мебибайт прежнего содержимого оставить, если не %1.").arg(keptMebibytes),
        Text::tr("МИБ"));
    options.append({QStringLiteral("dry-run"), Text::tr("Только сказать, сколько забылось бы.")});
    progressOption(options);
}

double readMoment(const Invocation& call, const char* option) {
    const double moment = parseMoment(call.value(option), std::string("--") + option);
    if (moment > static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0)
        throw Failure(StdText::tr("ничего не забыто: --") + option +
                      StdText::tr(": это время ещё не наступило"));
    return moment;
}

uint64_t readLimit(const Invocation& call) {
    if (!call.has("versions-limit"))
        return keptMebibytes << 20;
    bool good = false;
    const uint limit = QString::fromStdString(call.value("versions-limit")).toUInt(&good);
    if (!good)
        throw Failure(StdText::tr("--versions-limit «") + call.value("versions-limit") +
                      StdText::tr("» не число от 0"));
    return uint64_t(limit) << 20;
}

std::string ending(const Invocation& call, int64_t count) {
    return std::to_string(count) + (call.has("dry-run") ? ""
                                    : count > 0         ? StdText::tr(", забыты")
                                                : StdText::tr(", забывать нечего"));
}

int run(const Invocation& call) {
    const bool dry = call.has("dry-run");
    const double oldVersions =
        call.has("versions-older-than")
            ? readMoment(call, "versions-older-than")
            : static_cast<double>(QDateTime::currentSecsSinceEpoch()) - keptDays * 86400.0;
    const uint64_t limit = readLimit(call);
    const double oldChanges = call.has("older-than") ? readMoment(call, "older-than") : 0;
    const auto store = call.open();
    store::PrunedVersions pruned;
    {
        const WaitingLine line(call, StdText::tr("прежнее содержимое"));
        require(store->pruneVersions(oldVersions, limit, dry, &pruned),
                StdText::tr("прежнее содержимое не забыто"));
    }
    out(StdText::tr("прежних содержимых старше ") + shownMoment(oldVersions) +
        StdText::tr(" и сверх ") + std::to_string(limit >> 20) + StdText::tr(" МиБ: ") +
        ending(call, pruned.count) +
        (pruned.count > 0 ? StdText::tr(" (байт: ") + std::to_string(pruned.bytes) + ")"
                          : std::string()));
    if (!call.has("older-than"))
        return Done;
    int64_t id = 0, count = 0;
    {
        const WaitingLine line(call, StdText::tr("журнал изменений"));
        require(store->logBefore(oldChanges, &id, &count), StdText::tr("журнал не сокращён"));
        if (count > 0 && !dry)
            require(store->pruneLog(id), StdText::tr("журнал не сокращён"));
    }
    out(StdText::tr("изменений старше ") + shownMoment(oldChanges) + ": " + ending(call, count));
    return Done;
}

} // namespace

const Verb pruneVerb = {
    "prune",
    QT_TRANSLATE_NOOP("orvo", "[--older-than КОГДА] [--versions-older-than КОГДА] "
                              "[--versions-limit МИБ] [--dry-run] [--progress]"),
    QT_TRANSLATE_NOOP("orvo",
                      "Забыть прежнее содержимое форм и файлов и старые изменения в журнале"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Что лежит в хранилище, не меняется. Из прежнего содержимого замещённых и удалённых форм "
        "и\n"
        "файлов забывается то, что старше --versions-older-than или не умещается в "
        "--versions-limit.\n"
        "Журнал изменений становится короче, только если сказано --older-than. Клиент, который "
        "был\n"
        "отключён дольше, чем помнит журнал, замечает это и открывает свои модули заново."),
    0,
    0,
    pruneOptions,
    run,
};

} // namespace orvo::admin
