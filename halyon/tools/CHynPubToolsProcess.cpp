// Starting programs.

#include <halyon/tools/CHynPubTools.h>

#include <algorithm>
#include <memory>
#include <new>

#include <halyon/platform/LaunchServices.h>

namespace Halyon
{
namespace
{
constexpr std::size_t kCommandUnits = 1024;
constexpr OptionBits kUsualLaunch = 1;

int Open(const LSLaunchFSRefSpec& launch) noexcept
{
    return (LSOpenFromRefSpec(&launch, nullptr) & 0xFFFF) == 0 ? 1 : 0;
}
} // namespace

int CHynPubTools::Execute(const char16_t* application, const std::deque<CTovStringW>& documents) noexcept
{
    FSRef program = {};
    if (!CTovStringW(application).MakeFSRef(&program))
        return 0;
    std::unique_ptr<FSRef[]> items;
    if (!documents.empty())
    {
        items.reset(new (std::nothrow) FSRef[documents.size()]());
        if (items == nullptr)
            return 0;
    }
    FSRef* item = items.get();
    for (const CTovStringW& document : documents)
        document.MakeFSRef(item++);
    return Open({&program, static_cast<std::uint32_t>(documents.size()), items.get(), nullptr, kUsualLaunch, nullptr});
}

int CHynPubTools::Execute(const char16_t* /*operation*/, char16_t* commandLine, int /*show*/,
                          void* /*reserved*/) noexcept
{
    if (commandLine == nullptr || commandLine[0] != u'"')
        return 0;
    const std::size_t length = tov_wcslen(commandLine);
    const std::size_t quote =
        static_cast<std::size_t>(std::find(commandLine + 1, commandLine + length, u'"') - commandLine);
    if (quote >= length)
        return 0;
    // One character separates the program from the parameters; a line may also end at the quote.
    const std::size_t start = std::min(quote + 2, length);
    char16_t program[kCommandUnits] = {};
    char16_t parameters[kCommandUnits] = {};
    if (quote - 1 >= kCommandUnits || length - start >= kCommandUnits)
        return 0;
    tov_wcsncpy(program, commandLine + 1, quote - 1);
    tov_wcscpy(parameters, commandLine + start);
    FSRef ref = {};
    if (!CTovStringW(program).MakeFSRef(&ref))
        return 0;
    return Open({&ref, 1, &ref, parameters, kUsualLaunch, nullptr});
}
} // namespace Halyon
