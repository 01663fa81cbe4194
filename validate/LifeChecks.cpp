// The module and its objects over time: leaks, threads, loading and closing.
#include <validate/Check.h>

#include <algorithm>
#include <barrier>
#include <fstream>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>

#include <dlfcn.h>

#include <validate/ProcessState.h>
#include <validate/Step.h>
#include <validate/Subject.h>

namespace HynValidate
{
using namespace Frozen;

namespace
{
// One life of an object, with all its interfaces.
void MakeUseAndRelease(const Module& module, const Class& cls)
{
    void* object = module.Make(cls.id, kUnknown);
    for (const Identifier& iid : cls.AllInterfaces())
    {
        void* out = nullptr;
        ExpectCode(NameOf(cls.id) + " asked for " + NameOf(iid), Query(object, iid, &out), kOk);
        Release(out);
    }
    ExpectNumber("the last Release of " + NameOf(cls.id), Release(object), 0);
}

void UseAll(const Module& module, const Subject& subject, const std::string& when)
{
    Step("making and releasing objects " + when);
    for (const Class& cls : subject.Classes())
        MakeUseAndRelease(module, cls);
}

// Runs `work` on several threads that begin together; throws the first Failure of one.
void AtOnce(int threads, const std::function<void()>& work)
{
    std::barrier start(threads);
    std::mutex lock;
    std::string reason; // guarded by lock
    std::vector<std::thread> running;
    running.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i)
        running.emplace_back(
            [&]
            {
                start.arrive_and_wait();
                try
                {
                    work();
                }
                catch (const Failure& failure)
                {
                    const std::scoped_lock guard(lock);
                    reason = failure.what();
                }
            });
    for (std::thread& thread : running)
        thread.join();
    if (!reason.empty())
        throw Failure(reason);
}

bool IsMapped(const std::string& path)
{
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line))
    {
        if (line.size() > path.size() && line.compare(line.size() - path.size(), path.size(), path) == 0)
            return true;
    }
    return false;
}
} // namespace

void CheckLeaks(Subject& subject)
{
    const Module module(subject.Path());
    const Identifier stranger = Strangers({}).back();
    // Whether what should be refused is refused is for other checks to tell.
    void* out = nullptr;
    const auto releaseIf = [&](std::int32_t code)
    {
        if (code == kOk)
            Release(out);
    };
    for (const Class& cls : subject.Classes())
    {
        const std::string name = NameOf(cls.id);
        Step("asking again and again for " + name);
        ExpectNoGrowth("a request for " + name + " with an unknown interface",
                       [&] { releaseIf(module.GetClassObject(cls.id, stranger, &out)); });
        ExpectNoGrowth("a request for " + name + " with a null out pointer",
                       [&] { module.GetClassObject(cls.id, kUnknown, nullptr); });
        void* object = module.Make(cls.id, kUnknown);
        ExpectNoGrowth("a refused query of " + name, [&] { releaseIf(Query(object, stranger, &out)); });
        ExpectNoGrowth("a query of " + name, [&] { releaseIf(Query(object, kUnknown, &out)); });
        ExpectNoGrowth("an object of " + name + " that is made and released", [&] { MakeUseAndRelease(module, cls); });
    }
    ExpectNoGrowth("a request for an unknown class",
                   [&] { releaseIf(module.GetClassObject(stranger, stranger, &out)); });
}

namespace
{
constexpr int kThreads = 4;
constexpr int kRounds = 5000;

// Steps that were lost can make up for each other while some add and some take away, so at first all add.
void CountOnManyThreads(void* shared, const std::string& name)
{
    const auto add = [&]
    {
        void* out = nullptr;
        AddRef(shared);
        ExpectCode(name + " asked by many threads", Query(shared, kUnknown, &out), kOk);
    };
    const auto takeAway = [&]
    {
        Release(shared);
        Release(shared);
    };
    const auto repeat = [](const auto&... steps)
    {
        AtOnce(kThreads,
               [&]
               {
                   for (int i = 0; i < kRounds; ++i)
                       (steps(), ...);
               });
    };
    const std::string what = "AddRef of " + name + " after " + std::to_string(kThreads) + " threads ";
    repeat(add);
    ExpectNumber(what + "added references at once", AddRef(shared), 2 + 2 * kThreads * kRounds);
    repeat(takeAway);
    ExpectNumber(what + "released them at once", AddRef(shared), 3);
    repeat(add, takeAway);
    ExpectNumber(what + "added and released references at once", AddRef(shared), 4);
    for (int i = 0; i < 3; ++i)
        Release(shared);
}
} // namespace

