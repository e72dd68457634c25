#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/Output.h"
#include "apps/admin/ProgressLine.h"
#include "apps/admin/Suggestion.h"
#include "apps/admin/Verb.h"
#include "apps/admin/verbs/BaseFolders.h"
#include "frame/Kinds.h"
#include "frame/StdText.h"

#include <QDir>
#include <QFileInfo>

namespace orvo::admin {

void makeBaseFolders(store::Store& store) {
    const Folders folders(store);
    Batch batch(table::MenuResourceFolder);
    for (const ResourceKind& kind : resourceKinds)
        if (kind.topFolder && !folders.find(kind.number, {}))
            batch.insert(topKey(kind.number))
                .integer(field::type_, kind.number)
                .text(field::caption, kind.topFolder);
    if (!folders.find(File, iconFolder))
        batch.insert(iconFolderKey()).integer(field::type_, File).text(field::caption, iconFolder);
    batch.send(store, StdText::tr("начальные папки не сделаны"));
}

namespace {

/// Counts, and takes nothing.
class Counter : public store::Receiver {
public:
    uint64_t records = 0;

    store::Status expect(uint64_t count, uint64_t /*contents*/, uint64_t /*bytes*/) override {
        records = count;
        return {store::Stopped, {}};
    }
    store::Status record(const store::TableDef& /*table*/,
                         const std::vector<store::Value>& /*values*/,
                         const std::string& /*place*/) override {
        return {};
    }
    store::Status content(const std::vector<store::Value>& /*values*/,
                          const std::string& /*place*/) override {
        return {};
    }
    store::Status bytes(std::string_view /*piece*/) override { return {}; }
};

} // namespace

std::string findWork(store::MaintainedStore& store, bool peopleToo) {
    // A large store is not fetched only to be counted.
    Counter counter;
    const store::Status counted = store.writeOut(counter);
    if (counted.code != store::Stopped)
        require(counted, StdText::tr("записи не сосчитаны"));
    if (peopleToo && counter.records > 1000)
        return StdText::tr("записей: ") + std::to_string(counter.records);
    std::vector<const char*> names = {table::Menu, table::MenuFolder, table::MenuResource};
    if (peopleToo)
        names.insert(names.end(), {table::Users, table::MenuFileExt});
    for (const char* name : names)
        if (const int count = Table(store, name).count())
            return std::string(name) + StdText::tr(", записей: ") + std::to_string(count);
    const Table folders(store, table::MenuResourceFolder);
    for (int i = 0; i < folders.count(); ++i) {
        const Row row = folders.at(i);
        const int type = row.integer(field::type_);
        const char* base = type == File ? iconFolder : topCaption(type);
        if (!row.text(field::ParentKey).empty() || !base ||
            !sameText(row.text(field::caption), base))
            return StdText::tr("папка «") + row.text(field::caption) + StdText::tr("»");
    }
    return {};
}

namespace {

/// The folder of the default store is made; one that somebody names is there already, or mistyped.
void requireFolderAbove(const Invocation& call) {
    const std::string file = call.storeUrl().file();
    if (file.empty())
        return;
    const QString folder = QFileInfo(QString::fromStdString(file)).absolutePath();
    if (QFileInfo::exists(folder) || (call.isDefaultStore() && QDir().mkpath(folder)))
        return;
    QDir above(folder);
    while (!above.exists() && !above.isRoot())
        above.setPath(QFileInfo(above.path()).path());
    const QString missing = above.relativeFilePath(folder).section(QLatin1Char('/'), 0, 0);
    std::vector<std::string> present;
    for (const QString& name : above.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        present.push_back(name.toStdString());
    throw Failure(StdText::tr("хранилище не сделано: каталога «") +
                  above.filePath(missing).toStdString() + StdText::tr("» нет") +
                  suggestion(missing.toStdString(), present));
}

int run(const Invocation& call) {
    requireFolderAbove(call);
    store::Status status;
    const std::string& url = call.storeUrl().text();
    const bool present = store::open(url, {adminLogin, false, adminProgram}, &status) != nullptr;
    std::unique_ptr<store::MaintainedStore> store;
    std::vector<std::string> differences;
    {
        const WaitingLine line(call, StdText::tr("подготовка хранилища"));
        store = store::openMaintained(url, {adminLogin, true, adminProgram}, &status);
        if (!store)
            throw Failure(StdText::tr("хранилище не сделано: ") + status.text);
        // First: what is written before is not logged.
        require(store->remakeTriggers(&differences), StdText::tr("триггеры не сделаны заново"));
    }
    makeBaseFolders(*store);
    out((present ? StdText::tr("хранилище уже есть: ") : StdText::tr("хранилище сделано: ")) +
        store->displayName());
    for (const std::string& difference : differences)
        out(StdText::tr("исправлено: ") + difference);
    std::vector<std::string> loose;
    require(store->looseRights(&loose), StdText::tr("права не проверены"));
    for (const std::string& line : loose)
        complain(StdText::tr("внимание: ") + line);
    return Done;
}

} // namespace

const Verb initVerb = {
    "init",
    "[--progress]",
    QT_TRANSLATE_NOOP("orvo", "Сделать хранилище с начальными папками"),
    QT_TRANSLATE_NOOP(
        "orvo",
        "Делает таблицы, журнал изменений и папки, которых ждут редакторы: «модули», «функции»,\n"
        "«формы отображения» и папку значков «icons». Хранилище, которое уже есть, остаётся как "
        "было;\n"
        "недостающие начальные папки добавляются. Каталог для файла должен быть; сам собой "
        "делается\n"
        "только каталог хранилища по умолчанию. Триггеры, которые ведут журнал, делаются заново, "
        "если\n"
        "каких-то нет или они не такие, как у программы (их называет check): открытые клиенты "
        "тогда\n"
        "открывают модули заново, потому что в журнале могли остаться пропуски."),
    0,
    0,
    progressOption,
    run,
};

} // namespace orvo::admin
