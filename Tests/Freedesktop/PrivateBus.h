// A session bus of a test's own. It can start only the services put into its folder.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Support/Process.h"
#include "Support/TemporaryFolder.h"
#include "Support/WaitUntil.h"

namespace Freedesktop {

class PrivateBus {
public:
    PrivateBus()
    {
        std::filesystem::create_directory(servicesFolder());
        std::ofstream(configuration()) << "<busconfig><type>session</type><listen>unix:path=" << socket().string() << "</listen><servicedir>"
                                       << servicesFolder().string()
                                       << "</servicedir><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/><allow "
                                          "eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
        m_daemon = TestSupport::Process::start({"dbus-daemon", "--nofork", "--config-file=" + configuration().string()});
        if (!TestSupport::waitUntil([&] { return std::filesystem::exists(socket()); }))
            throw std::runtime_error("dbus-daemon did not start");
    }

    TestSupport::Process& daemon() { return m_daemon; }
    std::filesystem::path servicesFolder() const { return m_folder.path() / "services"; }
    std::string address() const { return "unix:path=" + socket().string(); }

    TestSupport::Process start(const std::vector<std::string>& command, TestSupport::Process::Options options = {}) const
    {
        options.environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", address());
        return TestSupport::Process::start(command, options);
    }

    bool runs(const std::vector<std::string>& command, const TestSupport::Process::Options& options = {}) const
    {
        return start(command, options).waitForExit(std::chrono::seconds(30)) == 0;
    }

    bool waitForService(const std::string& name) const { return runs({"gdbus", "wait", "--session", "--timeout", "20", name}); }

private:
    std::filesystem::path configuration() const { return m_folder.path() / "bus.conf"; }
    std::filesystem::path socket() const { return m_folder.path() / "bus"; }

    TestSupport::TemporaryFolder m_folder;
    TestSupport::Process m_daemon;
};

}  // namespace Freedesktop
