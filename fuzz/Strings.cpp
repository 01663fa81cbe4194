// The string's operations against a standard string that has the same done to it.

#include <array>

#include <halyon/string/CTovStringW.h>

#include "Input.h"

using HalyonFuzz::Hold;

namespace
{
struct Pair
{
    CTovStringW text;
    std::u16string model;
};

std::u16string UpToZero(const std::u16string& text)
{
    return text.substr(0, text.find(u'\0'));
}

std::u16string ModelMid(const std::u16string& text, int first, int count)
{
    const auto begin = static_cast<std::size_t>(std::clamp<std::int64_t>(first, 0, static_cast<int>(text.size())));
    return text.substr(begin, static_cast<std::size_t>(std::max(count, 0)));
}

bool IsSpace(char16_t unit)
{
    return tov_iswspace(unit) != 0;
}

void Trim(Pair& pair, bool left)
{
    std::u16string& model = pair.model;
    if (left)
    {
        pair.text.TrimLeft();
        model.erase(model.begin(), std::find_if_not(model.begin(), model.end(), IsSpace));
    }
    else
    {
        pair.text.TrimRight();
        model.erase(std::find_if_not(model.rbegin(), model.rend(), IsSpace).base(), model.end());
    }
}

void Find(const Pair& pair, const std::u16string& set)
{
    const std::u16string seen = UpToZero(pair.model);
    const std::size_t at = seen.find_first_of(set);
    const int found = pair.text.FindOneOf(set.c_str());
    Hold(found == (at == std::u16string::npos ? -1 : static_cast<int>(at)), "the first unit of a set is found");
}

void ToBytes(const Pair& pair, std::size_t room)
{
    const std::unique_ptr<char[]> bytes(new char[room + 1]);
    const std::string whole = CTovStringW(UpToZero(pair.model).c_str()).ToUTF8();
    pair.text.GetUTF8String(bytes.get(), static_cast<int>(room + 1));
    Hold(bytes.get() == (whole.size() <= room ? whole : std::string()), "UTF-8 that does not fit is left out");
    const CTovStringW back = CTovStringW::FromUTF8(pair.text.ToUTF8());
    Hold(back.ToUTF8() == pair.text.ToUTF8(), "text that came from UTF-8 goes back to it");
}

void Assign(Pair& to, Pair& from, unsigned how)
{
    switch (how % 4)
    {
    case 0:
        to.text = from.text;
        to.model = from.model;
        break;
    case 1: // a part of the other, which may be the same string
    {
        const std::size_t skip = std::min<std::size_t>(how / 4, from.model.size());
        const std::u16string part = UpToZero(from.model.substr(skip));
        to.text = static_cast<const char16_t*>(from.text) + skip;
        to.model = part;
        break;
    }
    case 2:
        swap(to.text, from.text);
        std::swap(to.model, from.model);
        break;
    default:
        Pair copy{from.text, from.model};
        to.text = std::move(copy.text);
        to.model = std::move(copy.model);
    }
}

void Append(Pair& to, const Pair& from, unsigned how)
{
    constexpr std::size_t kMost = 1u << 14; // doubling must not fill the memory
    if (to.model.size() + from.model.size() > kMost)
        return;
    switch (how % 3)
    {
    case 0:
    {
        const std::size_t skip = std::min<std::size_t>(how / 3, from.model.size());
        const std::u16string part = UpToZero(from.model.substr(skip));
        to.text += static_cast<const char16_t*>(from.text) + skip;
        to.model += part;
        break;
    }
    case 1:
        to = Pair{to.text + from.text, to.model + from.model};
        break;
    default:
        to = Pair{static_cast<const char16_t*>(to.text) + from.text, UpToZero(to.model) + from.model};
    }
}

void Check(const Pair& pair, const Pair& other)
{
    Hold(pair.text.View() == pair.model, "the string is as its model");
    Hold(pair.text[pair.text.GetLength()] == 0, "a terminator follows the text");
    Hold((pair.text <=> other.text) == (pair.model <=> other.model), "strings sort as their models do");
    Hold((pair.text == other.text) == (pair.model == other.model), "strings are equal when their models are");
}

void Step(HalyonFuzz::Input& input, std::array<Pair, 3>& pairs)
{
    const auto code = input.Take<std::uint8_t>();
    Pair& to = pairs[code % 3];
    Pair& from = pairs[code / 3 % 3];
    switch (code / 9 % 8)
    {
    case 0:
        to.model = input.TakeText();
        to.text = to.model.c_str();
        break;
    case 1: // with a zero unit in it
        to.model = input.TakeText() + u'\0' + input.TakeText();
        to.text = CTovStringW(std::u16string_view(to.model));
        break;
    case 2:
        Assign(to, from, input.Take<std::uint8_t>());
        break;
    case 3:
        Append(to, from, input.Take<std::uint8_t>());
        break;
    case 4:
    {
        const auto first = input.Take<std::int32_t>();
        const auto count = input.Take<std::int32_t>();
        to = Pair{from.text.Mid(first, count), ModelMid(from.model, first, count)};
        break;
    }
    case 5:
        Trim(to, (code & 0x80) != 0);
        break;
    case 6:
        Find(to, input.TakeText());
        break;
    default:
        ToBytes(to, input.Take<std::uint8_t>());
    }
    Check(to, from);
    Check(from, to);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HalyonFuzz::Input input(data, size);
    std::array<Pair, 3> pairs;
    while (!input.IsEmpty())
        Step(input, pairs);
    return 0;
}
