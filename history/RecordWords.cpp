#include "history/RecordWords.h"

#include "frame/Kinds.h"
#include "platform/store/Merge.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace orvo::history {

namespace {

constexpr int deepest = 32; ///< folders of a place; data may hold circles

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

Noun noun(const char* one, const char* few, const char* many, Noun::Gender gender) {
    return {text(one), text(few), text(many), gender};
}

int64_t integerOf(const store::TableDef& table, const Values& values, const char* name) {
    const auto found = values.find(table.find(name));
    const auto* number = found == values.end() ? nullptr : std::get_if<int64_t>(&found->second);
    return number ? *number : -1;
}

} // namespace

const store::TableDef* targetOf(const store::TableDef& table, const store::FieldDef& def) {
    const auto is = [&](const char* name) { return std::strcmp(def.name, name) == 0; };
    for (const store::ParentField& parent : store::parentFields(table))
        if (is(parent.field))
            return store::findTable(parent.table);
    if (is(field::MenuResourceKey))
        return store::findTable(table::MenuResource);
    return is(field::UsersKey) ? store::findTable(table::Users) : nullptr;
}

Noun nounOf(const store::TableDef& table, const Values& values) {
    const auto is = [&](const char* name) { return std::strcmp(table.name, name) == 0; };
    if (is(table::Menu))
        return noun("элемент меню", "элемента меню", "элементов меню", Noun::Masculine);
    if (is(table::MenuFolder))
        return integerOf(table, values, field::isFolder) == 1
                   ? noun("папка рабочих столов", "папки рабочих столов", "папок рабочих столов",
                          Noun::Feminine)
                   : noun("рабочий стол", "рабочих стола", "рабочих столов", Noun::Masculine);
    if (is(table::MenuResourceFolder))
        return noun("папка ресурсов", "папки ресурсов", "папок ресурсов", Noun::Feminine);
    if (is(table::Users))
        return noun("пользователь", "пользователя", "пользователей", Noun::Masculine);
    if (is(table::MenuFileExt))
        return noun("расширение файлов", "расширения файлов", "расширений файлов", Noun::Neuter);
    if (is(table::MenuResourceFile))
        return noun("содержимое файла", "файла с содержимым", "файлов с содержимым", Noun::Neuter);
    const auto number = static_cast<int32_t>(integerOf(table, values, field::type_));
    if (const ResourceKind* kind = resourceKind(number))
        return noun(kind->one, kind->few, kind->many,
                    kind->isFeminine ? Noun::Feminine : Noun::Masculine);
    return noun("ресурс", "ресурса", "ресурсов", Noun::Masculine);
}

QString numeralForm(size_t count, const QString& one, const QString& few, const QString& many) {
    const size_t tens = count / 10 % 10;
    const size_t units = count % 10;
    if (tens == 1 || units == 0 || units > 4)
        return many;
    return units == 1 ? one : few;
}

QString counted(size_t count, const Noun& noun) {
    return QString::number(count) + QLatin1Char(' ') +
           numeralForm(count, noun.one, noun.few, noun.many);
}

QString andMore(size_t count) {
    return count == 0 ? QString()
                      : QStringLiteral(" и ещё %1 %2")
                            .arg(count)
                            .arg(numeralForm(count, QStringLiteral("запись"),
                                             QStringLiteral("записи"), QStringLiteral("записей")));
}

Noun accusative(Noun noun) {
    const QString word = noun.one.section(QLatin1Char(' '), 0, 0);
    if (noun.gender == Noun::Feminine && word.endsWith(QStringLiteral("а")))
        noun.one.replace(word.size() - 1, 1, QStringLiteral("у"));
    else if (noun.gender == Noun::Feminine && word.endsWith(QStringLiteral("я")))
        noun.one.replace(word.size() - 1, 1, QStringLiteral("ю"));
    return noun;
}

QString nameOf(const store::TableDef& table, const Values& values) {
    for (const char* name : {field::caption, field::name_, field::login_, field::fileExt}) {
        const auto found = values.find(table.find(name));
        if (found != values.end() && !store::textOf(found->second).empty())
            return QString::fromStdString(store::textOf(found->second));
    }
    return {};
}

namespace {

bool breaksLine(QChar letter) {
    return letter.category() == QChar::Separator_Line ||
           letter.category() == QChar::Separator_Paragraph;
}

/// Whether what follows would be shown in another direction.
bool turnsText(QChar letter) {
    const ushort code = letter.unicode();
    return code == 0x61C || code == 0x200E || code == 0x200F ||
           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

QString onOneLine(QString text) {
    for (QChar& letter : text)
        if (letter.category() == QChar::Other_Control || breaksLine(letter) || turnsText(letter))
            letter = QLatin1Char(' ');
    return text.trimmed();
}

} // namespace

QString quoted(const QString& text) {
    constexpr int longest = 80;
    const QString line = onOneLine(text);
    return QStringLiteral("«%1»").arg(
        line.size() > longest ? line.left(longest) + QStringLiteral("…") : line);
}

QString recordWords(const store::TableDef& table, const Values& values, const std::string& key) {
    const QString name = nameOf(table, values);
    return nounOf(table, values).one + QLatin1Char(' ') +
           (name.isEmpty() ? QString::fromStdString(key) : quoted(name));
}

QString fieldWord(const store::TableDef& table, int field) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
    return text(def.word ? def.word : def.name);
}

