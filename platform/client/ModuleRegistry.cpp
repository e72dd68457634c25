#include "platform/client/ModuleRegistry.h"

#include "platform/client/Session.h"

#include <algorithm>

namespace orvo::client {

/// The application object of one module: the host's, with a session handle that knows the module.
class ModuleRegistry::ModuleApp : public COrvoCliApp {
public:
    ModuleApp(COrvoCliApp& app, COrvoCliMod& module)
        : m_app(app)
        , m_handle(makeModuleSession(*app.m_session, module)) {
        m_session = m_handle.get();
        m_logModule = app.m_logModule;
        m_workDir = app.m_workDir;
        m_mayWrite = app.m_mayWrite;
    }
    void log(int level, const QString& place, const QString& text) override {
        m_app.log(level, place, text);
    }
    void moduleTitle(COrvoCliMod* module, const QString& title, const QString& second) override {
        m_app.moduleTitle(module, title, second);
    }
    void moduleCall(COrvoCliMod* module, int code, void* data) override {
        m_app.moduleCall(module, code, data);
    }
    bool hasRecordMarks() const override { return m_app.hasRecordMarks(); }
    RecordMark recordMark(const QString& table, const QString& key) const override {
        return m_app.recordMark(table, key);
    }
    void addRecordActions(QMenu* menu, const QString& table, const QString& key) override {
        m_app.addRecordActions(menu, table, key);
    }

private:
    COrvoCliApp& m_app;
    const std::unique_ptr<COrvoCliSes> m_handle;
};

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
    m_entries.push_back({module, ModuleState::Loaded, nullptr});
}

bool ModuleRegistry::start(COrvoCliMod* module) {
    Entry* entry = find(module);
    if (!entry || entry->state != ModuleState::Loaded)
        return false;
    entry->state = ModuleState::Starting;
    if (module->m_app && module->m_app->m_session) {
        entry->app = std::make_shared<ModuleApp>(*module->m_app, *module);
        module->m_app = entry->app.get();
    }
    emit changed();
    const bool running = module->ModuleStart();
    entry = find(module); // the start may have changed the list
    if (entry)
        entry->state = running ? ModuleState::Running : ModuleState::Failed;
    emit changed();
    return entry && running;
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
    emit changed();
}

QString ModuleRegistry::onlyDesktop() const {
    QString desktop;
    for (const Entry& entry : m_entries) {
        if (!entry.module ||
            (entry.state != ModuleState::Starting && entry.state != ModuleState::Running))
            continue;
        const QString own = entry.module->onlyDesktop();
        if (own.isEmpty() || (!desktop.isEmpty() && own.compare(desktop, Qt::CaseInsensitive) != 0))
            return {};
        desktop = own;
    }
    return desktop;
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
