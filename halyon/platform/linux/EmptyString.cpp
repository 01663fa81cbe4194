// The shared empty string block.

#include <halyon/platform/TovPCMac.h>

namespace
{
struct EmptyBlock
{
    CTovStringWData header;
    char16_t terminator;
};
static_assert(offsetof(EmptyBlock, terminator) == sizeof(CTovStringWData));

constinit EmptyBlock g_emptyBlock{{-1, 0, 0}, 0};
} // namespace

// Marked as used, or a compiler that sees the whole program takes the pointers for constants and then warns of freeing
// the block wherever a string might be empty.
[[gnu::used]] constinit CTovStringWData* tovtmpDataNilW = &g_emptyBlock.header;
[[gnu::used]] constinit char16_t* tovtmpPchNilW = &g_emptyBlock.terminator;
