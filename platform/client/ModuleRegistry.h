// ModuleRegistry.h: the modules of a host and where each stands in its life.
#ifndef ORVO_PLATFORM_CLIENT_MODULEREGISTRY_H
#define ORVO_PLATFORM_CLIENT_MODULEREGISTRY_H

#include "frame/OrvoClient.h"

#include <QPointer>

#include <memory>
#include <vector>

namespace orvo::client {

/// The states of a module, in the order in which it passes them.
enum class ModuleState {
    Unknown = 0,  ///< not in the registry, or gone
    Loaded = 1,   ///< made and named; has touched no server
    Starting = 2, ///< inside ModuleStart
    Running = 3,  ///< ModuleStart gave true: receives notifications
    Failed = 4,   ///< ModuleStart gave false: shown, but receives nothing
    Stopping = 5, ///< closeEvent and ModuleStop; its destructor follows
};

/// Owns the modules: stop deletes a module, and so does the registry's end. A module that someone
/// else deletes (its parent window) drops out by itself, whatever waits for it. Lives on the GUI
/// thread.
class ORVOCLIENT_EXPORT ModuleRegistry : public QObject {
    Q_OBJECT
public:
    explicit ModuleRegistry(QObject* parent = nullptr);
    ~ModuleRegistry() override;

    /// Takes a new module over and names it: state Loaded. Null is passed over.
    void add(COrvoCliMod* module, const QString& name);
    /// Gives a loaded module a handle of the session of its own (m_app->m_session) and calls its
    /// ModuleStart: state Running or Failed. False for any other module.
    bool start(COrvoCliMod* module);
    /// Closes, stops and deletes the module. Not to be called from a slot of that module.
    void stop(COrvoCliMod* module);
    /// Stops all, the one loaded last first.
    void stopAll();

    ModuleState state(const COrvoCliMod* module) const;
    /// Those in the state, in the order of their loading.
    std::vector<QPointer<COrvoCliMod>> modules(ModuleState state) const;
    /// The only desktop that the modules follow which are starting or run; empty if there are none,
    /// or if one follows more.
    QString onlyDesktop() const;

signals:
    /// A module is about to start, has started, or goes.
    void changed();

private:
    class ModuleApp;
    struct Entry {
        QPointer<COrvoCliMod> module;
        ModuleState state;
        std::shared_ptr<ModuleApp> app; ///< null before start
    };
    Entry* find(const COrvoCliMod* module);
    std::vector<Entry> m_entries;
};

} // namespace orvo::client

#endif
