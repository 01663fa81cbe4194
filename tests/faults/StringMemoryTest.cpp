// The string without memory: a text that cannot be made is empty, one that cannot grow stays what it is.
#include <tests/faults/Operations.h>

#include <utility>

#include <tests/string/OpenString.h>

using namespace HalyonTest;

namespace
{
// A text with a block of its own, one that shares its block, and what that is shared with.
struct StringWorld
{
    // The answer of an operation on `text`, which leaves its old content or nothing when there is no memory.
    HynResult Done(const CTovStringW& result, const char16_t* expected, const char16_t* left = u"") const
    {
        return other == u" ab " ? IsEither(result == expected, result == left) : kWrong;
    }
    HynResult Done(const char16_t* expected, const char16_t* left = u"") const { return Done(text, expected, left); }

    CTovStringW text = u" ab ";
    CTovStringW shared = text + u"";
    CTovStringW other = shared;
    Halyon::CFStringRef platform = text.StringRef();

    StringWorld() = default;
    StringWorld(const StringWorld&) = delete;
    StringWorld& operator=(const StringWorld&) = delete;
    ~StringWorld() { Halyon::CFRelease(platform); }
};

void Renew(StringWorld& world)
{
    world.text = u" ab ";
    world.shared = world.other;
}

using Op = Operation<StringWorld>;
constexpr Op::Failing kRenewed = {{HYN_E_FAIL, HYN_E_FAIL}, Renew};
#define HYN_ON(name, ...) Op(name, kRenewed, []([[maybe_unused]] StringWorld& world) { __VA_ARGS__ })

const Op kOperations[] = {
    HYN_ON("plain text", return world.Done(CTovStringW(u"p"), u"p");),
    HYN_ON("view", return world.Done(CTovStringW(std::u16string_view(u"vx", 1)), u"v");),
    HYN_ON("UTF-8", return world.Done(CTovStringW::FromUTF8("u"), u"u");),
    HYN_ON("platform text", return world.Done(CTovStringW(world.platform), u" ab ");),
    HYN_ON("assign", world.text = u"a longer text"; return world.Done(u"a longer text");),
    HYN_ON("assign its own part", world.shared = world.shared + 1; return world.Done(world.shared, u"ab ");),
    HYN_ON("assign a shared one", world.text = world.other; return world.Done(u" ab ", u"never");),
    HYN_ON("append", world.text += u"c"; return world.Done(u" ab c", u" ab ");),
    HYN_ON("append to a shared one", world.shared += u"c"; return world.Done(world.shared, u" ab c", u" ab ");),
    HYN_ON("append itself", world.text += world.text; return world.Done(u" ab  ab ", u" ab ");),
    HYN_ON("sum", return world.Done(world.text + world.shared, u" ab  ab ");),
    HYN_ON("sum with text behind", return world.Done(world.text + u"c", u" ab c");),
    HYN_ON("sum with text in front", return world.Done(u"c" + world.text, u"c ab ");),
    HYN_ON("Mid", return world.Done(world.text.Mid(1, 2), u"ab");),
    HYN_ON("Left", return world.Done(world.text.Left(2), u" a");),
    HYN_ON("TrimLeft", world.shared.TrimLeft(); return world.Done(world.shared, u"ab ");),
    HYN_ON("TrimRight", world.shared.TrimRight(); return world.Done(world.shared, u" ab");),
    HYN_ON("TrimRight where it is", world.text.TrimRight(); return world.Done(u" ab", u"never");),
    HYN_ON("copy of a locked text", OpenString locked(world.text.View()); if (!locked.IsEmpty()) locked.Lock();
           return world.Done(CTovStringW(locked), u" ab ");),
    HYN_ON("StringRef", const Halyon::CFStringRef made = world.text.StringRef();
           const HynResult result = IsEither(Halyon::CFStringGetLength(made) == 4, made == nullptr);
           Halyon::CFRelease(made); return result;),
    HYN_ON(
        "ToUTF8, which throws",
        try { return IsDone(world.text.ToUTF8().size() == 4); } catch (const std::bad_alloc&) { return HYN_E_FAIL; }),
};

TEST(StringMemory, IsMissedWithoutLosingOrLeakingAnything)
{
    FailEachAllocation("string", kOperations);
}
} // namespace
