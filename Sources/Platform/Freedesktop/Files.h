// Reading a whole file and replacing a whole file, so that other processes see the
// former contents or the new ones, never a part.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Freedesktop/FileDescriptor.h"

namespace Platform::Freedesktop {

// Tells two states of a file apart without reading it. All zero: there is no file.
struct FileSignature {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t modified = 0;  // nanoseconds since 1970
    std::int64_t changed = 0;   // of the inode, likewise

    friend bool operator==(const FileSignature&, const FileSignature&) = default;
};

FileSignature signatureOf(const std::filesystem::path&);

// A file changed a moment ago can change once more within the same tick of the file
// system's clock (and get a freed inode again), so that its signature stays the same.
// True when that is long over (2 s: the coarsest clock, that of FAT).
bool isSettled(const FileSignature&);

struct FileContents {
    std::string text;
    FileSignature signature;
    FileDescriptor file;    // open for reading: as long as it is, no new file gets the inode
    std::error_code error;  // no_such_file_or_directory: there is no file
};

// Regular files only; never blocks on a pipe.
FileContents readFile(const std::filesystem::path&);

// Whether the file still has the contents that were read from it. Allocates nothing.
bool isUnchanged(const FileContents&);

// Where writing to this path really goes: follows symbolic links of the last component,
// also to a file that does not exist.
std::filesystem::path targetOf(const std::filesystem::path&);

// As mkdir -p, new folders with mode 0700.
std::error_code makeFolders(const std::filesystem::path&);

// Writes a new file beside it, flushes it to the disk, renames it over the former one
// and flushes the folder. Keeps the former file's mode and, where allowed, its owner; a
// new file gets 0600. On failure the former file is untouched. Two processes must not
// do this to the same path at once: lock first. `path` must not be a symbolic link.
std::error_code replaceFile(const std::filesystem::path& path, std::string_view contents);

// Writes a file that must not exist yet, with mode 0600, or leaves none.
std::error_code createFile(const std::filesystem::path&, std::string_view contents);

}  // namespace Platform::Freedesktop
