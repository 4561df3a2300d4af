#include "Support/PrivateServer.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cctype>
#include <stdexcept>

namespace TestSupport {
namespace {

// Xvfb writes its display number once it takes connections.
std::string readDisplayNumber(int fileDescriptor)
{
    std::string number;
    pollfd descriptor{.fd = fileDescriptor, .events = POLLIN, .revents = 0};
    constexpr int deadlineMilliseconds = 20000;
    while (poll(&descriptor, 1, deadlineMilliseconds) == 1) {
        char character = 0;
        if (read(fileDescriptor, &character, 1) != 1 || character == '\n')
            break;
        if (std::isdigit(static_cast<unsigned char>(character)) != 0)
            number += character;
    }
    return number;
}

}  // namespace

PrivateServer::PrivateServer(const std::string& screen, const std::vector<std::string>& furtherArguments)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("cannot make a pipe");
    std::vector<std::string> command = {"Xvfb", "-displayfd", std::to_string(ends[1]), "-noreset", "-nolisten", "tcp", "-screen", "0", screen};
    command.insert(command.end(), furtherArguments.begin(), furtherArguments.end());
    Process::Options options;
    options.inheritedDescriptors = {ends[1]};
    m_process = Process::start(command, options);
    close(ends[1]);
    const auto number = readDisplayNumber(ends[0]);
    close(ends[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not start");
    m_displayName = ":" + number;
}

Process PrivateServer::start(const std::vector<std::string>& command, Process::Options options) const
{
    options.environment.emplace_back("DISPLAY", m_displayName);
    return Process::start(command, options);
}

}  // namespace TestSupport
