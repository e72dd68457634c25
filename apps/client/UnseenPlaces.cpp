#include "apps/client/UnseenPlaces.h"

#include "apps/client/KnownModules.h"
#include "frame/Kinds.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/ChangeRecord.h"
#include "platform/store/Names.h"

#include <cassert>

namespace orvo::app {

namespace {

const store::TableDef& folders() {
    static const store::TableDef& table = *store::findTable(table::MenuResourceFolder);
    return table;
}

/// The field that names the folder of a record; null for a table that the editor's tree lacks.
const char* linkOf(const store::TableDef& table) {
    return &table == &folders()                                  ? field::ParentKey
           : std::string_view(table.name) == table::MenuResource ? field::MenuResourceFolderKey
                                                                 : nullptr;
}

/// Whether it is of the area that shows records without a folder.
bool isFile(const store::TableDef& table, const store::FieldValues& values) {
    const auto kind = values.find(table.find(field::type_));
    return kind != values.end() && kind->second == store::Value(int64_t(Kind::File));
}

QString whereWords(const QString& place, bool isTop) {
    return isTop             ? Text::tr(" (теперь наверху)")
           : place.isEmpty() ? Text::tr(" (папки больше нет)")
                             : Text::tr(" (теперь в «%1»)").arg(place);
}

} // namespace

UnseenPlaces::UnseenPlaces(StoreThread& thread, const client::ModuleRegistry& modules)
    : m_thread(thread)
    , m_modules(modules) {
    m_look.setInterval(lookMs);
    connect(&m_look, &QTimer::timeout, this, &UnseenPlaces::look);
}

std::string UnseenPlaces::Placed::missed() const {
    return store::foldedKey(table == &folders() || folder.empty() ? key : folder);
}

COrvoCliMod* UnseenPlaces::editor() const {
    const QString name = moduleShowing(QLatin1String(folders().name));
    for (const QPointer<COrvoCliMod>& module : m_modules.modules(client::ModuleState::Running))
        if (module->m_moduleName == name)
            return module;
    return nullptr;
}

void UnseenPlaces::changed(const store::Change& change) {
    const store::TableDef* table = store::findTable(change.table);
    const char* link = table ? linkOf(*table) : nullptr;
    if (!link || !editor())
        return;
    const auto record = std::make_pair(table, store::foldedKey(change.key));
    if (change.code == OrvoEventDelete) {
        m_placed.erase(record);
        return;
    }
    const store::FieldValues values = store::valuesFromJson(*table, change.after);
    const auto found = values.find(table->find(link));
    if (found == values.end())
        return;
    m_placed[record] = {change.id,
                        table,
                        change.key,
                        store::textOf(found->second),
                        change.code == OrvoEventInsert,
                        isFile(*table, values)};
    if (!m_look.isActive())
        m_look.start();
}

void UnseenPlaces::look() {
    COrvoCliMod* const module = editor();
    if (module != m_toldOf) {
        m_toldFolders.clear();
        m_toldOf = module;
    }
    if (!module)
        m_placed.clear();
    const auto hasRow = [module](const store::TableDef& table, const std::string& key) {
        return module->ModHasRow(QString::fromLatin1(table.name), QString::fromStdString(key));
    };
    std::map<std::string, bool> shown; // folders
    const auto isShown = [&](const std::string& folder) {
        const auto [found, isNew] = shown.try_emplace(store::foldedKey(folder));
        if (isNew)
            found->second = hasRow(folders(), folder);
        return found->second;
    };
    auto unseen = std::make_shared<Unseen>();
    for (auto at = m_placed.begin(); at != m_placed.end();) {
        const Placed& placed = at->second;
        if (placed.change > module->messagesSeen()) {
            ++at;
            continue;
        }
        // A folder that moves to the top of its area gets beside the areas.
        const bool isPlaced = placed.folder.empty() ? placed.isNew || placed.table != &folders()
                                                    : isShown(placed.folder);
        const bool isToBeShown = placed.folder.empty()
                                     ? placed.isFile
                                     : m_toldFolders.count(store::foldedKey(placed.folder)) == 0;
        if (hasRow(*placed.table, placed.key)) {
            if (!isPlaced)
                unseen->misplaced.push_back(placed);
        } else if (isToBeShown) { // folders come first: nothing within them is told
            unseen->hidden.push_back(placed);
            m_toldFolders.insert(placed.missed());
        }
        at = m_placed.erase(at);
    }
    if (m_placed.empty())
        m_look.stop();
    assert(m_placed.empty() || m_look.isActive());
    if (!unseen->misplaced.empty() || !unseen->hidden.empty())
        tell(unseen);
}

void UnseenPlaces::tell(const std::shared_ptr<const Unseen>& unseen) {
    auto text = std::make_shared<QString>();
    const auto look = [unseen, text](store::MaintainedStore& store) {
        history::StoredRecords source(&store);
        bool isReopened = false, isCured = false; // what helps
        const auto all = [&](const std::vector<Placed>& records, const QString& before) {
            for (const Placed& placed : records)
                if (const history::Values values = source.valuesOf(*placed.table, placed.key);
                    !values.empty()) { // it is there still
                    const QString place = history::placeOf(*placed.table, values, &source);
                    const bool isTop = placed.folder.empty();
                    // Opened anew, the editor would not show it at all.
                    (!isTop && place.isEmpty() ? isCured : isReopened) = true;
                    return before + history::recordWords(*placed.table, values, placed.key) +
                           whereWords(place, isTop) + history::andMore(records.size() - 1);
                }
            return QString();
        };
        QStringList sentences{
            all(unseen->misplaced, Text::tr("Не на своём месте в дереве ресурсов: ")),
            all(unseen->hidden, Text::tr("Не видно в дереве ресурсов: "))};
        sentences.removeAll(QString());
        if (isReopened)
            sentences << Text::tr("На место ставит «Открыть модули заново» (Ctrl+R)");
        if (isCured)
            sentences << Text::tr("Место дают «Проблемы» (F8)");
        *text = sentences.join(QStringLiteral(". "));
        return store::Status();
    };
    m_thread.run(this, look, [this, unseen, text, module = m_toldOf](const store::Status& status) {
        if (text->isEmpty()) // the next one is told then
            for (const Placed& placed : unseen->hidden)
                m_toldFolders.erase(placed.missed());
        // Opened anew meanwhile, the editor shows it.
        if (status.ok() && !text->isEmpty() && module && module == editor())
            emit told(*text + QLatin1Char('.'));
    });
}

} // namespace orvo::app
