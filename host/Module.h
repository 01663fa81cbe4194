// The loaded module `HynSQ.so`: found, opened and asked for connections.
//
// The host never links the module; this is the one place that knows its file. It is looked for, in this order: the file
// that the environment variable HALYON_MODULE names, and then no other; beside the program; in the folder that
// installing puts it in; where the build puts it.
#pragma once

#include <filesystem>
#include <memory>

#include <halyon/database/IHynSQConnection.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/MyDll.h>

namespace HynHost
{
class Module
{
public:
    // Opens the module. Throws HostError with the places that were tried, or with the dynamic linker's own words. [any]
    Module();

    // A new connection object, not connected yet. It must be gone before the module is. Throws HostError. [any]
    [[nodiscard]] Halyon::CHynAutoPtr<Halyon::IHynSQConnection> CreateConnection() const;

private:
    struct Closer
    {
        void operator()(void* handle) const noexcept;
    };

    std::filesystem::path m_path;
    std::unique_ptr<void, Closer> m_handle;
    Halyon::HynGetClassObjectProc m_getClassObject = nullptr;
};
} // namespace HynHost
