#include "platform/client/WriteWords.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <QDateTime>
#include <QStringList>

#include <cmath>
#include <cstring>
#include <map>

namespace orvo::client {

namespace {

using store::Value;
using Values = std::map<int, Value>;

constexpr int deepest = 32; ///< folders of a place; data may hold circles

QString quoted(const QString& text) {
    constexpr int longest = 80;
    const QString line = text.simplified();
    return QStringLiteral("«%1»").arg(
        line.size() > longest ? line.left(longest) + QStringLiteral("…") : line);
}

QString textOf(const Value& value) {
    return QString::fromStdString(store::textOf(value));
}

/// The stored values of a record; none if it is not there or cannot be asked for.
Values stored(store::Store* store, const store::TableDef& table, const std::string& key) {
    Values values;
    CMDArray rows;
    if (!store || key.empty() ||
        !store->fetchLinked(table.name, field::KeyLink, key, rows.array).ok() ||
        mdx::postedCount(rows.array) == 0)
        return values;
    MDRData* record = mdx::postedRecord(rows.array, 0);
    for (int i = 0; i < rows.array->fieldCount; ++i) {
        MDRVar var{};
        if (MDRGetVal(MDRFldByNum(rows.array, i), record, &var) != MDX_OK)
            continue;
        if (var.null != 0 || var.type == MDX_NONE)
            values[i] = std::monostate();
        else if (var.type == MDX_TEXT)
            values[i] = mdx::toUtf8({var.value.text.pointer, var.value.text.length});
        else if (var.type == MDX_DATE)
            values[i] = var.value.date;
        else
            values[i] = int64_t(var.type == MDX_BOOLEAN ? var.value.boolean : var.value.integer);
    }
    return values;
}

struct Noun {
    QString word;
    int gender; ///< 0 masculine, 1 feminine, 2 neuter
};

int64_t integerOf(const store::TableDef& table, const Values& values, const char* name) {
    const auto found = values.find(table.find(name));
    const auto* number = found == values.end() ? nullptr : std::get_if<int64_t>(&found->second);
    return number ? *number : -1;
}

Noun nounOf(const store::TableDef& table, const Values& values) {
    const auto is = [&](const char* name) { return std::strcmp(table.name, name) == 0; };
    if (is(table::Menu))
        return {QStringLiteral("элемент меню"), 0};
    if (is(table::MenuFolder))
        return integerOf(table, values, field::isFolder) == 1
                   ? Noun{QStringLiteral("папка рабочих столов"), 1}
                   : Noun{QStringLiteral("рабочий стол"), 0};
    if (is(table::MenuResourceFolder))
        return {QStringLiteral("папка ресурсов"), 1};
    if (is(table::Users))
        return {QStringLiteral("пользователь"), 0};
    if (is(table::MenuFileExt))
        return {QStringLiteral("расширение файлов"), 2};
    switch (integerOf(table, values, field::type_)) {
    case Kind::Module:
        return {QStringLiteral("модуль"), 0};
    case Kind::Function:
        return {QStringLiteral("функция"), 1};
    case Kind::Form:
        return {QStringLiteral("форма"), 1};
    case Kind::File:
        return {QStringLiteral("файл"), 0};
    default:
        return {QStringLiteral("ресурс"), 0};
    }
}

QString nameOf(const store::TableDef& table, const Values& values) {
    for (const char* name : {field::caption, field::name_, field::login_, field::fileExt}) {
        const auto found = values.find(table.find(name));
        if (found != values.end() && !store::textOf(found->second).empty())
            return textOf(found->second);
    }
    return {};
}

QString verb(uint32_t flag, bool renamed, int gender) {
    static const QString endings[] = {QString(), QStringLiteral("а"), QStringLiteral("о")};
    const QString stem = flag == MDX_INSERT   ? QStringLiteral("Создан")
                         : flag == MDX_DELETE ? QStringLiteral("Удал")
                         : renamed            ? QStringLiteral("Переименован")
                                              : QStringLiteral("Измен");
    if (flag == MDX_DELETE || (flag == MDX_UPDATE && !renamed)) {
        static const QString others[] = {QStringLiteral("ён"), QStringLiteral("ена"),
                                         QStringLiteral("ено")};
        return stem + others[gender];
    }
    return stem + endings[gender];
}

/// The folders above a record, from the top. Deeper values come first in the walk.
QString placeOf(const store::TableDef& table, Values values, store::Store* store) {
    QStringList path;
    const store::TableDef* at = &table;
    for (int depth = 0; store && depth < deepest; ++depth) {
        std::string above;
        const store::TableDef* where = nullptr;
        for (const store::ParentField& parent : store::parentFields(*at)) {
            const auto found = values.find(at->find(parent.field));
            if (found == values.end() || store::textOf(found->second).empty())
                continue;
            above = store::textOf(found->second);
            where = store::findTable(parent.table);
            break;
        }
        if (!where)
            break;
        values = stored(store, *where, above);
        if (values.empty())
            break;
        path.prepend(nameOf(*where, values));
        at = where;
    }
    return path.join(QStringLiteral(" / "));
}

struct Words {
    const char* field;
    const char* word;
};
constexpr Words fieldWords[] = {
    {field::caption, "Название"},
    {field::name_, "Имя"},
    {field::params, "Параметры"},
    {field::ico, "Значок"},
    {field::order_, "Порядок"},
    {field::separator, "Разделитель"},
    {field::oneCopy, "Одна копия"},
    {field::parent, "Папка меню"},
    {field::ParentKey, "Папка"},
    {field::FolderKey, "Рабочий стол"},
    {field::MenuResourceKey, "Ресурс"},
    {field::MenuResourceFolderKey, "Папка"},
    {field::UsersKey, "Кем занята"},
    {field::dateTimeEdit, "Когда занята"},
    {field::type_, "Вид"},
    {field::isFolder, "Папка"},
    {field::login_, "Вход"},
    {field::fileExt, "Расширение"},
};

WriteWords describeFiles(const WriteRequest& request) {
    WriteWords words;
    QStringList names;
    for (const WriteRequest::File& file : request.files)
        names << (file.path.isEmpty() ? file.name : file.path + QLatin1Char('/') + file.name);
    constexpr int most = 10;
    const int more = names.size() - most;
    QString list = QStringList(names.mid(0, most)).join(QStringLiteral(", "));
    if (more > 0)
        list += QStringLiteral(" и ещё %1").arg(more);
    switch (request.kind) {
    case WriteRequest::FormPut:
        words.what = QStringLiteral("Загрузка формы %1")
                         .arg(quoted(names.isEmpty() ? QString() : names.first()));
        words.place = request.formPath;
        break;
    case WriteRequest::FilePut:
        words.what = names.size() == 1 ? QStringLiteral("Загрузка файла ") + quoted(names.first())
                                       : QStringLiteral("Загрузка файлов: %1").arg(list);
        break;
    case WriteRequest::FormDelete:
        words.what = QStringLiteral("Удаление форм: %1").arg(list);
        break;
    default:
        words.what = QStringLiteral("Удаление файлов: %1").arg(list);
    }
    return words;
}

} // namespace

QString recordWords(const store::TableDef& table, const Values& values, const std::string& key) {
    const QString name = nameOf(table, values);
    return nounOf(table, values).word + QLatin1Char(' ') +
           (name.isEmpty() ? QString::fromStdString(key) : quoted(name));
}

QString fieldWord(const store::TableDef& table, int field) {
    const char* name = table.fields[static_cast<size_t>(field)].name;
    for (const Words& words : fieldWords)
        if (std::strcmp(words.field, name) == 0)
            return QString::fromUtf8(words.word);
    return QString::fromLatin1(name);
}

QString valueWords(const store::TableDef& table, int field, const Value& value,
                   store::Store* store) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
    if (std::holds_alternative<std::monostate>(value))
        return QStringLiteral("пусто");
    if (def.type == MDX_BOOLEAN)
        return std::get<int64_t>(value) != 0 ? QStringLiteral("да") : QStringLiteral("нет");
    if (const auto* number = std::get_if<int64_t>(&value))
        return QString::number(*number);
    if (const auto* date = std::get_if<double>(&value))
        return QDateTime::fromMSecsSinceEpoch(std::llround(*date * 1000.0))
            .toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    if (store && (def.link || std::strcmp(def.name, field::FolderKey) == 0)) {
        static const std::map<std::string, const char*> targets = {
            {field::MenuResourceKey, table::MenuResource}, {field::UsersKey, table::Users}};
        const char* target = nullptr;
        if (const auto found = targets.find(def.name); found != targets.end())
            target = found->second;
        for (const store::ParentField& parent : store::parentFields(table))
            if (std::strcmp(parent.field, def.name) == 0)
                target = parent.table;
        const store::TableDef* where = target ? store::findTable(target) : nullptr;
        const QString name =
            where ? nameOf(*where, stored(store, *where, store::textOf(value))) : QString();
        if (!name.isEmpty())
            return quoted(name);
    }
    return quoted(textOf(value));
}

