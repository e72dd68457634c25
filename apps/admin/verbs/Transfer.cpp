#include "apps/admin/Failure.h"
#include "apps/admin/Interrupt.h"
#include "apps/admin/NewFile.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Records.h"
#include "apps/admin/Verb.h"
#include "apps/admin/transfer/Format.h"
#include "apps/admin/verbs/BaseFolders.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::admin {

namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, Close>;

std::string shownCount(const TransferCount& count) {
    return StdText::tr("записей ") + std::to_string(count.records) + StdText::tr(", файлов ") +
           std::to_string(count.files) + StdText::tr(" (байт ") + std::to_string(count.bytes) + ")";
}

int exportAll(const Invocation& call) {
    const std::string place = call.argument(0);
    const std::string what = StdText::tr("выгрузка не сделана");
    const auto store = call.open();
    const Interruptible stoppable;
    TransferCount count;
    const auto write = [&](std::FILE* stream) {
        ProgressLine progress(call, StdText::tr("выгрузка"));
        require(writeExport(*store, stream, std::ref(progress), &count), what);
    };
    if (place == "-") {
        write(stdout);
        return Done;
    }
    NewFile file(place, *store);
    const Stream stream(std::fopen(file.path().c_str(), "we"));
    if (!stream)
        throw Failure(std::string(what) + ": " + std::strerror(errno));
    write(stream.get());
    file.put();
    out(StdText::tr("выгружено: ") + shownCount(count));
    return Done;
}

void importOptions(OptionList& options) {
    progressOption(options);
    options.append({QStringLiteral("replace"),
                    Text::tr("Хранилище не пустое: всё, что в нём есть, пропадёт.")});
}

Stream openInput(const std::string& place, uint64_t* size) {
    Stream stream(place == "-" ? ::fdopen(::dup(0), "r") : std::fopen(place.c_str(), "re"));
    struct stat info {};
    if (!stream || ::fstat(::fileno(stream.get()), &info) != 0)
        throw Failure(StdText::tr("ничего не загружено: файл «") + place +
                      StdText::tr("» не открывается: ") + std::strerror(errno));
    if (S_ISDIR(info.st_mode))
        throw Failure(StdText::tr("ничего не загружено: «") + place + StdText::tr("» - каталог"));
    *size = S_ISREG(info.st_mode) ? static_cast<uint64_t>(info.st_size) : 0;
    return stream;
}

int importAll(const Invocation& call) {
    const std::string what = StdText::tr("ничего не загружено");
    uint64_t size = 0;
    const Stream stream = openInput(call.argument(0), &size);
    const auto store = call.open();
    if (!call.has("replace"))
        if (const std::string work = findWork(*store, true); !work.empty())
            throw Failure(std::string(what) + StdText::tr(": хранилище не пустое (") + work +
                          StdText::tr("); заменить всё, что в нём есть, - ключ --replace"));
    const Interruptible stoppable;
    TransferCount count;
    {
        ProgressLine progress(call, StdText::tr("загрузка"));
        const store::Progress look = std::ref(progress);
        require(store->replaceAll([&](store::Receiver& into) {
            return readExport(stream.get(), size, into, look, &count);
        }),
                what);
    }
    out(StdText::tr("загружено: ") + shownCount(count));
    std::vector<std::string> missing;
    if (store->missingLogins(&missing).ok() && !missing.empty()) {
        std::string names;
        for (const std::string& login : missing)
            names += (names.empty() ? "" : ", ") + cell(login);
        out(StdText::tr("без входа на сервер (дать его: orvo-admin user login ВХОД): ") + names);
    }
    return Done;
}

} // namespace

const Verb exportVerb = {
    "export",
    QT_TRANSLATE_NOOP("orvo", "[--progress] ФАЙЛ|-"),
    QT_TRANSLATE_NOOP("orvo", "Выгрузить всю установку в JSON"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Все таблицы и все сохранённые формы и файлы, как они есть в один момент; без журнала\n"
        "изменений, входов на сервер и паролей. Каждая запись на своей строке, по порядку ключей:\n"
        "выгрузки можно сравнивать. «-» - в стандартный вывод. Файл появляется целиком или никак."),
    1,
    1,
    progressOption,
    exportAll,
};

const Verb importVerb = {
    "import",
    QT_TRANSLATE_NOOP("orvo", "[--replace] [--progress] ФАЙЛ|-"),
    QT_TRANSLATE_NOOP("orvo", "Загрузить выгруженную установку"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "В хранилище любого вида, одной транзакцией: при первой же негодной записи не меняется "
        "ничего,\n"
        "а сообщение называет строку, таблицу и номер записи. Всё, что хранилище держало, "
        "заменяется;\n"
        "если это не только начальные папки, нужен ключ --replace. Ссылки в никуда и круги "
        "родителей\n"
        "загружаются, как были: их назовёт check. Пользователи загружаются без входов на сервер; у "
        "кого\n"
        "входа нет, тех команда называет. «-» - со стандартного ввода."),
    1,
    1,
    importOptions,
    importAll,
};

} // namespace orvo::admin
