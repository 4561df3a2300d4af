#include "Platform/Freedesktop/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

namespace Platform::Freedesktop {
namespace {

// flock() cannot wait for a limited time. Short steps, because a writer in a row frees
// the lock for moments only.
constexpr auto retryStep = std::chrono::microseconds(200);

// Somebody may have removed the lock file between our opening and locking it.
bool isStillInPlace(int file, const std::filesystem::path& lockFile)
{
    struct stat ours = {};
    struct stat there = {};
    return fstat(file, &ours) == 0 && stat(lockFile.c_str(), &there) == 0 && ours.st_dev == there.st_dev && ours.st_ino == there.st_ino;
}

// An error of its own (not "somebody holds it") in `error`.
FileDescriptor tryToLock(const std::filesystem::path& lockFile, std::error_code& error)
{
    FileDescriptor file(open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (file && flock(file.get(), LOCK_EX | LOCK_NB) == 0)
        return isStillInPlace(file.get(), lockFile) ? std::move(file) : FileDescriptor();
    if (errno != EWOULDBLOCK && errno != EINTR)
        error.assign(errno, std::generic_category());
    return {};
}

}  // namespace

std::optional<FileLock> FileLock::acquire(const std::filesystem::path& lockFile, std::chrono::milliseconds wait, std::error_code& error)
{
    const auto deadline = std::chrono::steady_clock::now() + wait;
    error.clear();
    while (!error) {
        if (auto file = tryToLock(lockFile, error))
            return FileLock(std::move(file));
        if (!error && std::chrono::steady_clock::now() >= deadline)
            error = std::make_error_code(std::errc::timed_out);
        if (!error)
            std::this_thread::sleep_for(retryStep);
    }
    return std::nullopt;
}

}  // namespace Platform::Freedesktop
