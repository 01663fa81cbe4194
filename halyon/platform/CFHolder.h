// Holds one reference to a counted value of the platform and gives it back.
//
//     CFHolder<CFURLRef> url(CFBundleCopyBundleURL(bundle));
#pragma once

#include <memory>
#include <type_traits>

#include <halyon/platform/CoreFoundation.h>

namespace Halyon
{
struct CFReleaser
{
    void operator()(CFTypeRef value) const noexcept { CFRelease(value); }
};

template <class Ref>
using CFHolder = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;
} // namespace Halyon
