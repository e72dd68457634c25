// What differs between installations, and bringing it from one into another.
#include "apps/admin/ChangeLines.h"
#include "apps/admin/Failure.h"
#include "apps/admin/Interrupt.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Verb.h"
#include "apps/admin/transfer/Format.h"
#include "frame/StdText.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/Difference.h"
#include "history/Inverse.h"
#include "history/Locks.h"
#include "history/Overtaken.h"
#include "history/RecordWords.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <set>

namespace orvo::admin {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, Close>;

/// Names and links of either installation, the newer one first.
class Both : public history::RecordSource {
public:
    Both(history::Installation& newer, history::Installation& older)
        : newer_(newer)
        , older_(older) {}
    history::Values valuesOf(const store::TableDef& table, const std::string& key) override {
        const history::Values values = newer_.valuesOf(table, key);
        return values.empty() ? older_.valuesOf(table, key) : values;
    }

private:
    history::Installation& newer_;
    history::Installation& older_;
};

void load(store::MaintainedStore& store, history::Installation& into) {
    require(store.writeOut(into), StdText::tr("хранилище не прочитано"));
    into.finish();
}

/// An export, if the file begins like one; null for anything else.
Stream openExport(const std::string& place) {
    Stream stream(std::fopen(place.c_str(), "re"));
    if (!stream)
        return nullptr;
    int first = std::fgetc(stream.get());
    while (first == ' ' || first == '\n' || first == '\r' || first == '\t')
        first = std::fgetc(stream.get());
    std::rewind(stream.get());
    return first == '{' ? std::move(stream) : nullptr;
}

/// Lets through what a store can hold. An export is a file that anybody may have edited.
class Checked : public store::Receiver {
public:
    explicit Checked(history::Installation& into) : into_(into) {}
    store::Status expect(uint64_t records, uint64_t contents, uint64_t bytes) override {
        return into_.expect(records, contents, bytes);
    }
    store::Status record(const store::TableDef& table, const std::vector<store::Value>& values,
                         const std::string& place) override {
        const store::Status status = check(table, values, place);
        return status.ok() ? into_.record(table, values, place) : status;
    }
    store::Status content(const std::vector<store::Value>& values,
                          const std::string& place) override {
        const store::Status status = check(store::contentTable(), values, place);
        return status.ok() ? into_.content(values, place) : status;
    }
    store::Status bytes(std::string_view piece) override { return into_.bytes(piece); }

private:
    store::Status check(const store::TableDef& table, const std::vector<store::Value>& values,
                        const std::string& place) const {
        store::Status status = store::checkRecord(table, values, place);
        if (status.ok() && into_.find(table, store::textOf(values.front())))
            status = {store::Refused, place + StdText::tr(": такой ключ уже есть")};
        return status;
    }

