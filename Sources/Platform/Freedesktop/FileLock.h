// An exclusive lock among processes: flock() on a lock file, which stays where it is
// (removing it would let two processes hold "the" lock). Given back by the destructor,
// or by the kernel when the process dies.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>

#include "Platform/Freedesktop/FileDescriptor.h"

namespace Platform::Freedesktop {

class FileLock {
public:
    // Makes the lock file (mode 0600) where there is none. Nothing, with `error` set,
    // when the file cannot be made or somebody else holds it all through `wait`
    // (std::errc::timed_out). A wait of zero tries once.
    static std::optional<FileLock> acquire(const std::filesystem::path& lockFile, std::chrono::milliseconds wait, std::error_code& error);

private:
    explicit FileLock(FileDescriptor file) : m_file(std::move(file)) { }

    FileDescriptor m_file;
};

}  // namespace Platform::Freedesktop
