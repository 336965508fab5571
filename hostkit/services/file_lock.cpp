#include "hostkit/services/file_lock.h"

#include <stdexcept>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace hostkit {

namespace {

[[noreturn]] void fail(const std::filesystem::path& file, int systemError) {
    throw std::runtime_error(file.string() + ": " + std::system_category().message(systemError));
}

} // namespace

#ifdef _WIN32

FileLock::FileLock(std::filesystem::path file) {
    file += ".lock";
    HANDLE handle = CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    OVERLAPPED whole{};
    if (handle == INVALID_HANDLE_VALUE ||
        !LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &whole))
        fail(file, static_cast<int>(GetLastError()));
    lock_ = reinterpret_cast<std::intptr_t>(handle);
}

FileLock::~FileLock() {
    CloseHandle(reinterpret_cast<HANDLE>(lock_)); // NOLINT(performance-no-int-to-ptr)
}

std::string processName() {
    return std::to_string(GetCurrentProcessId());
}

#else

FileLock::FileLock(std::filesystem::path file) {
    file += ".lock";
    const int descriptor = open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644);
    if (descriptor < 0 || flock(descriptor, LOCK_EX) != 0)
        fail(file, errno);
    lock_ = descriptor;
}

FileLock::~FileLock() {
    close(static_cast<int>(lock_));
}

std::string processName() {
    return std::to_string(getpid());
}

#endif

} // namespace hostkit
