#include "apps/admin/Interrupt.h"

#include "apps/admin/Failure.h"
#include "apps/admin/Verb.h"
#include "frame/StdText.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace orvo::admin {

namespace {

constexpr unsigned graceSeconds = 3;

// Everything that a handler touches is lock-free or never changes while the handler may run.
std::atomic<bool> interrupted = false;
char fileToRemove[4096] = "";
std::atomic<bool> hasFile = false;
char interruptText[256] = ""; ///< in the user's language, since a handler may not translate

void endAtOnce() {
    if (hasFile)
        ::unlink(fileToRemove);
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, interruptText, std::strlen(interruptText));
    ::_exit(Interrupted);
}

void onSignal(int) {
    if (interrupted.exchange(true))
        endAtOnce();
    ::alarm(graceSeconds);
}

void onAlarm(int) {
    endAtOnce();
}

void take(int signal, void (*handler)(int)) {
    struct sigaction action {};
    // What whoever started this process had ignored stays so (nohup).
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    // The work goes on where the signal met it; it looks at the flag by itself.
    action.sa_flags = handler == SIG_DFL ? 0 : SA_RESTART;
    sigaction(signal, &action, nullptr);
}

} // namespace

Interruptible::Interruptible() {
    std::snprintf(interruptText, sizeof interruptText, "%s",
                  StdText::tr("orvo-admin: прервано\n").c_str());
    interrupted = false;
    take(SIGALRM, onAlarm);
    take(SIGINT, onSignal);
    take(SIGTERM, onSignal);
    take(SIGHUP, onSignal);
}

Interruptible::~Interruptible() {
    ::alarm(0);
    take(SIGINT, SIG_DFL);
    take(SIGTERM, SIG_DFL);
    take(SIGHUP, SIG_DFL);
    take(SIGALRM, SIG_DFL);
}

bool Interruptible::requested() {
    return interrupted;
}

void removeAtSuddenEnd(const std::string& path) {
    hasFile = false;
    if (path.empty())
        return;
    if (path.size() >= sizeof fileToRemove)
        throw Failure(StdText::tr("путь слишком длинный"));
    std::memcpy(fileToRemove, path.c_str(), path.size() + 1);
    hasFile = true;
}

} // namespace orvo::admin
