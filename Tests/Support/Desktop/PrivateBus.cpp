#include "Support/Desktop/PrivateBus.h"

#include <stdexcept>

#include "Support/WaitUntil.h"

namespace TestSupport {

PrivateBus::PrivateBus(const std::filesystem::path& home, const Process::Options& options) : m_address("unix:path=" + (home / "bus").string())
{
    m_process = Process::start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + m_address}, options);
    if (!waitUntil([&] { return std::filesystem::exists(home / "bus"); }))
        throw std::runtime_error("dbus-daemon did not start");
}

}  // namespace TestSupport
