// The plain types that cross every interface of the system, and the words that headers use to speak of threads.
//
// Thread tags, at the end of an operation's comment:
//   [any]            any thread, at any time, concurrently with anything else
//   [owner]          the thread that made the object, or one at a time under the caller's own ordering
//   [main]           the thread that runs the application's event loop
//   [owner & STATE]  as before, and only in the named state
//
// Text is UTF-16 in `char16_t`, zero-terminated unless a length stands beside it. Lengths are in 16-bit units,
// sizes in bytes; every comment that names a length says whether the terminator counts.
#pragma once

#include <cstddef>
#include <cstdint>

#include <halyon/framework/HynUnit.h>

// Flags that change the binary interface are refused here: a component built with one of them could be loaded and
// would then read other layouts than its host. Flags that leave layouts and calls alone are nobody's business.
#if defined(__SIZEOF_WCHAR_T__) && __SIZEOF_WCHAR_T__ != 4
#error "Halyon: build without -fshort-wchar; other libraries rely on the width of the compiler's wide character"
#endif
#if defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI == 0
#error "Halyon: build with the current C++ library ABI (_GLIBCXX_USE_CXX11_ABI=1)"
#endif
#if defined(_GLIBCXX_DEBUG)
#error "Halyon: _GLIBCXX_DEBUG changes the layout of containers; use _GLIBCXX_ASSERTIONS"
#endif
#if defined(_LIBCPP_VERSION)
#error "Halyon: build with libstdc++; the runtime's classes hold its containers (no -stdlib=libc++)"
#endif
#if defined(__has_feature)
#if __has_feature(cxx_abi_relative_vtable)
#error "Halyon: relative vtables change the slots of every interface (no -fexperimental-relative-c++-abi-vtables)"
#endif
#endif
#if !defined(__cplusplus) || __cplusplus < 202002L
#error "Halyon: C++20 is needed (-std=c++20)"
#endif

namespace Halyon::BinaryInterface
{
struct Packing
{
    char first;
    void* second;
};
enum Enumeration
{
    kOnly
};
static_assert(offsetof(Packing, second) == sizeof(void*),
              "Halyon: structures must not be packed here (no -fpack-struct, no open #pragma pack)");
static_assert(sizeof(Enumeration) == sizeof(int), "Halyon: build without -fshort-enums; it shrinks enumerations");
} // namespace Halyon::BinaryInterface

// A moment. The 8 bytes hold, in this order and in the machine's byte order: the high 16 bits of the seconds, the
// low 32 bits of the seconds, and 16 bits of fraction in units of 1/65536 s. Seconds count from 1904-01-01 00:00:00
// UTC. Take it as a whole: the two words mean nothing apart. `CHynPubTools` converts it.
struct FILETIME
{
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};

// A point, in screen pixels.
struct POINT
{
    std::int32_t x;
    std::int32_t y;
};

// A rectangle, in screen pixels; right and bottom are one past the last pixel.
struct SRect32
{
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

namespace Halyon
{
// A result code; negative means failure. The codes and their names stand in HynResult.h.
using HynResult = std::int32_t;
} // namespace Halyon

static_assert(sizeof(FILETIME) == 8 && alignof(FILETIME) == 4);
static_assert(sizeof(POINT) == 8);
static_assert(sizeof(SRect32) == 16);
static_assert(sizeof(int) == 4 && sizeof(long long) == 8 && sizeof(double) == 8 && sizeof(char16_t) == 2);
