#include <host/DisplayWidth.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace HynHost
{
namespace
{
int CharacterWidth(UChar32 character)
{
    constexpr UChar32 kSoftHyphen = 0xAD; // a format character, yet terminals draw it
    const int type = u_charType(character);
    const bool combines = type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR;
    if (combines && character != kSoftHyphen)
        return 0;
    if (character >= 0x1160 && character <= 0x11FF) // the rest of a Korean syllable that has begun
        return 0;
    const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

// A character with the marks that follow it.
struct Cluster
{
    std::int32_t end; // in units
    int width;
};

struct ClusteredText
{
    explicit ClusteredText(std::string_view utf8)
        : text(icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())}))
    {
        for (std::int32_t position = 0; position < text.length();)
        {
            const int characterWidth = CharacterWidth(text.char32At(position));
            position = text.moveIndex32(position, 1);
            if (characterWidth == 0 && !clusters.empty())
                clusters.back().end = position;
            else
                clusters.push_back({position, characterWidth});
            width += characterWidth;
        }
    }

    icu::UnicodeString text;
    std::vector<Cluster> clusters;
    int width = 0;
};
} // namespace

int DisplayWidth(std::string_view text)
{
    const bool ascii = std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    return ascii ? static_cast<int>(text.size()) : ClusteredText(text).width;
}

std::string ShortenMiddle(std::string_view text, int width)
{
    if (std::cmp_less_equal(text.size(), width)) // no character takes more columns than bytes
        return std::string(text);
    const ClusteredText whole(text);
    if (whole.width <= width)
        return std::string(text);
    const std::vector<Cluster>& clusters = whole.clusters;

    int room = width - 1; // for the sign of omission
    int tailRoom = room - room / 3;
    std::size_t first = clusters.size(); // of the tail
    for (; first > 0 && clusters[first - 1].width <= tailRoom; --first)
    {
        tailRoom -= clusters[first - 1].width;
        room -= clusters[first - 1].width;
    }
    std::int32_t headEnd = 0;
    for (const Cluster& cluster : clusters)
    {
        room -= cluster.width;
        if (room < 0)
            break;
        headEnd = cluster.end;
    }

    std::string result;
    whole.text.tempSubString(0, headEnd).toUTF8String(result);
    result += "…";
    whole.text.tempSubString(first == 0 ? 0 : clusters[first - 1].end).toUTF8String(result);
    return result;
}
} // namespace HynHost
