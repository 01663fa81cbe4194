// A small module with one class and two interfaces. It is compiled once as it should be and once for each fault that
// CMakeLists.txt lists, most of which it has in its code; HYN_FAULT names the fault.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string_view>

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <halyon/framework/HynGuid.h>
#include <halyon/framework/HynResult.h>

using Halyon::HYN_GUID;
using Halyon::HynResult;

namespace
{
#define HYN_TEXT_OF(word) #word
#define HYN_TEXT(word) HYN_TEXT_OF(word)

// Whether this is the module with that fault.
constexpr bool Has(std::string_view fault)
{
    return fault == HYN_TEXT(HYN_FAULT);
}
} // namespace

#define EXPORT extern "C" [[gnu::visibility("default")]]

EXPORT const HYN_GUID CLSID_Sample;
EXPORT const HYN_GUID IID_IFirst;
EXPORT const HYN_GUID IID_ISecond;
EXPORT const HYN_GUID IID_IHynUnknown;
const HYN_GUID CLSID_Sample{0x3D7A1F60, 0x52B4, 0x4C8E, {0x90, 0x1D, 0x6E, 0xF2, 0x4B, 0x83, 0xA7, 0x15}};
const HYN_GUID IID_IFirst{0x3D7A1F61, 0x52B4, 0x4C8E, {0x90, 0x1D, 0x6E, 0xF2, 0x4B, 0x83, 0xA7, 0x15}};
const HYN_GUID IID_ISecond{0x3D7A1F62, 0x52B4, 0x4C8E, {0x90, 0x1D, 0x6E, 0xF2, 0x4B, 0x83, 0xA7, 0x15}};
constexpr HYN_GUID kUnknown{0xFE15F6EB, 0x1E69, 0x4568, {0x91, 0x11, 0x3F, 0xB8, 0xFA, 0xCB, 0xAA, 0xF9}};
const HYN_GUID IID_IHynUnknown = Has("WrongIdentifier") ? HYN_GUID{} : kUnknown;

namespace
{
template <bool releaseComesFirst>
struct Root
{
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;
    virtual HynResult QueryInterface(const HYN_GUID& iid, void** ppv) = 0;

protected:
    ~Root() = default;
};

template <>
struct Root<true>
{
    virtual std::uint32_t Release() = 0;
    virtual std::uint32_t AddRef() = 0;
    virtual HynResult QueryInterface(const HYN_GUID& iid, void** ppv) = 0;

protected:
    ~Root() = default;
};

struct IFirst : Root<Has("ReleaseComesFirst")>
{
};
struct ISecond : Root<Has("ReleaseComesFirst")>
{
};

class Sample final : public IFirst
{
public:
    virtual ~Sample() = default;

    std::uint32_t AddRef() override { return Count(1); }
    std::uint32_t Release() override
    {
        const std::uint32_t count = Count(-1);
        if (count == 0)
            delete this;
        return count;
    }
    HynResult QueryInterface(const HYN_GUID& iid, void** ppv) override
    {
        if (Equal<Has("ComparesHalfAnInterface")>(iid, IID_ISecond))
            return Answer(&m_second, ppv, !Has("ForgetsAddRef"));
        return iid == IID_IFirst || iid == kUnknown ? Answer(this, ppv) : Halyon::HYN_E_NOINTERFACE;
    }

    // Whether two identifiers are equal; a fault has it look at a part of them only.
    template <bool isHalf>
    static bool Equal(const HYN_GUID& a, const HYN_GUID& b)
    {
        return isHalf ? a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data4[0] == b.Data4[0] : a == b;
    }

private:
    struct Second final : ISecond
    {
        explicit Second(Sample& owner) : m_owner(owner) {}
        std::uint32_t AddRef() override { return m_owner.AddRef(); }
        std::uint32_t Release() override { return m_owner.Release(); }
        HynResult QueryInterface(const HYN_GUID& iid, void** ppv) override
        {
            if (Has("Asymmetric") && iid == IID_IFirst)
                return Halyon::HYN_E_NOINTERFACE;
            if (Has("TwoIdentities") && iid == kUnknown)
                return m_owner.Answer(this, ppv);
            return m_owner.QueryInterface(iid, ppv);
        }
        Sample& m_owner;
    };

    HynResult Answer(void* self, void** ppv, bool addRef = true)
    {
        if (!Has("CrashesOnNull") && ppv == nullptr)
            return Halyon::HYN_E_POINTER;
        *ppv = self;
        if (addRef)
            AddRef();
        return Halyon::HYN_S_OK;
    }

    std::uint32_t Count(int by)
    {
        const auto change = static_cast<std::uint32_t>(by);
        if (!Has("CountRaces"))
            return m_count.fetch_add(change) + change;
        const std::uint32_t count = m_count;
        sched_yield();
        m_count = count + change;
        return count + change;
    }

    std::atomic<std::uint32_t> m_count{0};
    Second m_second{*this};
};

struct AtLoad
{
    AtLoad()
    {
        constexpr const char* kMark = "HYN_SAMPLE_IS_LOADED";
        if (Has("AbortsAtLoad") || (Has("LoadsOnce") && std::getenv(kMark) != nullptr))
            std::abort();
        if (Has("LoadsOnce"))
            setenv(kMark, "1", 1);
    }
};
[[maybe_unused]] const AtLoad g_atLoad;

void Nothing(void* /*value*/) {}

struct Mark
{
    ~Mark() { std::atomic_signal_fence(std::memory_order_seq_cst); }
    int uses = 0;
};

// What some faults begin with the first object, or with the first on a thread.
void AtFirst()
{
    static pthread_t thread;
    static pthread_key_t key;
    static std::atomic_flag isDone;
    const bool isFirst = !isDone.test_and_set();
    if (Has("LeavesAThread") && isFirst)
    {
        // It runs nothing of the module, so that it fares the same whether it begins before or after closing.
        const auto sleep = reinterpret_cast<void (*)()>(pause);
        if (pthread_create(&thread, nullptr, reinterpret_cast<void* (*)(void*)>(sleep), nullptr) == 0)
            pthread_detach(thread);
    }
    if (Has("LeavesAThreadKey"))
    {
        if (isFirst)
            pthread_key_create(&key, Nothing);
        pthread_setspecific(key, &key);
    }
    if constexpr (Has("PinnedByAThreadLocal"))
    {
        thread_local Mark mark;
        ++mark.uses;
    }
}
} // namespace

EXPORT HynResult MyDllCanUnloadNow();
HynResult MyDllCanUnloadNow()
{
    if (Has("Hangs"))
        pause();
    if (Has("Exits"))
        std::exit(0);
    if constexpr (Has("Throws"))
        throw 1;
    return Halyon::HYN_S_OK;
}

// Visible only where the list of exports is missing.
EXPORT void ExtraHelper();
void ExtraHelper() {}

EXPORT HynResult MyDllGetClassObject(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv);
HynResult MyDllGetClassObject(const HYN_GUID& clsid, const HYN_GUID& iid, void** ppv)
{
    if (!Sample::Equal<Has("ComparesHalfAClass")>(clsid, CLSID_Sample))
        return Halyon::HYN_E_NOINTERFACE;
    AtFirst();
    auto* sample = new (std::nothrow) Sample;
    if (sample == nullptr)
        return Halyon::HYN_E_FAIL;
    sample->AddRef();
    const HynResult result = sample->QueryInterface(iid, ppv);
    if (!Has("FailureLeaks") || result == Halyon::HYN_S_OK)
        sample->Release();
    return result;
}
