// The real program, started on a private desktop with settings of its own.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Support/Desktop/Desktop.h"
#include "Support/Process.h"

namespace TestSupport {

class TarnwickProgram {
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    // Returns at once. `furtherEnvironment` is set on top of a private home.
    explicit TarnwickProgram(const Desktop&, const Environment& furtherEnvironment = {});

    // Returns when the program holds its hot keys; then it answers to them. Throws when
    // that does not come true.
    void waitUntilReady();

    // What it wrote so far.
    std::string standardOutput() const;
    std::string standardError() const;

    // How often any of its threads has gone to sleep by itself, and so was woken up.
    long voluntaryContextSwitches() const;

    Process& process() { return m_process; }

private:
    const std::string m_displayName;
    const std::filesystem::path m_home;
    Process m_process;
};

}  // namespace TestSupport
