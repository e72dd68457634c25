#include "apps/admin/ChangeLines.h"
#include "apps/admin/Failure.h"
#include "apps/admin/Json.h"
#include "apps/admin/Output.h"
#include "apps/admin/TimeParsing.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/GroupWords.h"
#include "history/People.h"
#include "history/Standing.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace orvo::admin {

namespace {

constexpr int pageSize = 2000;
constexpr int groupsAtOnce = 100;

void historyOptions(OptionList& options) {
    const auto add = [&](const char* name, const QString& text, const QString& value) {
        options.append({QString::fromUtf8(name), text, value});
    };
    const QString forms = momentForms();
    add("table", Text::tr("Только эта таблица."), Text::tr("ТАБЛИЦА"));
    add("key", Text::tr("Только запись с этим ключом; у формы и файла и замены содержимого."),
        Text::tr("КЛЮЧ"));
    add("user", Text::tr("Только изменения этого входа; пусто - сделанные вручную."),
        Text::tr("ВХОД"));
    add("since", Text::tr("Не раньше: ") + forms, Text::tr("КОГДА"));
    add("until", Text::tr("Раньше, чем: ") + forms, Text::tr("КОГДА"));
    add("text", Text::tr("Только действия с этим текстом в старом или новом значении."),
        Text::tr("ТЕКСТ"));
    add("within",
        Text::tr("Только то, что внутри рабочего стола, папки или элемента меню с этим "
                 "ключом, или было внутри."),
        Text::tr("КЛЮЧ"));
    add("limit", Text::tr("Не больше N действий (с --json изменений), самых новых."),
        QStringLiteral("N"));
    jsonOption(options);
}

store::LogQuery readQuery(const Invocation& call) {
    store::LogQuery query;
    if (call.has("table")) {
        query.table = call.value("table");
        if (history::tableOf(query.table) == nullptr) {
            std::string names = store::contentTable().name;
            for (const store::TableDef& table : store::tables())
                names += std::string(", ") + table.name;
            throw Failure(StdText::tr("таблицы «") + query.table + StdText::tr("» нет; есть: ") +
                          names);
        }
    }
    query.key = call.value("key");
    if (call.has("key") && query.key.empty())
        throw Failure(StdText::tr("--key «»: ключ пуст"));
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
        throw Failure(StdText::tr("--limit «") + call.value("limit") +
                      StdText::tr("» не число от 1"));
    return limit;
}

QJsonObject parsed(const std::string& json) {
    return QJsonDocument::fromJson(
               QByteArray::fromRawData(json.data(), static_cast<int>(json.size())))
        .object();
}

/// Which of these actions have been taken back.
std::set<int64_t> undoneOf(store::MaintainedStore& store, const std::vector<int64_t>& groups) {
    history::Standing standing;
    if (!groups.empty())
        require(standing.read(store, groups), StdText::tr("история не прочитана"));
    return standing.undone();
}

/// The number by which undo knows it, when, who, what, where; below it its changes.
void print(const history::Group& group, bool isUndone, const history::PersonNames& people,
           history::RecordSource& source) {
    constexpr size_t mostChanges = 20;
    const history::GroupWords words = history::describe(group, source);
    const std::string time = shownMoment(group.time);
    out(std::to_string(group.id) + "  " + (time.empty() ? "?" : time) + "  " +
        line(history::personName(group.login, people)) + "  " + line(words.what) +
        (isUndone ? StdText::tr(" [отменено]") : "") + placeInBrackets(words.place.toStdString()));
    if (group.changes.size() == 1) {
        printFields(history::describe(group.changes.front(), source).fields, "    ");
        return;
    }
    for (size_t i = 0; i < std::min(group.changes.size(), mostChanges); ++i) {
        const history::ChangeWords change = history::describe(group.changes[i], source);
        out("    " + line(change.what));
        if (group.changes[i].code == OrvoEventUpdate)
            printFields(change.fields, "        ");
    }
    if (group.count > static_cast<int64_t>(mostChanges))
        out(StdText::tr("    ... и ещё ") +
            std::to_string(group.count - static_cast<int64_t>(mostChanges)));
}

/// What the actions of a page of changes did, and whether they stand.
class Actions {
public:
    Actions(store::MaintainedStore& store, const std::vector<store::Change>& page) {
        history::LoggedRecords source(store);
        std::vector<int64_t> groups;
        for (const store::Change& change : page) {
            const auto [known, isNew] = m_words.try_emplace(change.group);
            if (!isNew)
                continue;
            groups.push_back(change.group);
            history::Group group;
            require(history::readForWords(store, change.group, &group),
                    StdText::tr("история не прочитана"));
            known->second = history::describe(group, source).what;
        }
        m_undone = undoneOf(store, groups);
    }
    QString words(int64_t group) const { return m_words.at(group); }
    bool isUndone(int64_t group) const { return m_undone.count(group) != 0; }

private:
    std::map<int64_t, QString> m_words;
    std::set<int64_t> m_undone;
};

void printJson(const store::Change& change, const Actions& actions,
               const history::PersonNames& people, history::RecordSource& source) {
    QJsonObject object;
    object["id"] = static_cast<double>(change.id);
    object["time"] = change.time;
    object["code"] = change.code;
    object["table"] = QString::fromStdString(change.table);
    object["key"] = QString::fromStdString(change.key);
    object["login"] = QString::fromStdString(change.login);
    if (!change.login.empty())
        object["name"] = history::personName(change.login, people);
    object["group"] = static_cast<double>(change.group);
    object["client"] = QString::fromStdString(change.client);
    object["place"] = QString::fromStdString(change.place);
    QJsonArray undoes;
    for (const int64_t group : change.undoes)
        undoes.append(static_cast<double>(group));
    if (!undoes.isEmpty())
        object["undoes"] = undoes;
    object["action"] = actions.words(change.group);
    if (actions.isUndone(change.group))
        object["undone"] = true;
    object["words"] = history::describe(change, source).what;
    object["before"] = parsed(change.before);
    object["after"] = parsed(change.after);
    outJson(object);
}

/// The record under whose key the branch stands, whichever table it is of.
history::Branch readBranch(store::MaintainedStore& store, const std::string& key) {
    history::LoggedRecords records(store);
    for (const char* name : {table::MenuFolder, table::Menu, table::MenuResourceFolder})
        if (const store::TableDef& table = *store::findTable(name);
            !records.valuesOf(table, key).empty())
            return {&table, key};
    throw Failure(StdText::tr("--within «") + key +
                  StdText::tr("»: такого рабочего стола, папки или элемента меню нет"));
}

int run(const Invocation& call) {
    const store::LogQuery query = readQuery(call);
    int64_t left = readLimit(call);
    const auto store = call.open();
    history::Filter filter;
    filter.table = query.table;
    filter.key = query.key;
    filter.login = query.login;
    filter.since = query.since;
    filter.until = query.until;
    filter.text = QString::fromStdString(call.value("text"));
    if (call.has("within"))
        filter.branch = readBranch(*store, call.value("within"));
    const bool json = call.has("json");
    history::PersonNames people;
    if (!history::readPeople(*store, &people).ok())
        people.clear(); // the logins serve
    history::Reader reader(*store, filter);
    if (json) {
        std::vector<store::Change> page;
        while (!reader.atEnd() && left > 0 && outputTaken()) {
            page.clear();
            require(
                reader.nextChanges(static_cast<size_t>(std::min<int64_t>(left, pageSize)), &page),
                StdText::tr("история не прочитана"));
            history::LoggedRecords source(*store);
            source.prepareUpdated(page);
            const Actions actions(*store, page);
            for (const store::Change& change : page)
                printJson(change, actions, people, source);
            left -= static_cast<int64_t>(page.size());
        }
        return Done;
    }
    std::vector<history::Group> page;
    while (!reader.atEnd() && left > 0 && outputTaken()) {
        page.clear();
        require(reader.next(static_cast<size_t>(std::min<int64_t>(left, groupsAtOnce)), &page),
                StdText::tr("история не прочитана"));
        history::LoggedRecords source(*store);
        std::vector<int64_t> groups;
        for (history::Group& group : page) {
            require(history::countGroup(*store, &group), StdText::tr("история не прочитана"));
            groups.push_back(group.id);
        }
        const std::set<int64_t> undone = undoneOf(*store, groups);
        for (const history::Group& group : page)
            print(group, undone.count(group.id) != 0, people, source);
        left -= static_cast<int64_t>(page.size());
    }
    std::vector<store::Change> oldest;
    if (reader.atEnd() && left > 0 && store->readLog({}, 1, &oldest).code == store::LogPruned)
        out(StdText::tr("более старое журнал уже не помнит"));
    return Done;
}

} // namespace

const Verb historyVerb = {
    "history",
    QT_TRANSLATE_NOOP("orvo", "[--table ТАБЛИЦА] [--key КЛЮЧ] [--within КЛЮЧ] [--user ВХОД] "
                              "[--since КОГДА] [--until КОГДА] "
                              "[--text ТЕКСТ] [--limit N] [--json]"),
    QT_TRANSLATE_NOOP("orvo", "Показать, кто, когда и что изменил"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Действия идут от новых к старым. У каждого строка: номер, время, кто, что сделано, где; "
        "под\n"
        "ней с отступом изменения и поля: было -> стало. Номер берёт undo. «(вручную)» - изменено "
        "мимо\n"
        "программ Orvo в базе, которая не знает входов; «[отменено]» - действие отменено. С --json "
        "идут\n"
        "изменения, у каждого вход и слова его действия. Показывается то, что помнит журнал "
        "изменений."),
    0,
    0,
    historyOptions,
    run,
};

} // namespace orvo::admin
