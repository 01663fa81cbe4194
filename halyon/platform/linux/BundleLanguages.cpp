// Which localisation suits the user: the languages of the environment against the names of the folders.

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <strings.h>

#include <unicode/localematcher.h>
#include <unicode/uloc.h>

#include <halyon/platform/TovPCMac.h>

#include "BundleFolder.h"

namespace Halyon
{
namespace
{
// The system writes some scripts as a variant of its own behind the locale.
struct ScriptName
{
    std::string_view modifier;
    const char* script;
};
constexpr ScriptName kScripts[] = {
    {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}, {"iqtelif", "Latn"}, {"latin", "Latn"}};

// What ICU tells by its status.
void CheckMemory(UErrorCode status)
{
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
}

// A locale that was made of a known language and has no identifier is one that there was no memory for.
icu::Locale Checked(icu::Locale locale)
{
    if (locale.isBogus())
        throw std::bad_alloc();
    return locale;
}

// The language that is called so in English; null when none is.
const char* LanguageOfEnglishName(const std::string& name)
{
    for (const char* const* code = uloc_getISOLanguages(); *code != nullptr; ++code)
    {
        UErrorCode status = U_ZERO_ERROR;
        char16_t units[128];
        char english[128];
        const int32_t length = uloc_getDisplayLanguage(*code, "en", units, 128, &status);
        CheckMemory(status);
        if (U_FAILURE(status))
            continue;
        const std::size_t size = TovTextToUTF8(units, static_cast<std::size_t>(length), english, sizeof english);
        if (size == name.size() && strncasecmp(english, name.c_str(), size) == 0)
            return *code;
    }
    return nullptr;
}

// The locale that `name` is an identifier of; nothing when it begins with no known language. Either separator will do,
// and the encoding and the modifier that the system writes behind it.
std::optional<icu::Locale> LocaleOfIdentifier(const std::string& name)
{
    const std::string identifier = name.substr(0, name.find_first_of(".@"));
    char canonical[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    uloc_canonicalize(identifier.c_str(), canonical, sizeof canonical, &status); // a locale alone does not say why
    CheckMemory(status);
    icu::Locale locale = icu::Locale::createCanonical(identifier.c_str());
    if (*locale.getISO3Language() == 0)
        return std::nullopt;
    const std::size_t at = name.find('@');
    const std::string modifier = at != std::string::npos ? name.substr(at + 1) : std::string();
    for (const ScriptName& known : kScripts)
    {
        if (modifier == known.modifier)
            return Checked({locale.getLanguage(), known.script, locale.getCountry()});
    }
    if (modifier == "valencia")
        return Checked({locale.getLanguage(), locale.getCountry(), "VALENCIA"});
    return locale;
}

std::optional<icu::Locale> LocaleOfFolder(const std::string& name)
{
    if (auto locale = LocaleOfIdentifier(name))
        return locale;
    const char* language = LanguageOfEnglishName(name);
    return language != nullptr ? std::optional(Checked(icu::Locale(language))) : std::nullopt;
}

// `LANGUAGE` is a list and comes first; then the locale of messages, of which the first variable that is set counts.
std::vector<icu::Locale> UserLocales()
{
    std::vector<icu::Locale> locales;
    const auto add = [&](std::string_view list)
    {
        while (!list.empty())
        {
            const std::string_view one = list.substr(0, list.find(':'));
            list.remove_prefix(std::min(one.size() + 1, list.size()));
            if (const auto locale = LocaleOfIdentifier(std::string(one)))
                locales.push_back(*locale);
        }
    };
    if (const char* list = std::getenv("LANGUAGE"))
        add(list);
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
    {
        if (const char* locale = std::getenv(variable); locale != nullptr && *locale != 0)
        {
            add(locale);
            break;
        }
    }
    return locales;
}

std::string NameAt(CFArrayRef names, CFIndex index)
{
    char name[NAME_MAX + 1];
    CFStringGetCString(static_cast<CFStringRef>(CFArrayGetValueAtIndex(names, index)), name, sizeof name,
                       kCFStringEncodingUTF8);
    return name;
}

struct DestroyMatcher
{
    void operator()(icu::LocaleMatcher* matcher) const noexcept { matcher->~LocaleMatcher(); }
};

// The position of the best name; names that are no language count only when there is no better one.
CFIndex BestOf(CFArrayRef names)
{
    std::vector<icu::Locale> supported;
    std::vector<CFIndex> positions;
    std::optional<CFIndex> english;
    for (CFIndex i = 0; i < CFArrayGetCount(names); ++i)
    {
        const auto locale = LocaleOfFolder(NameAt(names, i));
        if (!locale)
            continue;
        supported.push_back(*locale);
        positions.push_back(i);
        if (!english && std::string_view(locale->getLanguage()) == "en")
            english = i;
    }
    if (supported.empty())
        return 0;
    std::vector<icu::Locale> wanted = UserLocales();
    UErrorCode status = U_ZERO_ERROR;
    icu::LocaleMatcher::Builder builder;
    builder.setSupportedLocales(supported.begin(), supported.end()).setNoDefaultLocale();
    alignas(icu::LocaleMatcher) std::byte room[sizeof(icu::LocaleMatcher)];
    auto* built = new (room) icu::LocaleMatcher(builder.build(status));
    // One that could not be built for want of memory frees what it never had when it is destroyed. Not to destroy it
    // loses what it got: some hundred bytes.
    CheckMemory(status);
    const std::unique_ptr<icu::LocaleMatcher, DestroyMatcher> matcher(built);
    icu::Locale::RangeIterator<std::vector<icu::Locale>::iterator> desired(wanted.begin(), wanted.end());
    const icu::LocaleMatcher::Result result = matcher->getBestMatchResult(desired, status);
    CheckMemory(status);
    if (U_SUCCESS(status) && result.getSupportedIndex() >= 0)
        return positions[static_cast<std::size_t>(result.getSupportedIndex())];
    return english.value_or(positions.front());
}
} // namespace

CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef localizations) noexcept
{
    if (CFArrayGetCount(localizations) == 0)
        return nullptr;
    try
    {
        CFTypeRef best = CFRetain(CFArrayGetValueAtIndex(localizations, BestOf(localizations)));
        return CFMakeArray(&best, 1);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}
} // namespace Halyon
