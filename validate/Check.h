// The checks and their outcomes.
//
// A check is a function that runs in a process of its own: it returns when the module keeps the rule, and throws
// Failure or Skip when it does not or cannot be asked. It cleans nothing up after a failure, since its process ends.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace HynValidate
{
class Subject;

class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class Skip : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

enum class Result
{
    Ok,
    Failed,
    Skipped,
};

struct Outcome
{
    Result result = Result::Ok;
    std::string reason; // empty when ok
    double seconds = 0;
    std::vector<std::string> classes; // what the check `classes` found, each as --class takes it
};

struct Check
{
    const char* name; // stable: scripts may rely on it
    const char* rule;
    std::vector<std::string_view> needs; // checks that must have passed for this one to mean anything
    void (*run)(Subject&);
};

// All checks; each stands behind those that it needs. [any]
std::span<const Check> Checks();

// The checks themselves, by what they look at.
void CheckLoad(Subject& subject);
void CheckDependencies(Subject& subject);
void CheckExports(Subject& subject);
void CheckNothingElseExported(Subject& subject);
void CheckIdentifiers(Subject& subject);
void CheckClasses(Subject& subject);
void CheckUnknownClass(Subject& subject);
void CheckRootSlots(Subject& subject);
void CheckReferenceBalance(Subject& subject);
void CheckQueryLaws(Subject& subject);
void CheckUnknownInterface(Subject& subject);
void CheckNullArguments(Subject& subject);
void CheckSlots(Subject& subject);
void CheckLeaks(Subject& subject);
void CheckThreads(Subject& subject);
void CheckCanUnloadNow(Subject& subject);
void CheckLoadTwice(Subject& subject);
void CheckUnload(Subject& subject);
} // namespace HynValidate
