// Patience.h: what a thread does while it waits for a server.
//
// A store on a server never blocks in the kernel for long: it waits in steps of waitStepMs and asks
// the patience of its thread in between. A thread without one waits until the server answers, or
// until it has been silent for too long (see PostgresApi.h). A store in a file does not wait.
#ifndef ORVO_PLATFORM_STORE_PATIENCE_H
#define ORVO_PLATFORM_STORE_PATIENCE_H

#include <utility>

namespace orvo::store {

constexpr int waitStepMs = 50;

class Patience {
public:
    virtual ~Patience() = default;
    /// Called about every waitStepMs while a call of a store waits for its server. False gives the
    /// call up: it fails with Timeout, and the connection is closed. Calls nothing of any store.
    virtual bool goOn() = 0;
    /// The call that waited has ended, in whatever way.
    virtual void ended() {}
};

namespace detail {

struct PatienceOfThread {
    Patience* patience = nullptr;
    int calls = 0; ///< calls of stores running now, one within the other
    bool waited = false;
};

/// One for each thread, also where the store is linked into a library and a program at once.
__attribute__((visibility("default"))) inline PatienceOfThread& patienceOfThread() noexcept {
    static thread_local PatienceOfThread own;
    return own;
}

} // namespace detail

/// Gives the present thread a patience while it lives; then the one before holds again. Not to be
/// made or ended inside a call.
class PatienceScope {
public:
    /// The patience stays the caller's and outlives the scope; null: none.
    explicit PatienceScope(Patience* patience)
        : m_before(std::exchange(detail::patienceOfThread().patience, patience)) {}
    ~PatienceScope() { detail::patienceOfThread().patience = m_before; }
    PatienceScope(const PatienceScope&) = delete;
    PatienceScope& operator=(const PatienceScope&) = delete;

private:
    Patience* m_before;
};

/// Marks a call of a store; the outermost one tells the patience when it ends.
class CallMark {
public:
    CallMark() noexcept { ++detail::patienceOfThread().calls; }
    ~CallMark() {
        detail::PatienceOfThread& own = detail::patienceOfThread();
        if (--own.calls == 0 && std::exchange(own.waited, false) && own.patience != nullptr)
            own.patience->ended();
    }
    CallMark(const CallMark&) = delete;
    CallMark& operator=(const CallMark&) = delete;
};

/// For the waiting code: whether somebody may lose patience.
inline bool hasPatience() {
    return detail::patienceOfThread().patience != nullptr;
}

/// For the waiting code: asks the thread's patience, if there is one, whether to go on.
inline bool stillPatient() {
    detail::PatienceOfThread& own = detail::patienceOfThread();
    own.waited = own.patience != nullptr;
    return own.patience == nullptr || own.patience->goOn();
}

} // namespace orvo::store

#endif
