// WaitPolicy.h: what a thread does while it waits for a server.
//
// A store on a server never blocks in the kernel for long: it waits in steps of waitStepMs and asks
// the wait policy of its thread in between. A thread without one waits until the server answers, or
// until it has been silent for too long (see PostgresApi.h). A store in a file does not wait.
#ifndef ORVO_PLATFORM_STORE_WAITPOLICY_H
#define ORVO_PLATFORM_STORE_WAITPOLICY_H

#include <utility>

namespace orvo::store {

constexpr int waitStepMs = 50;
constexpr int recordsBetweenAsking = 100;

class WaitPolicy {
public:
    virtual ~WaitPolicy() = default;
    /// Called about every waitStepMs while a call of a store waits for its server. False gives the
    /// call up: it fails with Timeout, and the connection is closed. Calls nothing of any store.
    virtual bool keepWaiting() = 0;
    /// Whether a store in a file is to ask as well, about every recordsBetweenAsking records that
    /// it writes. False then takes the write back, which fails with Timeout.
    virtual bool endsWrites() const { return false; }
    /// The call that waited has ended, in whatever way.
    virtual void waitEnded() {}
};

namespace detail {

struct ThreadWaits {
    WaitPolicy* policy = nullptr;
    int calls = 0; ///< calls of stores running now, one within the other
    bool waited = false;
};

/// One for each thread, also where the store is linked into a library and a program at once.
__attribute__((visibility("default"))) inline ThreadWaits& threadWaits() noexcept {
    static thread_local ThreadWaits own;
    return own;
}

} // namespace detail

/// Gives the present thread a wait policy while it lives; then the one before holds again. Not to
/// be made or ended inside a call.
class WaitPolicyScope {
public:
    /// The policy stays the caller's and outlives the scope; null: none.
    explicit WaitPolicyScope(WaitPolicy* policy)
        : m_before(std::exchange(detail::threadWaits().policy, policy)) {}
    ~WaitPolicyScope() { detail::threadWaits().policy = m_before; }
    WaitPolicyScope(const WaitPolicyScope&) = delete;
    WaitPolicyScope& operator=(const WaitPolicyScope&) = delete;

private:
    WaitPolicy* m_before;
};

/// Marks a call of a store; the outermost one tells the policy when it ends.
class CallMark {
public:
    CallMark() noexcept { ++detail::threadWaits().calls; }
    ~CallMark() {
        detail::ThreadWaits& own = detail::threadWaits();
        if (--own.calls == 0 && std::exchange(own.waited, false) && own.policy != nullptr)
            own.policy->waitEnded();
    }
    CallMark(const CallMark&) = delete;
    CallMark& operator=(const CallMark&) = delete;
};

/// For the waiting code: whether the thread has a policy, which may end the wait.
inline bool hasWaitPolicy() {
    return detail::threadWaits().policy != nullptr;
}

/// For the waiting code: asks the thread's policy, if there is one, whether to go on.
inline bool keepWaiting() {
    detail::ThreadWaits& own = detail::threadWaits();
    own.waited = own.policy != nullptr;
    return own.policy == nullptr || own.policy->keepWaiting();
}

/// For a long write that waits for nobody: whether to go on with it.
inline bool keepWriting() {
    const WaitPolicy* policy = detail::threadWaits().policy;
    return policy == nullptr || !policy->endsWrites() || keepWaiting();
}

} // namespace orvo::store

#endif