    history::Installation& into_;
};

void loadExport(std::FILE* file, history::Installation& into) {
    TransferCount count;
    Checked checked(into);
    require(readExport(
                file, 0, checked, [](uint64_t, uint64_t) { return !Interruptible::requested(); },
                &count),
            StdText::tr("выгрузка не прочитана"));
    into.finish();
}

std::unique_ptr<store::MaintainedStore> openStore(const std::string& place) {
    store::StoreUrl url;
    store::Status status = url.parse(place);
    std::unique_ptr<store::MaintainedStore> opened;
    if (status.ok())
        opened = store::openMaintained(url.text(), {adminLogin, false, adminProgram}, &status);
    if (!opened)
        throw Failure(status.text);
    return opened;
}

void print(const history::Difference& difference, history::RecordSource& source) {
    for (const store::Change& change : difference.changes)
        printChange(change, source);
}

int runDiff(const Invocation& call) {
    const Interruptible stoppable;
    const bool two = call.arguments().size() == 2;
    history::Installation from;
    load(*(two ? openStore(call.argument(0)) : call.open()), from);
    history::Installation to;
    const std::string place = call.argument(two ? 1 : 0);
    if (const Stream stream = openExport(place))
        loadExport(stream.get(), to);
    else
        load(*openStore(place), to);
    const history::Difference difference = history::differenceOf(from, to, std::nullopt, true);
    Both source(to, from);
    print(difference, source);
    if (difference.changes.empty())
        out(StdText::tr("различий нет"));
    return difference.changes.empty() ? Done : ErrorsFound;
}

void applyOptions(OptionList& options) {
    options.append({QStringLiteral("dry-run"), Text::tr("Только показать, что было бы записано.")});
    options.append({QStringLiteral("only"),
                    Text::tr("Только это и всё внутри: названия сверху через «/» или "
                             "ключ записи."),
                    Text::tr("ПУТЬ")});
    options.append({QStringLiteral("other-names"),
                    Text::tr("Внести под свободным именем то, чьё имя в хранилище уже "
                             "занято: «а (2).png».")});
    options.append({QStringLiteral("partly"),
                    Text::tr("Внести без того, чьё имя занято или что здесь не на месте.")});
}

std::string leftOutWords(const history::TakenName& taken, history::RecordSource& source) {
    const auto& [table, key] = taken.record;
    const QString record = history::recordWords(*table, source.valuesOf(*table, key), key);
    return cell(Text::tr("%1: %2: имя %3 уже занято (ключ %4)")
                    .arg(taken.isNew ? Text::tr("Не внесено") : Text::tr("Оставлено как есть"),
                         record, history::quoted(QString::fromStdString(taken.name)),
                         QString::fromStdString(taken.holder.second))
                    .toStdString());
}

std::string unfitWords(const history::Unfit& unfit, history::RecordSource& source) {
    const auto& [table, key] = unfit.record;
    const auto& [above, other] = unfit.other;
    const QString record = history::recordWords(*table, source.valuesOf(*table, key), key);
    const history::Values values = source.valuesOf(*above, other);
    if (unfit.why == history::Unfit::StillNamed)
        return line(Text::tr("Не удалено: %1: на это ссылается %2")
                        .arg(record, history::recordWords(*above, values, other)));
    if (unfit.why == history::Unfit::TopFolder)
        return line(
            Text::tr("Оставлено как есть: %1: без неё дерево ресурсов не загружается").arg(record));
    const QString name = history::nameOf(*above, values);
    QString why = history::quoted(name.isEmpty() ? QString::fromStdString(other) : name);
    if (unfit.why == history::Unfit::NoFolder)
        why += Text::tr(" в хранилище не ") + history::fieldWord(*table, unfit.field).toLower();
    else if (unfit.why == history::Unfit::NoResource)
        why = Text::tr("ресурс %1 не внесён").arg(why);
    else
        why += std::strcmp(above->name, table::Menu) == 0
                   ? Text::tr(" в хранилище на другом рабочем столе")
                   : Text::tr(" в хранилище для ресурсов другого вида");
    return line(QStringLiteral("%1: %2: %3")
                    .arg(unfit.isNew ? Text::tr("Не внесено") : Text::tr("Оставлено как есть"),
                         record, why));
}

/// Resources that somebody has taken into work.
std::vector<std::string> lockedIn(const history::Installation& installation) {
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    std::vector<std::string> keys;
    for (const auto& [key, values] : installation.records(resources))
        if (!store::textOf(values.at(resources.find(field::UsersKey))).empty())
            keys.push_back(key);
    return keys;
}

/// As undo says it.
void printHeldBack(store::MaintainedStore& store, const history::Difference& difference,
                   const std::map<std::string, history::FormLock>& held,
                   history::RecordSource& source) {
    history::PersonNames people;
    if (!difference.heldBack.empty() && !history::readPeople(store, &people).ok())
        people.clear(); // the logins serve
    for (const auto& [key, isWhole] : difference.heldBack) {
        const auto why = isWhole ? history::Remark::Locked : history::Remark::ContentLocked;
        out(line(history::remarkWords(history::lockRemark(held.at(key), why), source, people)));
    }
}

history::RecordKey readPath(const std::string& path, const history::Installation& living,
                            const history::Installation& exported) {
    const std::string option =
        StdText::tr("ничего не изменено: --only «") + path + StdText::tr("»");
    std::vector<history::RecordKey> found = history::findPath(exported, path);
    if (found.empty()) // what the export has no more
        found = history::findPath(living, path);
    if (found.empty())
        throw Failure(
            option +
            StdText::tr(": такого нет ни в выгрузке, ни в хранилище; запись можно назвать и ключом "
                        "(его показывает history --json)"));
    if (found.size() > 1)
        throw Failure(option + StdText::tr(": таких ") + std::to_string(found.size()) +
                      StdText::tr(", назовите по ключу: ") + found[0].second + ", " +
                      found[1].second + (found.size() > 2 ? ", ..." : ""));
    return found.front();
}

int runApply(const Invocation& call) {
    const std::string what = StdText::tr("ничего не изменено");
    const Interruptible stoppable;
    const std::string place = call.argument(0);
    const Stream stream = openExport(place);
    if (!stream)
        throw Failure(what + StdText::tr(": «") + place +
                      StdText::tr("» не выгрузка (её делает export)"));
    const auto store = call.open();
    int64_t seen = 0;
    require(store->logPosition(&seen), what);
    history::Installation living;
    load(*store, living);
    history::Installation exported(&living);
    loadExport(stream.get(), exported);
    std::optional<history::RecordKey> top;
    if (call.has("only"))
        top = readPath(call.value("only"), living, exported);
    std::map<std::string, history::FormLock> held;
    require(history::heldByOthers(*store, lockedIn(living), &held), what);
    std::set<std::string> heldKeys;
    for (const auto& [key, lock] : held)
        heldKeys.insert(key);
    const history::Difference difference = history::differenceOf(
        living, exported, top, false,
        call.has("other-names") ? history::SameNames::Number : history::SameNames::LeaveOut,
        heldKeys);
    const bool dry = call.has("dry-run");
    Both source(exported, living);
    printHeldBack(*store, difference, held, source);
    for (const history::TakenName& taken : difference.leftOut)
        out(leftOutWords(taken, source));
    for (const history::Unfit& unfit : difference.unfit) {
        const bool keepsItsName = unfit.why == history::Unfit::TopFolder;
        out(unfitWords(unfit, keepsItsName ? static_cast<history::RecordSource&>(living) : source));
    }
    const bool asks = !difference.leftOut.empty() || !difference.unfit.empty();
    if (asks && !dry && !call.has("partly"))
        throw Failure(
            what + StdText::tr(": решите, как быть (") +
            (difference.leftOut.empty() ? std::string() : StdText::tr("--other-names или ")) +
            StdText::tr("без этого --partly)"));
    const bool all = !asks && difference.heldBack.empty();
    const int code = all ? Done : ErrorsFound;
    if (!dry && !difference.changes.empty()) // what is told has happened
        require(history::tellWhoOvertook(*store, difference.parts, seen,
                                         store->writeAll(difference.parts, seen, {})),
                what);
    print(difference, source);
    const std::string count = std::to_string(difference.changes.size());
    if (difference.changes.empty()) {
        out(all ? StdText::tr("различий нет") : StdText::tr("записывать нечего"));
        return code;
    }
    if (dry) {
        out(StdText::tr("записалось бы записей: ") + count);
        return code;
    }
    out(StdText::tr("записано записей: ") + count + StdText::tr("; отменить: orvo-admin undo ") +
        std::to_string(store->lastWritten().first));
    return code;
}

} // namespace

