#include "Support/Desktop/PrivateBus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>

#include "Support/WaitUntil.h"

namespace TestSupport {
namespace {

// The socket is there a moment before anybody listens.
bool answers(const std::string& socketPath)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socketPath.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isConnected = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return isConnected;
}

}  // namespace

PrivateBus::PrivateBus(const std::filesystem::path& home, const Process::Options& options) : m_address("unix:path=" + (home / "bus").string())
{
    m_process = Process::start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + m_address}, options);
    if (!waitUntil([&] { return answers(home / "bus"); }))
        throw std::runtime_error("dbus-daemon did not start");
}

}  // namespace TestSupport
