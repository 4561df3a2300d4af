// A session bus of a test's own. It ends with the object, and so do the services it started.
#pragma once

#include <filesystem>
#include <string>

#include "Support/Process.h"

namespace TestSupport {

class PrivateBus {
public:
    // Its socket and its services' homes lie in `home`. Throws when it does not come up.
    explicit PrivateBus(const std::filesystem::path& home, const Process::Options&);

    // For DBUS_SESSION_BUS_ADDRESS.
    const std::string& address() const { return m_address; }

private:
    std::string m_address;
    Process m_process;
};

}  // namespace TestSupport
