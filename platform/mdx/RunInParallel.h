// RunInParallel.h: two halves of a long piece of work at once.
#ifndef ORVO_PLATFORM_MDX_RUNINPARALLEL_H
#define ORVO_PLATFORM_MDX_RUNINPARALLEL_H

#include <exception>
#include <system_error>
#include <thread>

namespace orvo::mdx {

inline bool hasSecondProcessor() {
    static const bool has = std::thread::hardware_concurrency() >= 2;
    return has;
}

/// Runs both, at the same time if there is a second processor. Throws what either threw, once both
/// have ended.
template <class One, class Other>
void runInParallel(One&& one, Other&& other) {
    std::exception_ptr failure;
    std::thread thread;
    if (hasSecondProcessor()) {
        try {
            thread = std::thread([&] {
                try {
                    other();
                } catch (...) {
                    failure = std::current_exception();
                }
            });
        } catch (const std::system_error&) { // no thread to be had
        }
    }
    if (!thread.joinable()) {
        one();
        other();
        return;
    }
    struct Join {
        std::thread& thread;
        ~Join() {
            if (thread.joinable())
                thread.join();
        }
    } join{thread};
    one();
    thread.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace orvo::mdx

#endif