void CheckThreads(Subject& subject)
{
    constexpr int kObjects = 200;
    const Module module(subject.Path());
    const std::string threads = std::to_string(kThreads) + " threads";
    for (const Class& cls : subject.Classes())
    {
        const std::string name = NameOf(cls.id);
        const std::string last = "the last Release of " + name + " on another thread";
        Step((threads + " call AddRef, QueryInterface and Release of one ").append(name));
        void* shared = module.Make(cls.id, kUnknown);
        CountOnManyThreads(shared, name);
        Step((threads + " make and release objects of ").append(name));
        AtOnce(kThreads,
               [&]
               {
                   for (int i = 0; i < kObjects; ++i)
                       MakeUseAndRelease(module, cls);
               });
        Step(last);
        AtOnce(1, [&] { ExpectNumber(last, Release(shared), 0); });
    }
}

void CheckCanUnloadNow(Subject& subject)
{
    const Module module(subject.Path());
    const auto ask = [&](const std::string& when, std::int32_t alsoAllowed)
    {
        Step("calling MyDllCanUnloadNow " + when);
        const std::int32_t code = module.CanUnloadNow();
        if (code != alsoAllowed)
            ExpectCode("MyDllCanUnloadNow " + when, code, kOk);
    };
    ask("before the first object", kOk);
    for (const Class& cls : subject.Classes())
    {
        void* object = module.Make(cls.id, kUnknown);
        ask("while " + NameOf(cls.id) + " lives", kFalse);
        Release(object);
        ask("after the last object", kOk);
    }
}

void CheckLoadTwice(Subject& subject)
{
    {
        Step("loading the module twice");
        const Module first(subject.Path());
        Module second(subject.Path());
        UseAll(second, subject, "of a module that is loaded twice");
        if (!second.Close())
            throw Failure("cannot be closed after it was loaded twice");
        UseAll(first, subject, "after the second load is closed");
    }
    const auto round = [&]
    {
        Step("loading the module again");
        const Module module(subject.Path());
        UseAll(module, subject, "of a module that is loaded again");
    };
#if defined(HYNVALIDATE_SANITIZED)
    constexpr long long kNoise = 256; // the sanitizers keep books of what was loaded
#else
    constexpr long long kNoise = 16;
#endif
    ExpectNoGrowth("loading, using and closing the module", round, 128, kNoise);
}

void CheckUnload(Subject& subject)
{
    if (subject.File().neverUnloaded)
        throw Failure("its file is marked to stay in the process for ever (-z nodelete)");
    for (const ElfSymbol& symbol : subject.File().exported)
    {
        if (symbol.kind == ElfSymbol::Kind::Unique)
            throw Failure("exports " + symbol.name + " as unique in the process, which keeps it there for ever; " +
                          "build it with -fno-gnu-unique");
    }
    const ProcessState state;
    Module module(subject.Path());
    UseAll(module, subject, "before closing");
    std::latch used(1);
    std::latch closed(1);
    std::string reason;
    // What the module leaves to the end of a thread runs when the module is gone already.
    std::thread other(
        [&]
        {
            try
            {
                UseAll(module, subject, "on another thread");
            }
            catch (const Failure& failure)
            {
                reason = failure.what();
            }
            used.count_down();
            closed.wait();
        });
    used.wait();
    Step("closing the module");
    const bool isClosed = module.Close();
    const bool isThere = dlopen(subject.Path().c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr || IsMapped(subject.Path());
    closed.count_down();
    Step("ending a thread that used the module, after closing it");
    other.join();
    if (!reason.empty())
        throw Failure(reason);
    if (!isClosed)
        throw Failure("cannot be closed");
    if (isThere)
        throw Failure("is still in the process after it was closed");
    state.ExpectUnchanged("closing");
    Step("ending the process after closing the module");
}
} // namespace HynValidate
