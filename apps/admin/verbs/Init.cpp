#include "apps/admin/Failure.h"
#include "apps/admin/Folders.h"
#include "apps/admin/Output.h"
#include "apps/admin/Verb.h"
#include "apps/admin/verbs/BaseFolders.h"

#include <QDir>
#include <QFileInfo>

namespace orvo::admin {

void makeBaseFolders(store::Store& store) {
    const Folders folders(store);
    Batch batch("MenuResourceFolder");
    for (const int kind : {Module, Function, Form})
        if (!folders.find(kind, {}))
            batch.insert(topKey(kind)).integer("type_", kind).text("caption", topCaption(kind));
    if (!folders.find(File, iconFolder))
        batch.insert(iconFolderKey()).integer("type_", File).text("caption", iconFolder);
    batch.send(store, "начальные папки не сделаны");
}

std::string findWork(store::Store& store, bool peopleToo) {
    std::vector<const char*> names = {"Menu", "MenuFolder", "MenuResource"};
    if (peopleToo)
        names.insert(names.end(), {"Users", "MenuFileExt"});
    for (const char* name : names)
        if (const int count = Table(store, name).count())
            return std::string(name) + ", записей: " + std::to_string(count);
    const Table folders(store, "MenuResourceFolder");
    for (int i = 0; i < folders.count(); ++i) {
        const Row row = folders.at(i);
        const int type = row.integer("type_");
        const char* base = type == File ? iconFolder : topCaption(type);
        if (!row.text("ParentKey").empty() || !base || !sameText(row.text("caption"), base))
            return "папка «" + row.text("caption") + "»";
    }
    return {};
}

namespace {

/// A plain path gets the folders above it; a URL names a place that is there already.
void makeFolderAbove(const std::string& url) {
    if (url.find("://") != std::string::npos)
        return;
    const QString folder = QFileInfo(QString::fromStdString(url)).absolutePath();
    if (!QDir().mkpath(folder))
        throw Failure("хранилище не сделано: каталог «" + folder.toStdString() + "» не создаётся");
}

int run(const Invocation& call) {
    makeFolderAbove(call.storeUrl());
    store::Status status;
    const bool present = store::open(call.storeUrl(), {adminLogin, false}, &status) != nullptr;
    const auto store = store::open(call.storeUrl(), {adminLogin, true}, &status);
    if (!store)
        throw Failure("хранилище не сделано: " + status.text);
    makeBaseFolders(*store);
    out((present ? "хранилище уже есть: " : "хранилище сделано: ") + store->displayName());
    return Done;
}

} // namespace

const Verb initVerb = {
    "init",
    "",
    "Сделать хранилище с начальными папками",
    "Делает таблицы, журнал изменений и папки, которых ждут редакторы: «модули», «функции»,\n"
    "«формы отображения» и папку значков «icons». Хранилище, которое уже есть, остаётся как было;\n"
    "недостающие начальные папки добавляются.",
    0,
    0,
    nullptr,
    run,
};

} // namespace orvo::admin
