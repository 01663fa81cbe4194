// The client's headers against the interfaces that they stand on, both in one program and on the same module.
//
// The first works fill the caller's memory and are those of the database benchmark. The last two take values: there the
// interfaces are given the copies and conversions that the client makes, written by hand.
#include <memory>

#include "database/Program.h"

namespace
{
constexpr double kAtMost = 1.02;

class Comparison
{
public:
    Comparison(const Bench::Options& options, const std::filesystem::path& folder)
        : m_rooms(Folder(folder, "rooms"), options.part), m_values(Folder(folder, "values"), options.part)
    {
        m_rooms.Add("interfaces", Bench::MakeModule(options.module), {});
        m_rooms.Add("client", Bench::MakeClient(options.module), {});
        m_values.Add("interfaces", Bench::MakeModuleByValue(options.module), {});
        m_values.Add("client", Bench::MakeClientByValue(options.module), {});
    }

    [[nodiscard]] std::vector<Bench::Work> Works() const
    {
        std::vector<Bench::Work> works = m_rooms.Works();
        for (Bench::Work& work : m_values.Works())
        {
            if (work.name != "insert" && work.name != "scan by index")
                continue;
            work.name += work.name == "insert" ? ", text and bytes copied" : ", UTF-8 strings and byte vectors";
            works.push_back(std::move(work));
        }
        for (Bench::Work& work : works)
            work.target = kAtMost;
        return works;
    }

private:
    static std::filesystem::path Folder(const std::filesystem::path& folder, const char* name)
    {
        std::filesystem::create_directory(folder / name);
        return folder / name;
    }

    Bench::Suite m_rooms;
    Bench::Suite m_values;
};
} // namespace

int main(int argc, char** argv)
{
    std::unique_ptr<Comparison> comparison;
    return Bench::RunProgram(argc, argv, "The speed of the client's headers, as multiples of the interfaces.",
                             [&](const Bench::Options& options, const std::filesystem::path& folder)
                             {
                                 comparison = std::make_unique<Comparison>(options, folder);
                                 return comparison->Works();
                             });
}