QString valueWords(const store::TableDef& table, int field, const store::Value& value,
                   RecordSource* source) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
    const auto* letters = std::get_if<std::string>(&value);
    if (std::holds_alternative<std::monostate>(value) || (letters && letters->empty()))
        return QStringLiteral("пусто");
    const auto* number = std::get_if<int64_t>(&value);
    if (number && def.type == MDX_BOOLEAN)
        return *number != 0 ? QStringLiteral("да") : QStringLiteral("нет");
    if (number)
        return QString::number(*number);
    if (const auto* date = std::get_if<double>(&value))
        return QDateTime::fromMSecsSinceEpoch(std::llround(*date * 1000.0))
            .toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    if (const store::TableDef* target = source ? targetOf(table, def) : nullptr) {
        const QString name = nameOf(*target, source->valuesOf(*target, store::textOf(value)));
        if (!name.isEmpty())
            return quoted(name);
    }
    // As a whole: old and new value may differ at their ends alone.
    return QStringLiteral("«%1»").arg(onOneLine(QString::fromStdString(store::textOf(value))));
}

bool readAlike(const store::Value& one, const store::Value& other) {
    const auto reads = [](const store::Value& value, const store::Value& asNothing) {
        return std::holds_alternative<std::monostate>(value) &&
               (asNothing == store::Value(std::string()) || asNothing == store::Value(int64_t{0}));
    };
    return one == other || reads(one, other) || reads(other, one);
}

Above directlyAbove(const store::TableDef& table, const Values& values) {
    for (const store::ParentField& parent : linksAbove(table)) {
        const auto found = values.find(table.find(parent.field));
        if (found != values.end() && !store::textOf(found->second).empty())
            return {store::findTable(parent.table), store::textOf(found->second), {}};
    }
    return {};
}

std::vector<Above> allAbove(const store::TableDef& table, Values values, RecordSource* source) {
    std::vector<Above> path;
    const store::TableDef* at = &table;
    for (int depth = 0; source && depth < deepest; ++depth) {
        Above next = directlyAbove(*at, values);
        if (!next.table)
            break;
        values = source->valuesOf(*next.table, next.key);
        if (values.empty())
            break;
        const bool isOfContent = at == &store::contentTable();
        at = next.table;
        if (isOfContent)
            continue;
        next.name = nameOf(*at, values);
        path.push_back(std::move(next));
    }
    std::reverse(path.begin(), path.end());
    return path;
}

QString joined(const std::vector<Above>& above) {
    QStringList names;
    for (const Above& one : above)
        names << one.name;
    return names.join(QStringLiteral(" / "));
}

QString placeOf(const store::TableDef& table, Values values, RecordSource* source) {
    return joined(allAbove(table, std::move(values), source));
}

QString deedWord(Deed deed, const Noun& noun, size_t count) {
    static const char* const words[][4] = {
        {"Создан", "Создана", "Создано", "Созданы"},
        {"Удалён", "Удалена", "Удалено", "Удалены"},
        {"Переименован", "Переименована", "Переименовано", "Переименованы"},
        {"Перемещён", "Перемещена", "Перемещено", "Перемещены"},
        {"Изменён", "Изменена", "Изменено", "Изменены"},
        {"Занят", "Занята", "Занято", "Заняты"},
        {"Освобождён", "Освобождена", "Освобождено", "Освобождены"},
        {"Переставлен", "Переставлена", "Переставлено", "Переставлены"},
    };
    const auto& forms = words[static_cast<size_t>(deed)];
    return numeralForm(count, text(forms[noun.gender]), text(forms[3]), text(forms[Noun::Neuter]));
}

QString takenBackWords(Deed deed) {
    static const char* const words[] = {"создание",  "удаление", "переименование", "перемещение",
                                        "изменение", "занятие",  "освобождение",   "перестановка"};
    const bool feminine = deed == Deed::Ordered;
    return QStringLiteral("%1 %2:").arg(feminine ? QStringLiteral("Отменена")
                                                 : QStringLiteral("Отменено"),
                                        text(words[static_cast<size_t>(deed)]));
}

QString infinitive(Deed deed) {
    static const char* const words[] = {"создать",  "удалить", "переименовать", "переместить",
                                        "изменить", "занять",  "освободить",    "переставить"};
    return QString::fromUtf8(words[static_cast<size_t>(deed)]);
}

} // namespace orvo::history
