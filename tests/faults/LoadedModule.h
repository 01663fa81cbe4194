// The module as a host loads it, for tests that reach every call through an interface.
#pragma once

#include <stdexcept>

#include <dlfcn.h>

#include <halyon/database/IHynSQConnection.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/MyDll.h>

namespace HalyonTest
{
class LoadedModule
{
public:
    static Halyon::HynResult Get(const Halyon::HYN_GUID& iid, void** ppv)
    {
        static const auto s_get = reinterpret_cast<Halyon::HynGetClassObjectProc>(
            dlsym(dlopen(HYNSQ_MODULE, RTLD_NOW | RTLD_LOCAL), Halyon::kHynGetClassObjectName));
        return s_get(Halyon::CLSID_HynSQConnection, iid, ppv);
    }

    // A connection that is not connected.
    static Halyon::CHynAutoPtr<Halyon::IHynSQConnection> Connection()
    {
        Halyon::CHynAutoPtr<Halyon::IHynSQConnection> connection;
        if (Get(Halyon::IID_IHynSQConnection, reinterpret_cast<void**>(connection.Receive())) != Halyon::HYN_S_OK)
            throw std::runtime_error("no connection");
        return connection;
    }
};
} // namespace HalyonTest
