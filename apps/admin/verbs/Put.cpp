#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/LocalFiles.h"
#include "apps/admin/Output.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"
#include "frame/Text.h"
#include "history/Locks.h"
#include "history/People.h"
#include "platform/store/Names.h"

namespace orvo::admin {

namespace {

void putOptions(OptionList& options) {
    options.append({QStringLiteral("path"),
                    Text::tr("Папка: имена через «/»; без ключа - верхняя."), Text::tr("ПУТЬ")});
    options.append({QStringLiteral("make-folders"), Text::tr("Сделать папки пути, которых нет.")});
}

/// Reads all files before anything is sent: an unreadable one leaves the store as it was.
std::vector<LocalFile> readAll(const Invocation& call) {
    std::vector<LocalFile> files;
    for (int i = 0; i < call.arguments().size(); ++i) {
        files.push_back(readLocalFile(call.argument(i)));
        for (size_t earlier = 0; earlier + 1 < files.size(); ++earlier)
            if (sameText(files[earlier].name, files.back().name))
                throw Failure(StdText::tr("ничего не загружено: имя «") + files.back().name +
                              StdText::tr("» дано дважды"));
    }
    return files;
}

/// Throws unless the folder is there, or makes it if that was asked for.
void prepareFolder(const Invocation& call, store::Store& store, int kind) {
    Folders folders(store);
    if (call.has("make-folders"))
        folders.make(store, kind, call.value("path"));
    else
        folders.need(kind, call.value("path"), StdText::tr("; сделать её - ключ --make-folders"));
}

std::vector<store::FileToPut> asPuts(const std::vector<LocalFile>& files, const std::string& path) {
    std::vector<store::FileToPut> puts;
    for (const LocalFile& file : files)
        puts.push_back({path, file.name, file.bytes, file.time});
    return puts;
}

/// A form that another has taken into work is his: what he saves would hide what was put there.
void refuseHeld(store::MaintainedStore& store, const std::vector<LocalFile>& files) {
    std::vector<std::string_view> names;
    names.reserve(files.size());
    for (const LocalFile& file : files)
        names.emplace_back(file.name);
    const std::string name = store::formName(names);
    const Table resources(store, table::MenuResource);
    const Row form = resources.find([&](const Row& row) {
        return row.integer(field::type_) == Form && sameText(row.text(field::name_), name);
    });
    std::map<std::string, history::FormLock> held;
    if (form)
        require(history::heldByOthers(store, {form.key()}, &held),
                StdText::tr("форма не загружена"));
    if (held.empty())
        return;
    history::PersonNames people;
    if (!history::readPeople(store, &people).ok())
        people.clear(); // the login serves
    const history::FormLock& lock = held.begin()->second;
    throw Failure(StdText::tr("форма не загружена: «") + form.text(field::name_) +
                  StdText::tr("» занята (") +
                  history::whoAndWhen(lock.login, lock.since, people).toStdString() +
                  StdText::tr("); освободить её: orvo-admin unlock ") + form.text(field::name_));
}

int putForm(const Invocation& call) {
    const std::string path = call.value("path");
    splitPath(path);
    const std::vector<LocalFile> files = readAll(call);
    const auto store = call.open();
    refuseHeld(*store, files);
    prepareFolder(call, *store, Form);
    require(store->formPut(path, asPuts(files, path)), StdText::tr("форма не загружена"));
    out(StdText::tr("форма загружена, файлов: ") + std::to_string(files.size()));
    return Done;
}

int putFile(const Invocation& call) {
    const std::string path = call.value("path");
    splitPath(path);
    const std::vector<LocalFile> files = readAll(call);
    const auto store = call.open();
    prepareFolder(call, *store, File);
    require(store->filePut(asPuts(files, path)), StdText::tr("файлы не загружены"));
    out(StdText::tr("файлов загружено: ") + std::to_string(files.size()));
    return Done;
}

} // namespace

const Verb putFormVerb = {
    "put form",
    QT_TRANSLATE_NOOP("orvo", "[--path ПУТЬ] [--make-folders] ФАЙЛ..."),
    QT_TRANSLATE_NOOP("orvo", "Загрузить форму из её файлов"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Все названные файлы составляют одну форму. Её имя - имя файла, который оканчивается на "
        "«_»,\n"
        "а если такого нет, самое короткое. Файлы формы с другими именами остаются в хранилище.\n"
        "Путь считается от папки «формы отображения». Форма, которую другой взял в работу, не\n"
        "заменяется: её освобождает он сам или unlock."),
    1,
    -1,
    putOptions,
    putForm,
};

const Verb putFileVerb = {
    "put file",
    QT_TRANSLATE_NOOP("orvo", "[--path ПУТЬ] [--make-folders] ФАЙЛ..."),
    QT_TRANSLATE_NOOP("orvo", "Загрузить файлы в файловые ресурсы"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Файл с тем же именем в той же папке заменяется. Загружаются все файлы или ни один."),
    1,
    -1,
    putOptions,
    putFile,
};

} // namespace orvo::admin
