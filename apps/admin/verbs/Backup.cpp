#include "apps/admin/Failure.h"
#include "apps/admin/Interrupt.h"
#include "apps/admin/NewFile.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Records.h"
#include "apps/admin/Verb.h"
#include "apps/admin/verbs/BaseFolders.h"
#include "frame/StdText.h"
#include "frame/Text.h"
#include "platform/store/Checksum.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace orvo::admin {

namespace {

void putChecksum(const std::string& place, const std::string& sum, const std::string& backup,
                 const store::MaintainedStore& store) {
    NewFile file(place, store);
    const std::string line = store::checksumLine(
        sum, QFileInfo(QString::fromStdString(backup)).fileName().toStdString());
    QFile writer(QString::fromStdString(file.path()));
    if (!writer.open(QIODevice::WriteOnly) ||
        writer.write(line.data(), static_cast<qint64>(line.size())) !=
            static_cast<qint64>(line.size()) ||
        !writer.flush())
        throw Failure(StdText::tr("контрольная сумма «") + place + StdText::tr("» не записана: ") +
                      writer.errorString().toStdString());
    file.put();
}

int backup(const Invocation& call) {
    const auto store = call.open();
    const Interruptible stoppable;
    NewFile file(call.argument(0), *store);
    {
        ProgressLine progress(call, StdText::tr("резервная копия"));
        require(store->backup(file.path(), std::ref(progress)),
                StdText::tr("резервная копия не сделана"));
    }
    // Before the file moves: a checksum of what was written, never of what stood there before.
    std::string sum;
    require(store::sumOf(file.path(), {}, &sum), StdText::tr("резервная копия не сделана"));
    const std::string sumFile = store::checksumFile(call.argument(0));
    if (std::remove(sumFile.c_str()) != 0 && errno != ENOENT)
        throw Failure(StdText::tr("резервная копия не сделана: прежний файл «") + sumFile +
                      StdText::tr("» не удаляется: ") + std::strerror(errno));
    file.put();
    putChecksum(sumFile, sum, call.argument(0), *store);
    out(StdText::tr("резервная копия сделана: ") + call.argument(0) + StdText::tr(", байт: ") +
        std::to_string(QFileInfo(QString::fromStdString(call.argument(0))).size()));
    return Done;
}

void restoreOptions(OptionList& options) {
    progressOption(options);
    options.append({QStringLiteral("replace"),
                    Text::tr("Хранилище не пустое: всё, что в нём есть, пропадёт.")});
}

int restore(const Invocation& call) {
    const QFileInfo file(QString::fromStdString(call.argument(0)));
    if (!file.isFile() || !file.isReadable())
        throw Failure(StdText::tr("хранилище не восстановлено: файла «") + call.argument(0) +
                      StdText::tr("» нет, или он не читается"));
    const auto store = call.open();
    if (!call.has("replace"))
        if (const std::string work = findWork(*store, true); !work.empty())
            throw Failure(StdText::tr("хранилище не восстановлено: оно не пустое (") + work +
                          StdText::tr("); заменить его - ключ --replace"));
    const Interruptible stoppable;
    {
        ProgressLine progress(call, StdText::tr("восстановление"));
        require(store->restore(file.absoluteFilePath().toStdString(), std::ref(progress)),
                StdText::tr("хранилище не восстановлено"));
    }
    out(StdText::tr("хранилище восстановлено: ") + store->displayName());
    if (!store::hasChecksum(file.absoluteFilePath().toStdString()))
        out(StdText::tr(
            "контрольной суммы рядом с копией нет: проверено её устройство, но не каждый байт"));
    return Done;
}

} // namespace

const Verb backupVerb = {
    "backup",
    QT_TRANSLATE_NOOP("orvo", "[--progress] ФАЙЛ"),
    QT_TRANSLATE_NOOP("orvo", "Сделать резервную копию хранилища"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Копия снимает один момент, в который остальные продолжают работать, и содержит всё, с "
        "журналом\n"
        "изменений. Файл появляется целиком или никак; прежний файл с этим именем заменяется. "
        "Рядом\n"
        "ложится его контрольная сумма, ФАЙЛ.sha256: её проверяют restore и sha256sum -c. Копия\n"
        "хранилища SQLite сама хранилище; копию хранилища PostgreSQL делает pg_dump, и читает её\n"
        "pg_restore."),
    1,
    1,
    progressOption,
    backup,
};

const Verb restoreVerb = {
    "restore",
    QT_TRANSLATE_NOOP("orvo", "[--replace] [--progress] ФАЙЛ"),
    QT_TRANSLATE_NOOP("orvo", "Восстановить хранилище из резервной копии"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Хранилище должно быть (init) и быть того же вида, что и копия. Одной транзакцией: удаётся "
        "всё\n"
        "или ничего не меняется. Копия проверяется целиком и по контрольной сумме рядом с ней; без "
        "суммы\n"
        "строже проверяется её устройство. Открытые клиенты замечают замену и открывают свои "
        "модули\n"
        "заново."),
    1,
    1,
    restoreOptions,
    restore,
};

} // namespace orvo::admin
