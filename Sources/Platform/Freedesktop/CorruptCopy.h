// A copy of a file that cannot be understood, kept for its owner to look at.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace Platform::Freedesktop {

// Keeps the contents beside the file, as its name with ".corrupt-" and sixteen digits
// that follow from the contents: the same contents are kept once, and no copy is ever
// overwritten. The copy's path; nothing when it could not be written.
std::optional<std::filesystem::path> keepCorruptCopy(const std::filesystem::path& file, std::string_view contents);

}  // namespace Platform::Freedesktop
