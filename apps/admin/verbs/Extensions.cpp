#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/Records.h"
#include "apps/admin/Verb.h"

namespace orvo::admin {

namespace {

int add(const Invocation& call) {
    const std::string extension = call.argument(0);
    requireStorable(extension, "расширение");
    // It goes into the name filter of a file dialog, right behind an asterisk.
    if (extension.empty() || extension.find_first_of(" *?[]();/\\") != std::string::npos)
        throw Failure("расширение «" + extension +
                      "» не добавлено: оно пустое или содержит пробел, скобку, косую черту, * ? ;");
    const auto store = call.open();
    if (Table(*store, table::MenuFileExt).find([&](const Row& row) {
            return sameText(row.text(field::fileExt), extension);
        }))
        throw Failure("расширение «" + extension + "» не добавлено: оно уже есть");
    Batch batch(table::MenuFileExt);
    batch.insert(newKey()).text(field::fileExt, extension);
    batch.send(*store, "расширение не добавлено");
    out("расширение добавлено: " + extension);
    return Done;
}

int list(const Invocation& call) {
    const auto store = call.open();
    const Table extensions(*store, table::MenuFileExt);
    for (int i = 0; i < extensions.count(); ++i)
        out(cell(extensions.at(i).text(field::fileExt)));
    return Done;
}

} // namespace

const Verb extAddVerb = {
    "ext add",
    "РАСШИРЕНИЕ",
    "Добавить расширение файлов форм",
    "Расширения предлагает окно загрузки форм. Значение стоит в фильтре сразу после «*», поэтому\n"
    "точка пишется: .ui",
    1,
    1,
    nullptr,
    add,
};

const Verb extListVerb = {
    "ext list", "", "Перечислить расширения файлов форм", "", 0, 0, nullptr, list,
};

} // namespace orvo::admin
