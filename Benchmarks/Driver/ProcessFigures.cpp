#include "ProcessFigures.h"

#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace Benchmarks {
namespace {

namespace fs = std::filesystem;

fs::path folderOf(pid_t pid) { return fs::path("/proc") / std::to_string(pid); }

// The number behind "key:" in a file of such lines.
std::optional<long> numberIn(const fs::path& path, const std::string& key)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(key + ":"))
            return std::stol(line.substr(key.size() + 1));
    }
    return std::nullopt;
}

long bytesIn(pid_t pid, const std::string& key)
{
    const auto kibibytes = numberIn(folderOf(pid) / "status", key);
    if (!kibibytes)
        throw std::runtime_error("process " + std::to_string(pid) + " tells no " + key);
    return *kibibytes * 1024;
}

std::string firstLine(const fs::path& path)
{
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

bool isArmed(const fs::path& information)
{
    std::ifstream file(information);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("it_value:"))
            return line.find("(0, 0)") == std::string::npos;
    }
    return false;
}

struct MachineTimes {
    std::chrono::nanoseconds busy;
    std::chrono::nanoseconds stolen;
};

MachineTimes machineTimes()
{
    std::istringstream fields(firstLine("/proc/stat"));
    std::string label;
    long user = 0, nice = 0, system = 0, idle = 0, waiting = 0, interrupts = 0, softInterrupts = 0, stolen = 0;
    fields >> label >> user >> nice >> system >> idle >> waiting >> interrupts >> softInterrupts >> stolen;
    const auto time = [](long ticks) { return std::chrono::nanoseconds(std::chrono::seconds(ticks)) / sysconf(_SC_CLK_TCK); };
    return {time(user + nice + system + interrupts + softInterrupts), time(stolen)};
}

}  // namespace

std::chrono::nanoseconds processorTime(pid_t pid)
{
    clockid_t clock = 0;
    timespec time{};
    if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
        throw std::runtime_error("process " + std::to_string(pid) + " is gone");
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::map<std::string, long> voluntarySwitches(pid_t pid)
{
    std::map<std::string, long> counts;
    for (const auto& task : fs::directory_iterator(folderOf(pid) / "task")) {
        const auto count = numberIn(task.path() / "status", "voluntary_ctxt_switches");
        if (count)
            counts[firstLine(task.path() / "comm") + "/" + task.path().filename().string()] = *count;
    }
    return counts;
}

long residentBytes(pid_t pid) { return bytesIn(pid, "VmRSS"); }

long ownBytes(pid_t pid) { return bytesIn(pid, "RssAnon") + bytesIn(pid, "RssShmem"); }

TimerDescriptors timerDescriptors(pid_t pid)
{
    TimerDescriptors timers;
    for (const auto& entry : fs::directory_iterator(folderOf(pid) / "fd")) {
        std::error_code error;
        if (fs::read_symlink(entry.path(), error) != "anon_inode:[timerfd]")
            continue;
        ++timers.open;
        if (isArmed(folderOf(pid) / "fdinfo" / entry.path().filename()))
            ++timers.armed;
    }
    return timers;
}

std::chrono::nanoseconds machineProcessorTime() { return machineTimes().busy; }

std::chrono::nanoseconds stolenTime() { return machineTimes().stolen; }

}  // namespace Benchmarks
