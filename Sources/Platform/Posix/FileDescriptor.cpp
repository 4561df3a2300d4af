#include "Platform/Posix/FileDescriptor.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "Platform/FatalError.h"

namespace Platform::Posix {

FileDescriptor::FileDescriptor(int fileDescriptor, const char* operation) : m_fileDescriptor(orFatal(fileDescriptor, operation)) { }

FileDescriptor::~FileDescriptor() { close(m_fileDescriptor); }

bool FileDescriptor::drain() const
{
    std::uint64_t count = 0;
    return read(m_fileDescriptor, &count, sizeof count) == sizeof count;
}

void FileDescriptor::signal() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(m_fileDescriptor, &one, sizeof one);
}

int orFatal(int result, const char* operation)
{
    if (result < 0)
        fatalError(operation, std::strerror(errno));
    return result;
}

}  // namespace Platform::Posix
