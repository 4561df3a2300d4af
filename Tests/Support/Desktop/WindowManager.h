// A real window manager on a private server, with its compositor where it has one.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Support/Desktop/PrivateBus.h"
#include "Support/PrivateServer.h"

namespace TestSupport {

enum class WindowManagerKind {
    none,
    openbox,
    openboxWithFocusUnderThePointer,
    openboxWithPicom,
    xfwm4,
    xfwm4WithCompositor,
    i3,
    kwin,
};

std::string nameOf(WindowManagerKind);

class WindowManager {
public:
    // Returns when it manages windows, and composites where it does. `home` is where it
    // finds its settings and leaves its files. Throws when it does not come up: a missing
    // program must fail a test, not skip it.
    WindowManager(const PrivateServer&, WindowManagerKind, const std::filesystem::path& home);

private:
    void start(const std::vector<std::string>& command);
    void startOpenboxWithFocusUnderThePointer();
    void startXfwm4(const std::string& compositor);
    void startI3();
    void startKwin();
    void waitUntilManaging() const;
    void waitUntilCompositing() const;

    const PrivateServer& m_server;
    const std::filesystem::path m_home;
    Process::Options m_options;
    std::optional<PrivateBus> m_bus;
    std::vector<Process> m_processes;
};

}  // namespace TestSupport
