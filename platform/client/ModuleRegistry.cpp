#include "platform/client/ModuleRegistry.h"

#include <algorithm>

namespace orvo::client {

ModuleRegistry::ModuleRegistry(QObject* parent) : QObject(parent) {}

ModuleRegistry::~ModuleRegistry() {
    stopAll();
}

ModuleRegistry::Entry* ModuleRegistry::find(const COrvoCliMod* module) {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [module](const Entry& e) {
        return module && e.module == module;
    });
    return found == m_entries.end() ? nullptr : &*found;
}

void ModuleRegistry::add(COrvoCliMod* module, const QString& name) {
    if (!module || find(module))
        return;
    module->m_moduleName = name;
    m_entries.push_back({module, ModuleState::Loaded});
}

bool ModuleRegistry::start(COrvoCliMod* module) {
    Entry* entry = find(module);
    if (!entry || entry->state != ModuleState::Loaded)
        return false;
    entry->state = ModuleState::Starting;
    const bool running = module->ModuleStart();
    entry = find(module); // the start may have changed the list
    if (!entry)
        return false;
    entry->state = running ? ModuleState::Running : ModuleState::Failed;
    return running;
}

void ModuleRegistry::stop(COrvoCliMod* module) {
    Entry* entry = find(module);
    if (!entry || entry->state == ModuleState::Stopping)
        return;
    entry->state = ModuleState::Stopping;
    const QPointer<COrvoCliMod> alive(module);
    module->close();
    if (alive)
        module->ModuleStop();
    delete alive.data();
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [](const Entry& e) { return e.module.isNull(); }),
                    m_entries.end());
}

void ModuleRegistry::stopAll() {
    std::vector<QPointer<COrvoCliMod>> order;
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        order.push_back(entry->module);
    for (const QPointer<COrvoCliMod>& module : order)
        stop(module);
    m_entries.clear();
}

ModuleState ModuleRegistry::state(const COrvoCliMod* module) const {
    for (const Entry& entry : m_entries)
        if (module && entry.module == module)
            return entry.state;
    return ModuleState::Unknown;
}

std::vector<QPointer<COrvoCliMod>> ModuleRegistry::modules(ModuleState state) const {
    std::vector<QPointer<COrvoCliMod>> found;
    for (const Entry& entry : m_entries)
        if (entry.module && entry.state == state)
            found.push_back(entry.module);
    return found;
}

} // namespace orvo::client
