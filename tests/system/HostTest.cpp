#include <tests/system/HostTest.h>

#include <cstdint>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

#include <halyon/tools/CHynPathHelper.h>

namespace HalyonTest
{
namespace
{
void SetModified(const std::filesystem::path& file, time_t seconds)
{
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    if (utimensat(AT_FDCWD, file.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        throw std::runtime_error("cannot date " + file.string());
}

// Where a user's files may lie: a volume in memory, which the folder for temporary files is on many machines, is none.
std::filesystem::path TemporaryFolder()
{
    const auto folder = std::filesystem::temp_directory_path();
    const bool valid = Halyon::CHynPathHelper::IsValidScanFolder(CTovStringW::FromUTF8(folder.string()));
    return valid ? folder : std::filesystem::current_path();
}
} // namespace

HostTest::HostTest() : m_folder(TemporaryFolder()) {}

std::filesystem::path HostTest::CopySamples(const std::vector<std::string>& names) const
{
    constexpr time_t kModified = 1717243200; // 2024-06-01 12:00:00 UTC
    std::filesystem::path media = Path("media");
    if (names.empty())
        std::filesystem::copy(HALYON_SAMPLES, media, std::filesystem::copy_options::recursive);
    for (const std::string& name : names)
    {
        std::filesystem::create_directories((media / name).parent_path());
        std::filesystem::copy_file(std::filesystem::path(HALYON_SAMPLES) / name, media / name);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(media))
    {
        if (entry.is_regular_file())
            SetModified(entry.path(), kModified);
    }
    return media;
}

HostOptions HostTest::InZone(HostOptions options) const
{
    options.environment.emplace("TZ", m_zone);
    options.environment.emplace("TERM", "xterm");
    options.environment.emplace("HOME", m_folder.Path().string());
    options.environment.emplace("XDG_DATA_HOME", "");
    return options;
}

HostOutcome HostTest::Host(const std::vector<std::string>& arguments, HostOptions options) const
{
    return RunHost(arguments, InZone(std::move(options)));
}

HostOutcome HostTest::Import(const std::filesystem::path& media, HostOptions options) const
{
    return Host({"import", media.string(), "--catalog", Catalog()}, std::move(options));
}

HostOutcome HostTest::List(std::vector<std::string> arguments, HostOptions options) const
{
    arguments.insert(arguments.begin(), {"list", "--catalog", Catalog()});
    return Host(arguments, std::move(options));
}

std::string HostTest::Query(const std::string& sql) const
{
    const HostOutcome outcome = Host({"sql", "--csv", Catalog(), sql});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::string rows = outcome.out.substr(outcome.out.find('\n') + 1);
    std::erase(rows, '\r');
    return rows;
}
} // namespace HalyonTest
