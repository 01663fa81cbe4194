// Version texts and the order of versions.

#include <string>

#include <halyon/tools/CHynVersionHelper.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
std::u16string Spell(const tagHYN_VERSION& version)
{
    std::string text;
    for (const std::uint32_t number : {version.first, version.second, version.third, version.fourth})
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return {text.begin(), text.end()};
}

bool AreSame(const tagHYN_VERSION& a, const tagHYN_VERSION& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

tagHYN_VERSION TakeVersion(HalyonFuzz::Input& input)
{
    const tagHYN_VERSION unset = {1, 2, 3, 4};
    tagHYN_VERSION version = unset;
    const std::u16string text = input.TakeText();
    if (CHynVersionHelper::GetVersion(text.c_str(), version) == 0)
        Hold(AreSame(version, unset), "a text that is refused leaves the version as it was");
    tagHYN_VERSION again = {};
    Hold(CHynVersionHelper::GetVersion(Spell(version).c_str(), again) == 1 && AreSame(version, again),
         "a version that is spelled out reads as itself");
    return version;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HalyonFuzz::Input input(data, size);
    const tagHYN_VERSION a = TakeVersion(input);
    const tagHYN_VERSION b = TakeVersion(input);
    const tagHYN_VERSION c = TakeVersion(input);
    const auto compare = CHynVersionHelper::CompareVersion;
    Hold(compare(a, a) == 0, "a version is as new as itself");
    Hold(compare(a, b) == -compare(b, a), "the order turns round with the arguments");
    Hold(!(compare(a, b) <= 0 && compare(b, c) <= 0) || compare(a, c) <= 0, "the order is transitive");
    tagHYN_VERSION other = a;
    other.third = b.third;
    Hold(compare(a, other) == 0, "the third number takes no part");
    return 0;
}
