// Where the module `HynSQ.so` lies: the one place that knows its file.
#pragma once

#include <halyon/client/HynSQ.h>

namespace HynHost
{
// Loads the module, which the host never links. It is looked for, in this order: the file that the environment variable
// HALYON_MODULE names, and then no other; beside the program; in the folder that installing puts it in; where the build
// puts it. Throws HostError with the places that were tried, or with the dynamic linker's own words. [any]
[[nodiscard]] Halyon::Client::Module LoadModule();
} // namespace HynHost
