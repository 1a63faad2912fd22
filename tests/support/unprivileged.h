#pragma once

#include <functional>

#include <sys/wait.h>
#include <unistd.h>

// Runs body in a child process without root's right to ignore permissions (as nobody when run
// as root); its result is the child's exit status.
inline int asUnprivileged(const std::function<int()> &body)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            ::_exit(100);
        ::_exit(body());
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
