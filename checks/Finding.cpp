#include "checks/Finding.h"

#include "frame/Text.h"
#include "history/RecordWords.h"

namespace orvo::checks {

namespace {

/// What the value of a finding is.
enum class Detail {
    None,
    Text,      ///< shown as it is
    Key,       ///< of a record that is not stored
    ParentKey, ///< of one in the same table, which is
    DesktopKey,
    FolderKey,
    ResourceKey,
    Neighbour, ///< a text, behind the record that has the right to it
};

struct Description {
    Severity severity;
    const char* identifier;
    const char* title;
    Detail detail = Detail::None;
    bool hides = false; ///< the record, or what stands below it, is shown nowhere
};

const Description& describe(Problem problem) {
    constexpr Severity E = Severity::Error, W = Severity::Warning;
    static const Description all[] = {
        {E, "login-empty", QT_TRANSLATE_NOOP("orvo", "пустое имя входа")},
        {E, "login-twice", QT_TRANSLATE_NOOP("orvo", "имя входа уже есть у другого пользователя")},
        {E, "extension-empty", QT_TRANSLATE_NOOP("orvo", "пустое расширение")},
        {W, "extension-twice", QT_TRANSLATE_NOOP("orvo", "расширение повторяется")},
        {E, "no-caption", QT_TRANSLATE_NOOP("orvo", "пустое название")},
        {E, "no-parent", QT_TRANSLATE_NOOP("orvo", "нет родителя"), Detail::Key, true},
        {E, "circle", QT_TRANSLATE_NOOP("orvo", "круг: стоит внутри самой себя; записей в круге:"),
         Detail::Text, true},
        {E, "fixed-key",
         QT_TRANSLATE_NOOP("orvo", "такой ключ у строки дерева, за которой нет записи; редактор "
                                   "принимает одну за другую")},
        {E, "unknown-kind", QT_TRANSLATE_NOOP("orvo", "неизвестный тип"), Detail::Text, true},
        {E, "order-class-unknown",
         QT_TRANSLATE_NOOP("orvo", "порядок не \"1000\" (папка) и не \"2000\" (рабочий стол):"),
         Detail::Text, true},
        {E, "order-class-of-other",
         QT_TRANSLATE_NOOP("orvo",
                           "порядок не тот, у папки он \"1000\", у рабочего стола \"2000\":"),
         Detail::Text, true},
        {E, "parent-is-desktop", QT_TRANSLATE_NOOP("orvo", "родитель - рабочий стол, а не папка:"),
         Detail::ParentKey, true},
        {E, "desktop-unsaid",
         QT_TRANSLATE_NOOP("orvo", "не сказано, на каком рабочем столе элемент"), Detail::None,
         true},
        {E, "no-desktop", QT_TRANSLATE_NOOP("orvo", "нет рабочего стола"), Detail::Key, true},
        {E, "desktop-is-folder", QT_TRANSLATE_NOOP("orvo", "вместо рабочего стола папка столов:"),
         Detail::DesktopKey, true},
        {E, "desktop-spelling",
         QT_TRANSLATE_NOOP("orvo", "ключ рабочего стола записан другими буквами:"), Detail::Text,
         true},
        {E, "parent-elsewhere", QT_TRANSLATE_NOOP("orvo", "родитель на другом рабочем столе:"),
         Detail::ParentKey, true},
        {E, "parent-no-folder", QT_TRANSLATE_NOOP("orvo", "родитель - не папка меню:"),
         Detail::ParentKey, true},
        {E, "no-resource", QT_TRANSLATE_NOOP("orvo", "нет ресурса"), Detail::Key},
        {W, "not-launched", QT_TRANSLATE_NOOP("orvo", "ресурс такого типа из меню не запускается:"),
         Detail::ResourceKey},
        {W, "no-icon", QT_TRANSLATE_NOOP("orvo", "в папке icons нет значка"), Detail::Text},
        {W, "same-order",
         QT_TRANSLATE_NOOP("orvo", "место по порядку то же, что у соседнего элемента"),
         Detail::Neighbour},
        {E, "folder-twice", QT_TRANSLATE_NOOP("orvo", "рядом есть папка с таким же названием")},
        {W, "caption-no-path",
         QT_TRANSLATE_NOOP("orvo", "название не годится в путь, на диск не переносится")},
        {E, "under-top-row",
         QT_TRANSLATE_NOOP(
             "orvo", "сделана под верхней строкой дерева и после перезапуска редактора не видна:"),
         Detail::Text, true},
        {E, "parent-of-other-kind", QT_TRANSLATE_NOOP("orvo", "родитель другого типа:"),
         Detail::ParentKey, true},
        {E, "no-top-folder",
         QT_TRANSLATE_NOOP(
             "orvo", "нет верхней папки, без неё дерево ресурсов не загружается; её сделает init:"),
         Detail::Text},
        {E, "name-empty", QT_TRANSLATE_NOOP("orvo", "пустое имя ресурса")},
        {E, "name-twice", QT_TRANSLATE_NOOP("orvo", "имя ресурса повторяется:"), Detail::Text},
        {E, "folder-unsaid", QT_TRANSLATE_NOOP("orvo", "ресурс вне папок, в дереве не виден"),
         Detail::None, true},
        {E, "in-top-row", QT_TRANSLATE_NOOP("orvo", "после перезапуска редактора не виден; папка"),
         Detail::Text, true},
        {E, "no-folder", QT_TRANSLATE_NOOP("orvo", "нет папки"), Detail::Key, true},
        {W, "orphan-form",
         QT_TRANSLATE_NOOP("orvo", "папки нет, форма стоит среди непривязанных объектов; папка"),
         Detail::Key},
        {E, "folder-of-other-kind", QT_TRANSLATE_NOOP("orvo", "папка другого типа:"),
         Detail::FolderKey, true},
        {E, "lock-holder-gone",
         QT_TRANSLATE_NOOP("orvo", "нет пользователя, который держит блокировку:"), Detail::Key},
        {W, "lock-on-no-form", QT_TRANSLATE_NOOP("orvo", "блокировка не на форме")},
        {W, "name-no-file",
         QT_TRANSLATE_NOOP("orvo", "имя не годится для файла, на диск не переносится")},
        {W, "no-content", QT_TRANSLATE_NOOP("orvo", "содержимого файла в хранилище нет:"),
         Detail::Text},
    };
    static_assert(std::size(all) == static_cast<size_t>(Problem::NoContent) + 1);
    return all[static_cast<size_t>(problem)];
}

/// "«Схемы» (f3)".
QString named(const Catalogue& records, const store::TableDef& table, const std::string& key) {
    const Record record = records.find(table, key);
    const QString name = record ? record.name() : QString();
    return name.isEmpty()
               ? QString::fromStdString(key)
               : QStringLiteral("%1 (%2)").arg(history::quoted(name), QString::fromStdString(key));
}

QString detailOf(const Catalogue& records, const Namesakes& namesakes, const Finding& finding) {
    switch (describe(finding.problem).detail) {
    case Detail::None:
        return {};
    case Detail::Text:
    case Detail::Key:
        return QString::fromStdString(finding.value);
    case Detail::ParentKey:
        return named(records, *finding.table, finding.value);
    case Detail::DesktopKey:
        return named(records, fields().desktops, finding.value);
    case Detail::FolderKey:
        return named(records, fields().folders, finding.value);
    case Detail::Neighbour: {
        const Record record = records.find(*finding.table, finding.key);
        const Record first =
            record ? namesakes.first(records, Namesakes::identityOf(record)).owner : Record();
        const QString place = QString::fromStdString(finding.value);
        return first ? QStringLiteral("%1: %2").arg(named(records, *finding.table, first.key()),
                                                    place)
                     : place;
    }
    case Detail::ResourceKey: {
        const Record resource = records.find(fields().resources, finding.value);
        return Text::tr("%1, тип %2")
            .arg(named(records, fields().resources, finding.value))
            .arg(resource ? resource.integer(fields().resource.kind) : 0);
    }
    }
    return {};
}

} // namespace

Severity severityOf(Problem problem) {
    return describe(problem).severity;
}

const char* identifierOf(Problem problem) {
    return describe(problem).identifier;
}

bool isHiding(const Catalogue& records, const Finding& finding) {
    if (finding.problem != Problem::OrderClassUnknown &&
        finding.problem != Problem::OrderClassOfOther)
        return describe(finding.problem).hides;
    // At the top all are shown, whatever their order.
    const Record record = records.find(*finding.table, finding.key);
    return record && !record.cp1251(fields().desktop.parent).empty();
}

QString titleOf(Problem problem) {
    return Text::tr(describe(problem).title);
}

QString wordsOf(const Catalogue& records, const Namesakes& namesakes, const Finding& finding) {
    QString words = titleOf(finding.problem);
    if (const QString detail = detailOf(records, namesakes, finding); !detail.isEmpty())
        words += QLatin1Char(' ') + detail;
    const Record record =
        isHiding(records, finding) ? records.find(*finding.table, finding.key) : Record();
    if (!record)
        return words;
    constexpr size_t most = 1000;
    if (const size_t below = countBelow(records, record, most); below > 0)
        words += Text::tr("; вместе с этим не видно записей: %1%2")
                     .arg(below >= most ? Text::tr("не меньше ") : QString())
                     .arg(below);
    return words;
}

} // namespace orvo::checks
