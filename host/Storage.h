// Storage layers of the engine: what an `?vfs=NAME` in a database's name means.
//
// Not for what the module's users need otherwise: the engine has a layer for plain files of its own.
#pragma once

#include <string>

namespace HynHost
{
// Loads an extension library of the engine, by a path or by a name that the dynamic linker finds, into this process; it
// stays, with the layers that it registers. Called before any other thread runs. Throws HostError with the engine's
// reason.
void LoadStorage(const std::string& library);
} // namespace HynHost