const Verb diffVerb = {
    "diff",
    QT_TRANSLATE_NOOP("orvo", "[ХРАНИЛИЩЕ] ХРАНИЛИЩЕ|ВЫГРУЗКА"),
    QT_TRANSLATE_NOOP("orvo", "Показать словами, чем одна установка отличается от другой"),
    QT_TRANSLATE_NOOP("orvo", "Что надо сделать с первой (без неё - с хранилищем из --store), "
                              "чтобы она стала такой, как\n"
                              "вторая. Записи сравниваются по ключам, формы и файлы - и по "
                              "содержимому. Код завершения 1,\n"
                              "если различия есть."),
    1,
    2,
    nullptr,
    runDiff,
};

const Verb applyVerb = {
    "apply",
    QT_TRANSLATE_NOOP("orvo", "[--dry-run] [--only ПУТЬ] [--other-names] [--partly] ВЫГРУЗКА"),
    QT_TRANSLATE_NOOP("orvo", "Внести в хранилище то, чем выгрузка отличается от него"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Меню, опробованное на копии, - в живую установку: одной транзакцией и одним действием\n"
        "истории, которое отменяет undo. С --only - только эту папку, рабочий стол, элемент или "
        "форму\n"
        "со всем внутри, с недостающими папками над ними и ресурсами, на которые они ссылаются.\n"
        "Чего в выгрузке нет, там удаляется. Пользователи и занятость ресурсов не меняются. Если\n"
        "затронутое тем временем изменил кто-то другой, не меняется ничего. Форма, файл или "
        "папка,\n"
        "чьё имя в хранилище занято другой записью, называется, и пока не решено, как быть, не\n"
        "меняется ничего; если без неё, код завершения 1. То же с тем, чему в хранилище нет места, "
        "и "
        "с\n"
        "удалением того, на что ссылается остающееся."),
    1,
    1,
    applyOptions,
    runApply,
};

} // namespace orvo::admin
