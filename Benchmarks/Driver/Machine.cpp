#include "Machine.h"

#include <sys/utsname.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <thread>

namespace Benchmarks {
namespace {

// The value of the first line "key <separator> value"; quotes are taken off.
std::string valueIn(const char* path, const std::string& key, char separator)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const auto position = line.find(separator);
        if (!line.starts_with(key) || position == std::string::npos)
            continue;
        auto value = line.substr(position + 1);
        std::erase(value, '"');
        return value.substr(std::min(value.find_first_not_of(' '), value.size()));
    }
    return "unknown";
}

std::string outputOf(const char* command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command, "r"), &pclose);
    std::string output;
    std::array<char, 256> buffer{};
    while (pipe != nullptr && fgets(buffer.data(), buffer.size(), pipe.get()) != nullptr)
        output += buffer.data();
    while (output.ends_with('\n'))
        output.pop_back();
    return output.empty() ? "unknown" : output;
}

std::string versionOfPackage(const std::string& package)
{
    return outputOf(("dpkg-query --show --showformat='${Version}' " + package + " 2>/dev/null").c_str());
}

std::string firstLine(const char* path)
{
    std::ifstream file(path);
    std::string line;
    return std::getline(file, line) ? line : "unknown";
}

std::string today()
{
    const auto now = std::time(nullptr);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d", std::gmtime(&now));
    return text.data();
}

std::string compiler()
{
#ifdef __clang__
    return "clang " __clang_version__;
#else
    return "g++ " __VERSION__;
#endif
}

}  // namespace

std::vector<std::string> describeMachine()
{
    utsname kernel{};
    uname(&kernel);
    return {
        "Date: " + today(),
        "Processor: " + valueIn("/proc/cpuinfo", "model name", ':') + ", " + std::to_string(std::thread::hardware_concurrency()) + " cores, " +
            kernel.machine,
        "Memory: " + std::to_string(std::stol(valueIn("/proc/meminfo", "MemTotal", ':')) / (1L << 20)) + " GiB",
        "Kernel: " + std::string(kernel.sysname) + " " + kernel.release,
        "Debian: " + firstLine("/etc/debian_version"),
        "X server: Xvfb " + versionOfPackage("xvfb"),
        "Desktop: openbox " + versionOfPackage("openbox") + ", picom " + versionOfPackage("picom"),
        "Compiler: " + compiler(),
        "Load before the run (1, 5, 15 minutes): " + firstLine("/proc/loadavg"),
    };
}

}  // namespace Benchmarks
