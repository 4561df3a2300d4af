#include "Support/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "Support/WaitUntil.h"

namespace TestSupport {
namespace {

void redirect(const std::string& path, int target)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (file >= 0)
        dup2(file, target);
}

[[noreturn]] void runChild(const std::vector<std::string>& command, const Process::Options& options)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setsid();
    redirect(options.standardOutput, STDOUT_FILENO);
    redirect(options.standardError, STDERR_FILENO);
    for (const auto& [name, value] : options.environment)
        setenv(name.c_str(), value.c_str(), 1);
    for (const int descriptor : options.inheritedDescriptors)
        fcntl(descriptor, F_SETFD, 0);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const auto& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    _exit(127);
}

int statusOf(int waitStatus) { return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus); }

}  // namespace

Process Process::start(const std::vector<std::string>& command, const Options& options)
{
    const pid_t pid = fork();
    if (pid == 0)
        runChild(command, options);
    return Process(std::max(pid, 0));
}

Process& Process::operator=(Process&& other) noexcept
{
    if (this != &other) {
        kill();
        m_pid = std::exchange(other.m_pid, 0);
    }
    return *this;
}

bool Process::isRunning() { return m_pid != 0 && !waitForExit(std::chrono::milliseconds(0)); }

std::optional<int> Process::waitForExit(std::chrono::milliseconds deadline)
{
    std::optional<int> result;
    waitUntil(
        [&] {
            int status = 0;
            if (m_pid == 0 || waitpid(m_pid, &status, WNOHANG) != m_pid)
                return false;
            m_pid = 0;
            result = statusOf(status);
            return true;
        },
        deadline);
    return result;
}

void Process::signal(int number) const
{
    if (m_pid != 0)
        ::kill(m_pid, number);
}

void Process::kill()
{
    if (m_pid == 0)
        return;
    ::kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    m_pid = 0;
}

bool programExists(const std::string& name)
{
    const char* path = std::getenv("PATH");
    if (path == nullptr)
        return false;
    std::istringstream folders{std::string(path)};
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (access((std::filesystem::path(folder) / name).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

}  // namespace TestSupport
