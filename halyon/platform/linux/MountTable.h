// What is mounted where. Internal to this folder.
#pragma once

#include <string>

#include <sys/types.h>

namespace Halyon
{
struct Mount
{
    int id = -1; // -1: what lies above every mount, in a process whose root folder is none
    int parent = -1;
    dev_t device = 0;   // major number 0: no block device of its own
    std::string folder; // bytes, without a slash at its end; empty for the root folder
    std::string type;   // nfs, ext4, ...
    std::string source; // a device, a host, or any word
};

// The mount that a walk along the absolute `path` meets last; one on a single file is passed over. A mount that another
// one covers is not met. Throws std::bad_alloc.
Mount FindMount(const std::string& path);

// One of kTovDrive...: what the mount lies on.
unsigned KindOfMount(const Mount& mount);
} // namespace Halyon
