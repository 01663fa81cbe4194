// The module as a host sees it that was compiled elsewhere, long ago: by its file, its two entry points, its
// identifiers in text form, and the slots of its objects. No header of the module is used here, deliberately: what
// this file says is frozen, and a change of the module's binary interface shows up as a failing test.
#pragma once

#include <stdexcept>

#include <dlfcn.h>

#include <validate/Frozen.h>

namespace ForeignHost
{
using namespace Frozen;

// The loaded module.
class Module
{
public:
    Module() : m_handle(dlopen(HYNSQ_MODULE, RTLD_NOW | RTLD_LOCAL))
    {
        if (m_handle == nullptr)
            throw std::runtime_error(dlerror());
    }
    ~Module() { dlclose(m_handle); }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    [[nodiscard]] void* Symbol(const char* name) const { return dlsym(m_handle, name); }

    std::int32_t GetClassObject(const Identifier& cls, const Identifier& id, void** out) const
    {
        using Function = std::int32_t (*)(const Identifier*, const Identifier*, void**);
        return reinterpret_cast<Function>(Symbol("MyDllGetClassObject"))(&cls, &id, out);
    }

    [[nodiscard]] std::int32_t CanUnloadNow() const
    {
        return reinterpret_cast<std::int32_t (*)()>(Symbol("MyDllCanUnloadNow"))();
    }

    // A connection with one reference.
    [[nodiscard]] void* MakeConnection() const
    {
        void* connection = nullptr;
        if (GetClassObject(kConnectionClass, kConnection, &connection) != kOk)
            throw std::runtime_error("no connection");
        return connection;
    }

private:
    void* m_handle;
};
} // namespace ForeignHost
