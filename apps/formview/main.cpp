// orvo-form-view SOCKET BYTES: shows one stored file for orvo-client, which starts it with the
// number of an open socket (Channel.h) and the most memory that it may have. Of no use by itself.
#include "apps/formview/ExitCodes.h"
#include "apps/formview/Stage.h"
#include "frame/QtCompat.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <sys/resource.h>
#include <sys/socket.h>

namespace {

/// Sanitizers reserve more address space than any limit.
void limitMemory([[maybe_unused]] rlim_t bytes) {
#if !defined(__SANITIZE_ADDRESS__)
    const rlimit both = {bytes, bytes};
    setrlimit(RLIMIT_DATA, &both);
#endif
}

} // namespace

int main(int argc, char* argv[]) {
    char* end = nullptr;
    const long number = argc == 3 ? std::strtol(argv[1], &end, 10) : -1;
    int type = 0;
    socklen_t size = sizeof type;
    const int socket = end && *end == 0 && number > 2 ? static_cast<int>(number) : -1;
    if (getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size) != 0) {
        std::fputs("orvo-form-view: программа запускается клиентом orvo-client.\n", stderr);
        return 2;
    }
    limitMemory(std::strtoull(argv[2], nullptr, 10));
    std::set_new_handler([] { std::_Exit(orvo::formview::exitOutOfMemory); });
    orvo::qt::followScreenScale();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    orvo::formview::Channel channel(socket, orvo::formview::largestFile + (1 << 20));
    const orvo::formview::Stage stage(channel);
    return QApplication::exec();
}
