#include <host/Module.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <host/HostError.h>

namespace HynHost
{
namespace
{
std::filesystem::path FindModule()
{
    if (const char* named = std::getenv("HALYON_MODULE"); named != nullptr && *named != '\0')
        return named;

    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    // The host and the organiser's window ask from folders of their own.
    const std::array places = {folder / "HynSQ.so", folder / HYNHOST_INSTALLED_MODULE, folder / HYNHOST_BUILT_MODULE,
                               folder / ORGANISER_INSTALLED_MODULE, folder / ORGANISER_BUILT_MODULE};
    std::string tried;
    for (const auto& place : places)
    {
        std::error_code ignored;
        if (std::filesystem::exists(place, ignored))
            return place;
        tried += "\n  " + place.lexically_normal().string();
    }
    throw HostError("cannot find the module HynSQ.so (HALYON_MODULE may name it); tried:" + tried);
}
} // namespace

Halyon::Client::Module LoadModule()
{
    const std::filesystem::path path = FindModule();
    std::string reason;
    Halyon::Client::Module module;
    if (Halyon::HynFailed(module.try_load(path.c_str(), &reason)))
        throw HostError("cannot load the module", path.string(), reason);
    return module;
}
} // namespace HynHost
