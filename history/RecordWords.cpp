#include "history/RecordWords.h"

#include "frame/Kinds.h"
#include "frame/Text.h"
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

Noun noun(const QString& one, const QString& few, const QString& many, Noun::Gender gender) {
    return {one, few, many, gender};
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
        return noun(Text::tr("элемент меню"), Text::tr("элемента меню"), Text::tr("элементов меню"),
                    Noun::Masculine);
    if (is(table::MenuFolder))
        return integerOf(table, values, field::isFolder) == 1
                   ? noun(Text::tr("папка рабочих столов"), Text::tr("папки рабочих столов"),
                          Text::tr("папок рабочих столов"), Noun::Feminine)
                   : noun(Text::tr("рабочий стол"), Text::tr("рабочих стола"),
                          Text::tr("рабочих столов"), Noun::Masculine);
    if (is(table::MenuResourceFolder))
        return noun(Text::tr("папка ресурсов"), Text::tr("папки ресурсов"),
                    Text::tr("папок ресурсов"), Noun::Feminine);
    if (is(table::Users))
        return noun(Text::tr("пользователь"), Text::tr("пользователя"), Text::tr("пользователей"),
                    Noun::Masculine);
    if (is(table::MenuFileExt))
        return noun(Text::tr("расширение файлов"), Text::tr("расширения файлов"),
                    Text::tr("расширений файлов"), Noun::Neuter);
    if (is(table::MenuResourceFile))
        return noun(Text::tr("содержимое файла"), Text::tr("файла с содержимым"),
                    Text::tr("файлов с содержимым"), Noun::Neuter);
    const auto number = static_cast<int32_t>(integerOf(table, values, field::type_));
    if (const ResourceKind* kind = resourceKind(number))
        return noun(Text::tr(kind->one), Text::tr(kind->few), Text::tr(kind->many),
                    kind->isFeminine ? Noun::Feminine : Noun::Masculine);
    return noun(Text::tr("ресурс"), Text::tr("ресурса"), Text::tr("ресурсов"), Noun::Masculine);
}

QString numeralForm(size_t count, const QString& one, const QString& few, const QString& many) {
    if (textLocale().language() == QLocale::English)
        return count == 1 ? one : many;
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
                      : Text::tr(" и ещё %1 %2")
                            .arg(count)
                            .arg(numeralForm(count, Text::tr("запись"), Text::tr("записи"),
                                             Text::tr("записей")));
}

Noun accusative(Noun noun) {
    const QString word = noun.one.section(QLatin1Char(' '), 0, 0);
    if (noun.gender == Noun::Feminine && word.endsWith(QChar(u'а')))
        noun.one.replace(word.size() - 1, 1, QChar(u'у'));
    else if (noun.gender == Noun::Feminine && word.endsWith(QChar(u'я')))
        noun.one.replace(word.size() - 1, 1, QChar(u'ю'));
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

Values toldValues(const store::TableDef& table, Values values, RecordSource& source) {
    if (&table != &store::contentTable())
        return values;
    const auto owner = values.find(table.find(field::MenuResourceKey));
    if (owner == values.end())
        return values;
    const store::TableDef& resources = *store::findTable(table::MenuResource);
    const Values file = source.valuesOf(resources, store::textOf(owner->second));
    const auto name = file.find(resources.find(field::name_));
    if (integerOf(resources, file, field::type_) == Kind::File && name != file.end())
        values[table.find(field::name_)] = name->second;
    return values;
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
    return Text::tr("«%1»").arg(line.size() > longest ? line.left(longest) + QStringLiteral("…")
                                                      : line);
}

QString recordWords(const store::TableDef& table, const Values& values, const std::string& key) {
    const QString name = nameOf(table, values);
    return nounOf(table, values).one + QLatin1Char(' ') +
           (name.isEmpty() ? QString::fromStdString(key) : quoted(name));
}

QString fieldWord(const store::TableDef& table, int field) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
    return def.word ? Text::tr(def.word) : QString::fromLatin1(def.name);
}

