// What a module must leave as it was: the threads, descriptors, signal handlers, locale and working folder of the
// process, and the memory in use.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>

namespace HynValidate
{
class ProcessState
{
public:
    // As it is now. [any]
    ProcessState();

    // Waits a little for threads that are just ending, and throws Failure "AFTER WHAT: threads 1 before, 2 now" when
    // something is not as it was. [any]
    void ExpectUnchanged(const std::string& afterWhat) const;

private:
    std::map<std::string, std::string> m_values;
};

// Runs `action` many times; throws Failure "WHAT leaves ..." when the memory in use grows by `noise` bytes a time, or
// anything else of the process's state changes. [any]
void ExpectNoGrowth(const std::string& what, const std::function<void()>& action, int rounds = 512,
                    long long noise = 16);
} // namespace HynValidate
