// An X server of a test's own (Xvfb), started in about 0.1 s on a free display number.
// It ends with the object.
#pragma once

#include <string>
#include <vector>

#include "Support/Process.h"

namespace TestSupport {

class PrivateServer {
public:
    // `screen` as Xvfb's "-screen 0" wants it. Throws when the server does not come up:
    // a machine without Xvfb must fail the tests, not skip them.
    explicit PrivateServer(const std::string& screen = "1280x800x24", const std::vector<std::string>& furtherArguments = {});

    // ":N"
    const std::string& displayName() const { return m_displayName; }
    Process& process() { return m_process; }

    // Runs a program on this display (a window manager, a compositor, a locker).
    Process start(const std::vector<std::string>& command, Process::Options options) const;
    Process start(const std::vector<std::string>& command) const { return start(command, {}); }

private:
    Process m_process;
    std::string m_displayName;
};

}  // namespace TestSupport
