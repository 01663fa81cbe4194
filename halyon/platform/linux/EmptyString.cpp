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

constinit CTovStringWData* tovtmpDataNilW = &g_emptyBlock.header;
constinit char16_t* tovtmpPchNilW = &g_emptyBlock.terminator;
