#include "apps/admin/Failure.h"
#include "apps/admin/Json.h"
#include "apps/admin/Output.h"
#include "apps/admin/Records.h"
#include "apps/admin/Suggestion.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"

namespace orvo::admin {

namespace {

void requireUsable(const std::string& extension, const std::string& what) {
    requireStorable(extension, StdText::tr("расширение"));
    // It goes into the name filter of a file dialog, right behind an asterisk.
    if (extension.empty() || extension.find_first_of(" *?[]();/\\") != std::string::npos)
        throw Failure(StdText::tr("расширение «") + extension + StdText::tr("» ") + what +
                      StdText::tr(": оно пустое или содержит пробел, скобку, косую черту, * ? ;"));
}

Row findExtension(const Table& extensions, const std::string& extension) {
    return extensions.find(
        [&](const Row& row) { return sameText(row.text(field::fileExt), extension); });
}

Row needExtension(const Table& extensions, const std::string& extension, const std::string& what) {
    const Row row = findExtension(extensions, extension);
    if (!row)
        throw Failure(StdText::tr("расширение «") + extension + StdText::tr("» ") + what +
                      StdText::tr(": его нет") +
                      suggestion(extension, extensions.texts(field::fileExt)));
    return row;
}

int add(const Invocation& call) {
    const std::string extension = call.argument(0);
    requireUsable(extension, StdText::tr("не добавлено"));
    const auto store = call.open();
    if (findExtension(Table(*store, table::MenuFileExt), extension))
        throw Failure(StdText::tr("расширение «") + extension +
                      StdText::tr("» не добавлено: оно уже есть"));
    Batch batch(table::MenuFileExt);
    batch.insert(newKey()).text(field::fileExt, extension);
    batch.send(*store, StdText::tr("расширение не добавлено"));
    out(StdText::tr("расширение добавлено: ") + extension);
    return Done;
}

int change(const Invocation& call) {
    const std::string old = call.argument(0), extension = call.argument(1);
    requireUsable(extension, StdText::tr("не записано"));
    const auto store = call.open();
    const Table extensions(*store, table::MenuFileExt);
    const Row row = needExtension(extensions, old, StdText::tr("не изменено"));
    if (const Row taken = findExtension(extensions, extension); taken && taken.key() != row.key())
        throw Failure(StdText::tr("расширение «") + old + StdText::tr("» не изменено: «") +
                      extension + StdText::tr("» уже есть"));
    Batch batch(table::MenuFileExt);
    batch.update(row.key()).text(field::fileExt, extension);
    batch.send(*store, StdText::tr("расширение не изменено"));
    out(StdText::tr("расширение изменено: ") + row.text(field::fileExt) + " -> " + extension);
    return Done;
}

int remove(const Invocation& call) {
    const auto store = call.open();
    const Table extensions(*store, table::MenuFileExt);
    const Row row = needExtension(extensions, call.argument(0), StdText::tr("не удалено"));
    Batch batch(table::MenuFileExt);
    batch.remove(row.key());
    batch.send(*store, StdText::tr("расширение не удалено"));
    out(StdText::tr("расширение удалено: ") + row.text(field::fileExt));
    return Done;
}

int list(const Invocation& call) {
    const auto store = call.open();
    const Table extensions(*store, table::MenuFileExt);
    for (const std::string& extension : extensions.texts(field::fileExt))
        call.has("json") ? outJson({{"extension", jsonText(extension)}}) : out(cell(extension));
    return Done;
}

} // namespace

const Verb extAddVerb = {
    "ext add",
    QT_TRANSLATE_NOOP("orvo", "РАСШИРЕНИЕ"),
    QT_TRANSLATE_NOOP("orvo", "Добавить расширение файлов форм"),
    QT_TRANSLATE_NOOP("orvo", "Расширения предлагает окно загрузки форм. Значение стоит в фильтре "
                              "сразу после «*», поэтому\n"
                              "точка пишется: .ui"),
    1,
    1,
    nullptr,
    add,
};

const Verb extChangeVerb = {
    "ext change",
    QT_TRANSLATE_NOOP("orvo", "РАСШИРЕНИЕ НОВОЕ"),
    QT_TRANSLATE_NOOP("orvo", "Изменить расширение файлов форм"),
    QT_TRANSLATE_NOOP("orvo", "Формы, которые уже загружены, остаются как были."),
    2,
    2,
    nullptr,
    change,
};

const Verb extRemoveVerb = {
    "ext remove",
    QT_TRANSLATE_NOOP("orvo", "РАСШИРЕНИЕ"),
    QT_TRANSLATE_NOOP("orvo", "Удалить расширение файлов форм"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Окно загрузки форм его больше не предложит; формы, которые уже загружены, остаются."),
    1,
    1,
    nullptr,
    remove,
};

const Verb extListVerb = {
    "ext list", "[--json]", QT_TRANSLATE_NOOP("orvo", "Перечислить расширения файлов форм"),
    "",         0,          0,
    jsonOption, list,
};

} // namespace orvo::admin
