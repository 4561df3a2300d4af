// A child process that runs one function of the test and exits with status 0; killed
// with the object, and with the test program.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace Freedesktop {

class ForkedChild {
public:
    explicit ForkedChild(const std::function<void()>& function) : m_pid(fork())
    {
        if (m_pid != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        function();
        _exit(0);
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;
    ~ForkedChild() { kill(); }

    // True when it ended by itself with status 0.
    bool wait()
    {
        int status = -1;
        const bool isReaped = m_pid > 0 && waitpid(m_pid, &status, 0) == m_pid;
        m_pid = 0;
        return isReaped && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    void kill()
    {
        if (m_pid <= 0)
            return;
        ::kill(m_pid, SIGKILL);
        wait();
    }

private:
    pid_t m_pid = 0;
};

}  // namespace Freedesktop
