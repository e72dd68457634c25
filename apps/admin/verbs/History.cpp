#include "apps/admin/Failure.h"
#include "apps/admin/Json.h"
#include "apps/admin/Output.h"
#include "apps/admin/TimeParsing.h"
#include "apps/admin/Verb.h"
#include "frame/Vocabulary.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace orvo::admin {

namespace {

constexpr int pageSize = 2000;

void historyOptions(OptionList& options) {
    const auto add = [&](const char* name, const QString& text, const char* value) {
        options.append({QString::fromUtf8(name), text, QString::fromUtf8(value)});
    };
    const QString forms = QString::fromUtf8(momentForms);
    add("table", QString::fromUtf8("Только эта таблица."), "ТАБЛИЦА");
    add("key", QString::fromUtf8("Только запись с этим ключом."), "КЛЮЧ");
    add("user", QString::fromUtf8("Только изменения этого входа; пусто - сделанные вручную."),
        "ВХОД");
    add("since", QString::fromUtf8("Не раньше: ") + forms, "КОГДА");
    add("until", QString::fromUtf8("Раньше, чем: ") + forms, "КОГДА");
    add("limit", QString::fromUtf8("Не больше N изменений, самых новых."), "N");
    jsonOption(options);
}

const store::TableDef* definitionOf(const std::string& table) {
    if (table == store::contentTable().name)
        return &store::contentTable();
    return store::findTable(table);
}

store::LogQuery readQuery(const Invocation& call) {
    store::LogQuery query;
    if (call.has("table")) {
        query.table = call.value("table");
        if (definitionOf(query.table) == nullptr) {
            std::string names = store::contentTable().name;
            for (const store::TableDef& table : store::tables())
                names += std::string(", ") + table.name;
            throw Failure("таблицы «" + query.table + "» нет; есть: " + names);
        }
    }
    query.key = call.value("key");
    if (call.has("user"))
        query.login = call.value("user");
    if (call.has("since"))
        query.since = parseMoment(call.value("since"), "--since");
    if (call.has("until"))
        query.until = parseMoment(call.value("until"), "--until");
    return query;
}

int64_t readLimit(const Invocation& call) {
    if (!call.has("limit"))
        return INT64_MAX;
    bool good = false;
    const qlonglong limit = QString::fromStdString(call.value("limit")).toLongLong(&good);
    if (!good || limit < 1)
        throw Failure("--limit «" + call.value("limit") + "» не число от 1");
    return limit;
}

QJsonObject parsed(const std::string& json) {
    return QJsonDocument::fromJson(
               QByteArray::fromRawData(json.data(), static_cast<int>(json.size())))
        .object();
}

std::string shownValue(const QJsonValue& value, MdxType type) {
    if (value.isNull() || value.isUndefined())
        return "пусто";
    if (value.isString())
        return "«" + cell(value.toString().toStdString()) + "»";
    if (value.isBool())
        return value.toBool() ? "да" : "нет";
    if (const std::string time = type == MDX_DATE ? shownMoment(value.toDouble()) : std::string();
        !time.empty())
        return time;
    return QString::number(value.toDouble(), 'g', 17).toStdString();
}

const char* wordOf(int code) {
    switch (code) {
    case OrvoEventInsert:
        return "добавлено";
    case OrvoEventUpdate:
        return "изменено";
    case OrvoEventDelete:
        return "удалено";
    default:
        return "?";
    }
}

/// What people call the record, if the change tells.
std::string nameIn(const QJsonObject& after, const QJsonObject& before) {
    for (const char* field : {field::caption, field::name_, field::login_, field::fileExt})
        for (const QJsonObject* values : {&after, &before})
            if (const QString name = values->value(QLatin1String(field)).toString();
                !name.isEmpty())
                return "  «" + cell(name.toStdString()) + "»";
    return {};
}

void print(const store::Change& change) {
    const QJsonObject after = parsed(change.after), before = parsed(change.before);
    std::string time = shownMoment(change.time);
    out((time.empty() ? "?" : time) + "  " +
        (change.login.empty() ? "(вручную)" : cell(change.login)) + "  " + wordOf(change.code) +
        "  " + cell(change.table) + "  " + cell(change.key) + nameIn(after, before));
    const store::TableDef* table = definitionOf(change.table);
    if (table == nullptr)
        return;
    bool any = false;
    for (const store::FieldDef& field : table->fields) {
        const QLatin1String name(field.name);
        if (&field == &table->fields.front() || (!after.contains(name) && !before.contains(name)))
            continue;
        const QJsonValue now = after.value(name), was = before.value(name);
        const bool nothing = now.isNull() || now.isUndefined();
        std::string line = std::string("    ") + field.name + ": ";
        if (change.code == OrvoEventUpdate) {
            if (now == was)
                continue;
            line += shownValue(was, field.type) + " -> " + shownValue(now, field.type);
        } else {
            const QJsonValue& value = nothing ? was : now;
            if (value.isNull() || value.isUndefined())
                continue;
            line += shownValue(value, field.type);
        }
        any = true;
        out(line);
    }
    if (!any && change.code == OrvoEventUpdate)
        out(change.table == store::contentTable().name ? "    (содержимое)"
                                                       : "    (без изменений)");
}

void printJson(const store::Change& change) {
    QJsonObject object;
    object["id"] = static_cast<double>(change.id);
    object["time"] = change.time;
    object["code"] = change.code;
    object["table"] = QString::fromStdString(change.table);
    object["key"] = QString::fromStdString(change.key);
    object["login"] = QString::fromStdString(change.login);
    object["before"] = parsed(change.before);
    object["after"] = parsed(change.after);
    outJson(object);
}

int run(const Invocation& call) {
    store::LogQuery query = readQuery(call);
    int64_t left = readLimit(call);
    const auto store = call.open();
    const bool json = call.has("json");
    std::vector<store::Change> page;
    do {
        const int size = static_cast<int>(std::min<int64_t>(left, pageSize));
        require(store->history(query, size, &page), "история не прочитана");
        for (const store::Change& change : page)
            json ? printJson(change) : print(change);
        left -= static_cast<int64_t>(page.size());
        if (!page.empty())
            query.below = page.back().id;
    } while (page.size() == static_cast<size_t>(pageSize) && left > 0 && outputTaken());
    return Done;
}

} // namespace

const Verb historyVerb = {
    "history",
    "[--table ТАБЛИЦА] [--key КЛЮЧ] [--user ВХОД] [--since КОГДА] [--until КОГДА] [--limit N] "
    "[--json]",
    "Показать, кто, когда и что изменил",
    "Изменения идут от новых к старым. У каждого строка: время, вход, «добавлено», «изменено» или\n"
    "«удалено», таблица, ключ, название; под ней с отступом поля: было -> стало. «(вручную)» -\n"
    "изменено мимо программ Orvo в базе, которая не знает входов. Показывается то, что помнит\n"
    "журнал изменений.",
    0,
    0,
    historyOptions,
    run,
};

} // namespace orvo::admin
