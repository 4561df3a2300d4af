#include "Platform/Freedesktop/CorruptCopy.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "Platform/Freedesktop/Files.h"

namespace Platform::Freedesktop {
namespace {

// FNV-1a. A collision costs nothing but the further name below.
std::string digitsOf(std::string_view contents)
{
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char character : contents)
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return digits.data();
}

}  // namespace

std::optional<std::filesystem::path> keepCorruptCopy(const std::filesystem::path& file, std::string_view contents)
{
    // A copy that was cut short by a killed process has other contents under our name.
    constexpr int maximumNames = 100;
    const auto name = file.string() + ".corrupt-" + digitsOf(contents);
    for (int number = 0; number < maximumNames; ++number) {
        const std::filesystem::path copy = number == 0 ? name : name + "-" + std::to_string(number);
        const auto error = createFile(copy, contents);
        if (!error)
            return copy;
        if (error != std::errc::file_exists)
            return std::nullopt;
        if (const auto existing = readFile(copy); !existing.error && existing.text == contents)
            return copy;
    }
    return std::nullopt;
}

}  // namespace Platform::Freedesktop
