#include "apps/admin/NewFile.h"

#include "apps/admin/Failure.h"
#include "apps/admin/Interrupt.h"
#include "frame/StdText.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvo::admin {

namespace {

[[noreturn]] void refuseToWrite(const std::string& place, const std::string& why) {
    throw Failure(StdText::tr("файл «") + place + StdText::tr("» не записан: ") + why);
}

int flushed(const std::string& path, int flags) {
    const int file = ::open(path.c_str(), flags | O_CLOEXEC);
    const int result = file < 0 ? -1 : ::fsync(file);
    const int error = errno;
    if (file >= 0)
        ::close(file);
    errno = error;
    return result;
}

} // namespace

NewFile::NewFile(std::string place, const store::MaintainedStore& store)
    : m_place(std::move(place)) {
    struct stat info {};
    if (m_place.empty())
        refuseToWrite(m_place, StdText::tr("имя пустое"));
    if (::stat(m_place.c_str(), &info) == 0 && !S_ISREG(info.st_mode))
        refuseToWrite(m_place, S_ISDIR(info.st_mode) ? StdText::tr("это каталог")
                                                     : StdText::tr("это не обычный файл"));
    if (store.livesIn(m_place))
        refuseToWrite(m_place, StdText::tr("это сам файл хранилища"));
    std::string name = m_place + ".new-XXXXXX";
    const int file = ::mkostemp(name.data(), O_CLOEXEC); // mode 0600
    if (file < 0)
        refuseToWrite(m_place, std::strerror(errno));
    ::close(file);
    m_path = name;
    removeAtSuddenEnd(m_path);
}

NewFile::~NewFile() {
    if (m_path.empty())
        return;
    for (const char* suffix : {"", "-journal", "-wal", "-shm"})
        ::unlink((m_path + suffix).c_str());
    removeAtSuddenEnd({});
}

void NewFile::put() {
    if (flushed(m_path, O_RDONLY) != 0 || std::rename(m_path.c_str(), m_place.c_str()) != 0)
        refuseToWrite(m_place, std::strerror(errno));
    m_path.clear();
    removeAtSuddenEnd({});
    const size_t slash = m_place.rfind('/');
    // The name too; where a file system cannot do that, the file is there all the same.
    flushed(slash == std::string::npos ? "." : m_place.substr(0, slash + 1),
            O_RDONLY | O_DIRECTORY);
}

} // namespace orvo::admin
