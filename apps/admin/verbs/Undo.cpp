#include "apps/admin/ChangeLines.h"
#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"
#include "history/Inverse.h"
#include "platform/store/Names.h"

#include <algorithm>
#include <limits>

namespace orvo::admin {

namespace {

std::string what() {
    return StdText::tr("ничего не отменено");
}

void undoOptions(OptionList& options) {
    options.append({QStringLiteral("dry-run"), Text::tr("Только показать, что было бы записано.")});
    options.append({QStringLiteral("with-others"),
                    Text::tr("Удалить и то, на чём построили другие, со всем внутри; что было "
                             "раньше и только перенесено туда, вернуть на место; вырезанное "
                             "перенести назад с тем, что в нём изменили.")});
    options.append({QStringLiteral("other-names"),
                    Text::tr("Вернуть под свободным именем то, чьё имя уже занято: "
                             "«а (2).png».")});
    options.append({QStringLiteral("partly"),
                    Text::tr("Отменить без того, чему нет места, чьё имя занято, чей "
                             "ресурс удалён или на чём построили другие.")});
    options.append({QStringLiteral("place"),
                    Text::tr("Вместо удалённой папки вернуть в эту: ключи через «=»; "
                             "пусто после «=» - на верхний уровень (элемент меню, стол, файл)."),
                    Text::tr("БЫЛА=СТАЛА")});
    progressOption(options);
}

history::Choices readChoices(const Invocation& call) {
    history::Choices choices;
    choices.othersWorkToo = call.has("with-others");
    choices.otherNames = call.has("other-names");
    choices.partly = call.has("partly");
    for (const std::string& pair : call.values("place")) {
        const size_t middle = pair.find('=');
        if (middle == std::string::npos || middle == 0)
            throw Failure(what() + StdText::tr(": --place «") + pair +
                          StdText::tr("» не вида БЫЛА=СТАЛА"));
        choices.places[store::foldedKey(pair.substr(0, middle))] = pair.substr(middle + 1);
    }
    return choices;
}

/// Whether the log was pruned up to that change or further.
bool isForgotten(store::MaintainedStore& store, int64_t id) {
    int64_t newest = 0;
    std::vector<store::Change> changes;
    return store.logPosition(&newest).ok() && id <= newest &&
           store.readLog({id - 1, {}}, 1, &changes).code == store::LogPruned;
}

/// The actions to which the changes belong.
std::vector<int64_t> readGroups(const Invocation& call, store::MaintainedStore& store) {
    std::vector<int64_t> groups;
    for (const QString& argument : call.arguments()) {
        bool good = false;
        const qlonglong id = argument.toLongLong(&good);
        if (!good || id < 1 || id == std::numeric_limits<qlonglong>::max())
            throw Failure(what() + StdText::tr(": «") + argument.toStdString() +
                          StdText::tr("» не номер изменения"));
        store::LogQuery query;
        query.above = id - 1;
        query.below = id + 1;
        std::vector<store::Change> found;
        require(store.history(query, 1, &found), what());
        if (found.empty())
            throw Failure(what() + StdText::tr(": изменения ") + std::to_string(id) +
                          (isForgotten(store, id) ? StdText::tr(" журнал уже не помнит")
                                                  : StdText::tr(" в журнале нет")));
        if (std::find(groups.begin(), groups.end(), found.front().group) == groups.end())
            groups.push_back(found.front().group);
    }
    return groups;
}

/// The options that help with what is asked.
std::string waysOut(const history::Inverse& inverse, const history::Choices& choices) {
    const auto asks = [&](const auto& isAbout) {
        return std::any_of(inverse.remarks.begin(), inverse.remarks.end(), isAbout);
    };
    QStringList ways;
    if (asks([](const history::Remark& remark) { return remark.asksForPlace(); }))
        ways << QStringLiteral("--place");
    if (!choices.othersWorkToo &&
        asks([](const history::Remark& remark) { return remark.asksForOthers(); }))
        ways << QStringLiteral("--with-others");
    if (!choices.otherNames &&
        asks([](const history::Remark& remark) { return remark.asksForName(); }))
        ways << QStringLiteral("--other-names");
    return ways.isEmpty() ? std::string("--partly")
                          : ways.join(QStringLiteral(", ")).toStdString() + ' ' +
                                StdText::tr("или без этого --partly");
}

int run(const Invocation& call) {
    const history::Choices choices = readChoices(call);
    const auto store = call.open();
    const std::vector<int64_t> groups = readGroups(call, *store);
    history::Inverse inverse;
    const bool dry = call.has("dry-run");
    {
        const WaitingLine line(call, StdText::tr("отмена"));
        require(dry ? history::planInverse(*store, groups, choices, &inverse)
                    : history::undo(*store, groups, choices, &inverse),
                what());
    }
    history::LoggedRecords source(*store);
    history::PersonNames people;
    if (!inverse.remarks.empty() && !history::readPeople(*store, &people).ok())
        people.clear(); // the logins serve
    constexpr size_t mostShown = 50;
    for (size_t i = 0; i < std::min(inverse.preview.size(), mostShown); ++i)
        printChange(inverse.preview[i], source, "  ",
                    history::freeNameWords(inverse, inverse.preview[i]));
    if (inverse.count > mostShown)
        out(StdText::tr("  ... и ещё ") +
            std::to_string(inverse.count - std::min(inverse.count, mostShown)));
    std::string remarks;
    for (const history::Remark& remark : inverse.remarks)
        remarks +=
            (remarks.empty() ? "" : "; ") + line(history::remarkWords(remark, source, people));
    if (inverse.count == 0 && !inverse.asks())
        throw Failure(what() + ": " +
                      (remarks.empty() ? StdText::tr("возвращать нечего") : remarks));
    for (const history::Remark& remark : inverse.remarks)
        out(line(history::remarkWords(remark, source, people)));
    if (inverse.asks() && !choices.partly && !dry)
        throw Failure(what() + StdText::tr(": решите, как быть (") + waysOut(inverse, choices) +
                      ")");
    out((dry ? StdText::tr("записалось бы записей: ") : StdText::tr("записано записей: ")) +
        std::to_string(inverse.count));
    return inverse.remarks.empty() ? Done : ErrorsFound;
}

} // namespace

const Verb undoVerb = {
    "undo",
    QT_TRANSLATE_NOOP("orvo", "[--dry-run] [--partly] [--with-others] [--other-names] [--progress] "
                              "[--place БЫЛА=СТАЛА] ИЗМЕНЕНИЕ..."),
    QT_TRANSLATE_NOOP("orvo", "Отменить действия из истории"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Номера - из history; отменяется всё действие, которому изменение принадлежит, несколько - "
        "одной\n"
        "транзакцией. Что с тех пор изменили другие, остаётся как есть и называется; тогда код\n"
        "завершения 1. Отмена - тоже действие: отменить её - значит повторить отменённое."),
    1,
    -1,
    undoOptions,
    run,
};

} // namespace orvo::admin
