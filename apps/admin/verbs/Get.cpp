#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/LocalFiles.h"
#include "apps/admin/Output.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"

namespace orvo::admin {

namespace {

int extract(const store::MaintainedStore& store, const std::vector<store::StoredFile>& files,
            const std::string& what, const std::string& directory) {
    if (files.empty())
        throw Failure(what + StdText::tr(" нет, или к ней не сохранено ни одного файла"));
    // A name that leads out of the directory is found before the first file is written.
    for (const store::StoredFile& file : files)
        if (!store::isPlainFileName(file.name))
            throw Failure(what + StdText::tr(": имя «") + file.name +
                          StdText::tr("» выводит из каталога; ничего не записано"));
    for (const store::StoredFile& file : files)
        if (store.livesIn(directory + "/" + file.name))
            throw Failure(what + StdText::tr(": на месте «") + file.name +
                          StdText::tr("» лежит сам файл хранилища; ничего не записано"));
    for (const store::StoredFile& file : files) {
        writeLocalFile(directory, file.name, file.bytes, file.time);
        out(cell(directory + "/" + file.name));
    }
    return Done;
}

int getForm(const Invocation& call) {
    requireDirectory(call.argument(1));
    const auto store = call.open();
    std::vector<store::StoredFile> files;
    require(store->formGet(call.argument(0), true, &files), StdText::tr("форма не извлечена"));
    return extract(*store, files, StdText::tr("формы «") + call.argument(0) + StdText::tr("»"),
                   call.argument(1));
}

void fileOptions(OptionList& options) {
    options.append({QStringLiteral("path"),
                    Text::tr("Папка: имена через «/»; без ключа - верхняя."), Text::tr("ПУТЬ")});
}

int getFile(const Invocation& call) {
    const std::string path = call.value("path");
    const std::string full = path.empty() ? call.argument(0) : path + "/" + call.argument(0);
    splitPath(path);
    requireDirectory(call.argument(1));
    const auto store = call.open();
    std::vector<store::StoredFile> files;
    require(store->fileGet(path, call.argument(0), true, &files), StdText::tr("файл не извлечён"));
    if (files.empty())
        throw Failure(StdText::tr("файла «") + full + StdText::tr("» нет"));
    return extract(*store, files, StdText::tr("файл «") + full + StdText::tr("»"),
                   call.argument(1));
}

} // namespace

const Verb getFormVerb = {
    "get form",
    QT_TRANSLATE_NOOP("orvo", "ФОРМА КАТАЛОГ"),
    QT_TRANSLATE_NOOP("orvo", "Извлечь файлы формы в каталог"),
    QT_TRANSLATE_NOOP(
        "orvo", "Каталог должен быть. Файлы с теми же именами в нём заменяются, каждый целиком."),
    2,
    2,
    nullptr,
    getForm,
};

const Verb getFileVerb = {
    "get file",
    QT_TRANSLATE_NOOP("orvo", "[--path ПУТЬ] ИМЯ КАТАЛОГ"),
    QT_TRANSLATE_NOOP("orvo", "Извлечь файл из файловых ресурсов"),
    QT_TRANSLATE_NOOP("orvo",
                      "Каталог должен быть. Файл с тем же именем в нём заменяется целиком."),
    2,
    2,
    fileOptions,
    getFile,
};

} // namespace orvo::admin