WriteWords describe(const WriteRequest& request, store::Store* store) {
    if (request.kind != WriteRequest::Records)
        return describeFiles(request);
    WriteWords words;
    const store::TableDef* table = store::findTable(request.table);
    const std::vector<RecordWrite> records = recordsOf(request);
    if (!table || records.empty()) {
        words.what = QStringLiteral("Запись в таблицу %1")
                         .arg(quoted(QString::fromStdString(request.table)));
        return words;
    }
    // A paste or a deletion of thousands is told by its first record and the number.
    constexpr size_t mostDescribed = 20;
    bool first = true;
    size_t described = 0;
    for (const RecordWrite& record : records) {
        if (described++ == mostDescribed)
            break;
        // What is stored under the key of an insert is another record, the one in its way.
        const Values before =
            record.flag == MDX_INSERT ? Values() : stored(store, *table, record.key);
        Values after = before;
        bool renamed = false;
        for (const auto& [number, value] : record.values) {
            const auto old = before.find(number);
            const bool known = !before.empty();
            const bool same = old != before.end() && old->second == value;
            after[number] = value;
            if (same ||
                (record.flag == MDX_INSERT && std::holds_alternative<std::monostate>(value)))
                continue;
            FieldWords field{record.key, number, fieldWord(*table, number), {}, {}, known};
            field.mine = valueWords(*table, number, value, store);
            if (known)
                field.before =
                    valueWords(*table, number, old != before.end() ? old->second : Value(), store);
            renamed = renamed || (known && number == table->find(field::caption));
            if (record.flag != MDX_DELETE)
                words.fields.push_back(std::move(field));
        }
        if (!std::exchange(first, false))
            continue;
        const Noun noun = nounOf(*table, after);
        const QString name = nameOf(*table, after);
        words.what = verb(record.flag, renamed, noun.gender) + QLatin1Char(' ') +
                     recordWords(*table, after, record.key);
        if (renamed && nameOf(*table, before) != name)
            words.what += QStringLiteral(": было ") + quoted(nameOf(*table, before));
        words.place = placeOf(*table, after, store);
    }
    if (records.size() > 1)
        words.what += QStringLiteral(" и ещё %1").arg(records.size() - 1);
    return words;
}

} // namespace orvo::client
