// ProgressLine.h: how far long work has come, on standard error: one line that is written over on a
// terminal, else a line every ten seconds, or every second where --progress asks for it.
#ifndef ORVO_ADMIN_PROGRESSLINE_H
#define ORVO_ADMIN_PROGRESSLINE_H

#include "apps/admin/Verb.h"
#include "platform/store/Maintenance.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace orvo::admin {

/// Declares --progress.
void progressOption(OptionList& options);

class ProgressLine {
public:
    /// `what` begins the line.
    ProgressLine(const Invocation& call, std::string what);
    /// Clears what stands on the terminal.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Shows it, not too often: a percentage, or megabytes if `all` is 0. False if the user has
    /// ended the work. As a store takes it.
    bool operator()(uint64_t done, uint64_t all);
    /// The same in words.
    void show(const std::string& state);

private:
    void write(const std::string& text);

    const std::string m_what;
    const bool m_terminal;
    const std::chrono::milliseconds m_every;
    std::chrono::steady_clock::time_point m_next;
    size_t m_width = 0; ///< of what stands on the terminal
};

/// For work that cannot tell how far it is: shows for how long it has lasted, by a thread of its
/// own, from the beginning of its life to the end.
class WaitingLine {
public:
    /// `what` begins the line.
    WaitingLine(const Invocation& call, std::string what);
    ~WaitingLine();
    WaitingLine(const WaitingLine&) = delete;
    WaitingLine& operator=(const WaitingLine&) = delete;

private:
    void run();

    ProgressLine m_line; ///< the thread's
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_ends = false; ///< by m_mutex
    std::thread m_thread;
};

} // namespace orvo::admin

#endif