QString valueWords(const store::TableDef& table, int field, const store::Value& value,
                   RecordSource* source) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field)];
    const auto* letters = std::get_if<std::string>(&value);
    if (std::holds_alternative<std::monostate>(value) || (letters && letters->empty()))
        return Text::tr("пусто");
    const auto* number = std::get_if<int64_t>(&value);
    if (number && def.type == MDX_BOOLEAN)
        return *number != 0 ? Text::tr("да") : Text::tr("нет");
    if (number)
        return QString::number(*number);
    if (const auto* date = std::get_if<double>(&value))
        return QDateTime::fromMSecsSinceEpoch(std::llround(*date * 1000.0))
            .toString(Text::tr("dd.MM.yyyy HH:mm:ss"));
    if (const store::TableDef* target = source ? targetOf(table, def) : nullptr) {
        const QString name = nameOf(*target, source->valuesOf(*target, store::textOf(value)));
        if (!name.isEmpty())
            return quoted(name);
    }
    // As a whole: old and new value may differ at their ends alone.
    return Text::tr("«%1»").arg(onOneLine(QString::fromStdString(store::textOf(value))));
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
        {QT_TRANSLATE_NOOP("orvo", "Создан"), QT_TRANSLATE_NOOP("orvo", "Создана"),
         QT_TRANSLATE_NOOP("orvo", "Создано"), QT_TRANSLATE_NOOP("orvo", "Созданы")},
        {QT_TRANSLATE_NOOP("orvo", "Удалён"), QT_TRANSLATE_NOOP("orvo", "Удалена"),
         QT_TRANSLATE_NOOP("orvo", "Удалено"), QT_TRANSLATE_NOOP("orvo", "Удалены")},
        {QT_TRANSLATE_NOOP("orvo", "Переименован"), QT_TRANSLATE_NOOP("orvo", "Переименована"),
         QT_TRANSLATE_NOOP("orvo", "Переименовано"), QT_TRANSLATE_NOOP("orvo", "Переименованы")},
        {QT_TRANSLATE_NOOP("orvo", "Перемещён"), QT_TRANSLATE_NOOP("orvo", "Перемещена"),
         QT_TRANSLATE_NOOP("orvo", "Перемещено"), QT_TRANSLATE_NOOP("orvo", "Перемещены")},
        {QT_TRANSLATE_NOOP("orvo", "Изменён"), QT_TRANSLATE_NOOP("orvo", "Изменена"),
         QT_TRANSLATE_NOOP("orvo", "Изменено"), QT_TRANSLATE_NOOP("orvo", "Изменены")},
        {QT_TRANSLATE_NOOP("orvo", "Занят"), QT_TRANSLATE_NOOP("orvo", "Занята"),
         QT_TRANSLATE_NOOP("orvo", "Занято"), QT_TRANSLATE_NOOP("orvo", "Заняты")},
        {QT_TRANSLATE_NOOP("orvo", "Освобождён"), QT_TRANSLATE_NOOP("orvo", "Освобождена"),
         QT_TRANSLATE_NOOP("orvo", "Освобождено"), QT_TRANSLATE_NOOP("orvo", "Освобождены")},
        {QT_TRANSLATE_NOOP("orvo", "Переставлен"), QT_TRANSLATE_NOOP("orvo", "Переставлена"),
         QT_TRANSLATE_NOOP("orvo", "Переставлено"), QT_TRANSLATE_NOOP("orvo", "Переставлены")},
    };
    const auto& forms = words[static_cast<size_t>(deed)];
    return numeralForm(count, Text::tr(forms[noun.gender]), Text::tr(forms[3]),
                       Text::tr(forms[Noun::Neuter]));
}

QString takenBackWords(Deed deed) {
    static const char* const words[] = {
        QT_TRANSLATE_NOOP("orvo", "создание"),       QT_TRANSLATE_NOOP("orvo", "удаление"),
        QT_TRANSLATE_NOOP("orvo", "переименование"), QT_TRANSLATE_NOOP("orvo", "перемещение"),
        QT_TRANSLATE_NOOP("orvo", "изменение"),      QT_TRANSLATE_NOOP("orvo", "занятие"),
        QT_TRANSLATE_NOOP("orvo", "освобождение"),   QT_TRANSLATE_NOOP("orvo", "перестановка")};
    const bool feminine = deed == Deed::Ordered;
    return QStringLiteral("%1 %2:").arg(feminine ? Text::tr("Отменена") : Text::tr("Отменено"),
                                        Text::tr(words[static_cast<size_t>(deed)]));
}

QString infinitive(Deed deed) {
    static const char* const words[] = {
        QT_TRANSLATE_NOOP("orvo", "создать"),       QT_TRANSLATE_NOOP("orvo", "удалить"),
        QT_TRANSLATE_NOOP("orvo", "переименовать"), QT_TRANSLATE_NOOP("orvo", "переместить"),
        QT_TRANSLATE_NOOP("orvo", "изменить"),      QT_TRANSLATE_NOOP("orvo", "занять"),
        QT_TRANSLATE_NOOP("orvo", "освободить"),    QT_TRANSLATE_NOOP("orvo", "переставить")};
    return Text::tr(words[static_cast<size_t>(deed)]);
}

} // namespace orvo::history
