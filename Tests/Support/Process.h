// A child process of a test. It dies with the object, and with the test program.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

class Process {
public:
    struct Options {
        std::vector<std::pair<std::string, std::string>> environment;  // set on top of ours
        std::string standardOutput = "/dev/null";                      // file, appended to
        std::string standardError = "/dev/null";
        std::vector<int> inheritedDescriptors;
    };

    Process() = default;
    // Fails the process start with exit status 127, as a shell would.
    static Process start(const std::vector<std::string>& command, const Options& options);
    static Process start(const std::vector<std::string>& command) { return start(command, Options()); }

    Process(Process&& other) noexcept : m_pid(std::exchange(other.m_pid, 0)) { }
    Process& operator=(Process&& other) noexcept;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() { kill(); }

    pid_t pid() const { return m_pid; }
    bool isRunning();

    // The exit status (128 + signal for a killed one); nothing when it still runs then.
    std::optional<int> waitForExit(std::chrono::milliseconds deadline);
    void signal(int number) const;
    // Kills (SIGKILL) and reaps.
    void kill();

private:
    explicit Process(pid_t pid) : m_pid(pid) { }

    pid_t m_pid = 0;
};

// True when a program of that name is on the PATH.
bool programExists(const std::string& name);

}  // namespace TestSupport
