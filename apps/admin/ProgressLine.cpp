#include "apps/admin/ProgressLine.h"

#include "apps/admin/Interrupt.h"
#include "frame/StdText.h"
#include "frame/Text.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace orvo::admin {

void progressOption(OptionList& options) {
    options.append({QStringLiteral("progress"),
                    Text::tr("Показывать ход работы каждую секунду, а не каждые десять, если поток "
                             "ошибок не терминал.")});
}

ProgressLine::ProgressLine(const Invocation& call, std::string what)
    : m_what(std::move(what))
    , m_terminal(::isatty(STDERR_FILENO) == 1)
    , m_every(m_terminal             ? std::chrono::milliseconds(200)
              : call.has("progress") ? std::chrono::seconds(1)
                                     : std::chrono::seconds(10))
    // A file of a service's messages is spared the lines of what ends soon.
    , m_next(std::chrono::steady_clock::now() +
             (m_every > std::chrono::seconds(1) ? m_every : std::chrono::milliseconds(0))) {}

ProgressLine::~ProgressLine() {
    if (m_terminal && m_width > 0)
        write(std::string());
}

bool ProgressLine::operator()(uint64_t done, uint64_t all) {
    if (Interruptible::requested())
        return false;
    show(all > 0 ? std::to_string(std::min(done, all) * 100 / all) + " %"
                 : std::to_string(done >> 20) + StdText::tr(" МБ"));
    return true;
}

void ProgressLine::show(const std::string& state) {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next)
        return;
    m_next = now + m_every;
    write(m_what + ": " + state);
}

void ProgressLine::write(const std::string& text) {
    if (!m_terminal) {
        std::fprintf(stderr, "%s\n", text.c_str());
        return;
    }
    const std::string blanks(m_width > text.size() ? m_width - text.size() : 0, ' ');
    std::fprintf(stderr, "\r%s%s%s", text.c_str(), blanks.c_str(), text.empty() ? "\r" : "");
    std::fflush(stderr);
    m_width = text.size();
}

WaitingLine::WaitingLine(const Invocation& call, std::string what)
    : m_line(call, std::move(what))
    , m_thread([this] { run(); }) {}

WaitingLine::~WaitingLine() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ends = true;
    }
    m_ended.notify_one();
    m_thread.join();
}

void WaitingLine::run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ended.wait_for(lock, std::chrono::seconds(1), [this] { return m_ends; })) {
        const auto lasted = std::chrono::steady_clock::now() - m_begin;
        m_line.show(
            std::to_string(std::chrono::duration_cast<std::chrono::seconds>(lasted).count()) +
            StdText::tr(" с"));
    }
}

} // namespace orvo::admin
