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
    TarnwickProgram(const TarnwickProgram&) = delete;
    TarnwickProgram& operator=(const TarnwickProgram&) = delete;

    // Fails the test when a program whose end() was not asked for does not end well.
    ~TarnwickProgram();

    // Asks the program to end (SIGTERM) and waits; one that the test has killed already is
    // only looked at. Empty when it ended with status 0 and wrote no sanitizer's report,
    // else what is wrong.
    std::string end();

    // Returns when the program holds its hot keys; then it answers to them. Throws when
    // that does not come true.
    void waitUntilReady();

    // What it wrote so far.
    std::string standardOutput() const;
    std::string standardError() const;

    // How often any of its threads has gone to sleep by itself, and so was woken up.
    long voluntaryContextSwitches() const;
    // The same of the thread that runs the main loop.
    long sleepsOfMainThread() const;

    Process& process() { return m_process; }

private:
    const std::string m_displayName;
    const std::filesystem::path m_home;
    Process m_process;
    bool m_hasEnded = false;
};

}  // namespace TestSupport
