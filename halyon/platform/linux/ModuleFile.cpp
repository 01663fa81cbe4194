#include <halyon/platform/ModuleFile.h>

#include <dlfcn.h>

namespace Halyon
{
ModuleFile::~ModuleFile()
{
    Close();
}

bool ModuleFile::Open(const char* path, std::string* reason)
{
    Close();
    m_handle = path == nullptr ? nullptr : dlopen(path, RTLD_NOW | RTLD_LOCAL); // null would be the program itself
    if (m_handle != nullptr)
        return true;
    const char* said = path == nullptr ? "no path" : dlerror();
    if (reason != nullptr)
        *reason = said != nullptr ? said : "unknown error";
    return false;
}

void* ModuleFile::Find(const char* name) const noexcept
{
    return m_handle == nullptr || name == nullptr ? nullptr : dlsym(m_handle, name);
}

void ModuleFile::Close() noexcept
{
    if (m_handle != nullptr)
        dlclose(m_handle);
    m_handle = nullptr;
}
} // namespace Halyon
