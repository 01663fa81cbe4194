// Starts programs that live on by themselves. Internal to the platform.
#pragma once

namespace Halyon
{
// Starts the program at `program` with `arguments` (the first is its name, a null pointer ends them) in the working
// folder `folder`, the caller's for null. It is no child of this process, has no terminal, reads nothing from standard
// input, and holds none of this process's files but standard output and error; its signals are as the system sets them.
// Returns 0 once the program runs, else the system's reason. [any]
int SpawnDetached(const char* program, char* const* arguments, const char* folder) noexcept;
} // namespace Halyon
