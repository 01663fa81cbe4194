#include <host/Module.h>

#include <array>
#include <cstdlib>
#include <string>

#include <dlfcn.h>

#include <halyon/framework/HynIdentifiers.h>
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
    const std::array places = {folder / "HynSQ.so", folder / HYNHOST_INSTALLED_MODULE, folder / HYNHOST_BUILT_MODULE};
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

std::string LinkerReason()
{
    const char* reason = dlerror();
    return reason == nullptr ? "unknown error" : reason;
}
} // namespace

void Module::Closer::operator()(void* handle) const noexcept
{
    dlclose(handle);
}

Module::Module() : m_path(FindModule()), m_handle(dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr)
        throw HostError("cannot load the module", m_path.string(), LinkerReason());
    m_getClassObject =
        reinterpret_cast<Halyon::HynGetClassObjectProc>(dlsym(m_handle.get(), Halyon::kHynGetClassObjectName));
    if (m_getClassObject == nullptr)
        throw HostError("cannot use the module", m_path.string(), LinkerReason());
}

Halyon::CHynAutoPtr<Halyon::IHynSQConnection> Module::CreateConnection() const
{
    void* object = nullptr;
    const Halyon::HynResult result =
        m_getClassObject(Halyon::CLSID_HynSQConnection, Halyon::IID_IHynSQConnection, &object);
    if (Halyon::HynFailed(result))
        throw HostError("cannot get a connection from", m_path.string(), Halyon::HynResultName(result));
    Halyon::CHynAutoPtr<Halyon::IHynSQConnection> connection;
    connection.Attach(static_cast<Halyon::IHynSQConnection*>(object));
    return connection;
}
} // namespace HynHost
