// Parts of a test that need a process of their own: other rights, other mounts, another environment.
#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef HALYON_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace HalyonTest
{
// Ends a child that was forked, without what the parent does at its end. Where its steps are counted, they count.
[[noreturn]] inline void EndChild(int status)
{
#ifdef HALYON_COVERAGE
    __gcov_dump();
#endif
    _exit(status);
}

// Runs `body` in a child and returns the text that it gives, or how the child died.
template <class Body>
std::string InChild(Body body)
{
    int ends[2] = {};
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == 0)
    {
        const std::string text = body();
        EndChild(write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    close(ends[1]);
    std::string text;
    char part[4096];
    for (ssize_t got = 0; (got = read(ends[0], part, sizeof part)) > 0;)
        text.append(part, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? text : text + " (child ended with " + std::to_string(status) + ")";
}

// Gives the calling process mounts that nobody else sees; false when the machine does not allow it.
inline bool EnterOwnMounts()
{
    return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

inline bool MayHaveOwnMounts()
{
    return InChild([] { return std::string(EnterOwnMounts() ? "yes" : "no"); }) == "yes";
}

// Makes the calling process an ordinary user's, who owns nothing; it stays what it is when it is one already.
inline void BecomeNobody()
{
    constexpr uid_t kNobody = 65534;
    const bool isRoot = geteuid() == 0;
    if (isRoot && (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
                   setresuid(kNobody, kNobody, kNobody) != 0))
        _exit(3);
}
} // namespace HalyonTest
