#include "Platform/Freedesktop/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>

#include "Platform/Freedesktop/FileDescriptor.h"

namespace Platform::Freedesktop {
namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::error_code lastError() { return {errno, std::generic_category()}; }

std::int64_t nanoseconds(const timespec& time) { return static_cast<std::int64_t>(time.tv_sec) * nanosecondsPerSecond + time.tv_nsec; }

FileSignature signatureOf(const struct stat& status)
{
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
}

std::error_code readAll(int file, std::string& text)
{
    std::array<char, 16384> block{};
    for (;;) {
        const ssize_t length = read(file, block.data(), block.size());
        if (length > 0)
            text.append(block.data(), static_cast<std::size_t>(length));
        else if (length == 0)
            return {};
        else if (errno != EINTR)
            return lastError();
    }
}

std::error_code writeAll(int file, std::string_view contents)
{
    while (!contents.empty()) {
        const ssize_t length = write(file, contents.data(), contents.size());
        if (length >= 0)
            contents.remove_prefix(static_cast<std::size_t>(length));
        else if (errno != EINTR)
            return lastError();
    }
    return fsync(file) == 0 ? std::error_code() : lastError();
}

// Only root may give files away; anybody else keeps what the kernel gave.
void copyOwnerAndMode(const std::filesystem::path& from, int to)
{
    struct stat former = {};
    struct stat ours = {};
    if (stat(from.c_str(), &former) != 0 || fstat(to, &ours) != 0)
        return;
    const bool isSameOwner = former.st_uid == ours.st_uid && former.st_gid == ours.st_gid;
    if (isSameOwner || fchown(to, former.st_uid, former.st_gid) == 0)
        fchmod(to, former.st_mode & 07777);
}

// Not every file system can do it, and the rename is done already.
void flushFolder(const std::filesystem::path& folder)
{
    const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor)
        fsync(descriptor.get());
}

}  // namespace

FileSignature signatureOf(const std::filesystem::path& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? signatureOf(status) : FileSignature();
}

bool isSettled(const FileSignature& signature)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now) - std::max(signature.modified, signature.changed) > 2 * nanosecondsPerSecond;
}

FileContents readFile(const std::filesystem::path& path)
{
    FileContents contents;
    contents.file = FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!contents.file || fstat(contents.file.get(), &status) != 0) {
        contents.error = lastError();
        if (contents.error == std::errc::not_a_directory)
            contents.error = std::make_error_code(std::errc::no_such_file_or_directory);
        return contents;
    }
    contents.signature = signatureOf(status);
    contents.error = S_ISREG(status.st_mode) ? readAll(contents.file.get(), contents.text) : std::make_error_code(std::errc::invalid_argument);
    return contents;
}

bool isUnchanged(const FileContents& contents)
{
    std::array<char, 16384> block{};
    std::string_view expected = contents.text;
    off_t position = 0;
    for (;;) {
        const ssize_t length = pread(contents.file.get(), block.data(), block.size(), position);
        if (length == 0)
            return expected.empty();
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0 || !expected.starts_with(std::string_view(block.data(), static_cast<std::size_t>(length))))
            return false;
        expected.remove_prefix(static_cast<std::size_t>(length));
        position += length;
    }
}

std::filesystem::path targetOf(const std::filesystem::path& path)
{
    constexpr int maximumLinks = 40;  // as the kernel's
    auto target = path;
    std::error_code error;
    for (int links = 0; links < maximumLinks; ++links) {
        const auto next = std::filesystem::read_symlink(target, error);
        if (error)
            break;
        target = target.parent_path() / next;
    }
    return target;
}

std::error_code makeFolders(const std::filesystem::path& folder)
{
    std::error_code error;
    if (folder.empty() || std::filesystem::is_directory(folder, error))
        return {};
    if (const auto failure = makeFolders(folder.parent_path()))
        return failure;
    if (mkdir(folder.c_str(), 0700) == 0)
        return {};
    const auto failure = lastError();
    if (failure != std::errc::file_exists)
        return failure;
    return std::filesystem::is_directory(folder, error) ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
}

std::error_code replaceFile(const std::filesystem::path& path, std::string_view contents)
{
    // A fixed name: what a killed process left behind is used up by the next write.
    auto newFile = path;
    newFile += ".new";
    unlink(newFile.c_str());
    if (const auto error = createFile(newFile, contents))
        return error;
    {
        const FileDescriptor file(open(newFile.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
        if (file)
            copyOwnerAndMode(path, file.get());
    }
    if (rename(newFile.c_str(), path.c_str()) != 0) {
        const auto error = lastError();
        unlink(newFile.c_str());
        return error;
    }
    flushFolder(path.parent_path());
    return {};
}

std::error_code createFile(const std::filesystem::path& path, std::string_view contents)
{
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file)
        return lastError();
    const auto error = writeAll(file.get(), contents);
    if (error)
        unlink(path.c_str());
    return error;
}

}  // namespace Platform::Freedesktop
