// A file descriptor that is closed with its owner.
#pragma once

namespace Platform::Posix {

class FileDescriptor {
public:
    // A fatal error that names the operation where it gave none (below 0, with errno).
    FileDescriptor(int fileDescriptor, const char* operation);
    ~FileDescriptor();
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_fileDescriptor; }

    // Of those of the kernel that count (eventfd, timerfd) and do not block. True when there
    // was something; it is then quiet again.
    bool drain() const;
    void signal() const;

private:
    const int m_fileDescriptor;
};

// A fatal error that names the operation where the result is below 0.
int orFatal(int result, const char* operation);

}  // namespace Platform::Posix
