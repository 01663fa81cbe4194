// Loaded before a program: the first blocks of events that its threads "writer" and "reader" ask for are refused, two
// each, and the program says so when it ends.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <sys/prctl.h>

#include <halyon/thread/HynEventInfo.h>

namespace
{
// HynEventChunkPool::Chunk, which is nobody else's business.
constexpr std::size_t kChunk = 2 * sizeof(void*) + 30 * sizeof(Halyon::HynEventInfo);
constexpr int kRefusals = 2;

struct Refusals
{
    ~Refusals() { std::fprintf(stderr, "refused: %d\n", count.load()); }
    std::atomic<int> count{0};
    std::atomic<int> asked[2];
} g_refusals;

bool IsRefused() noexcept
{
    char name[16] = {};
    prctl(PR_GET_NAME, name);
    const bool isReader = std::strcmp(name, "reader") == 0;
    if ((!isReader && std::strcmp(name, "writer") != 0) || ++g_refusals.asked[isReader ? 1 : 0] > kRefusals)
        return false;
    ++g_refusals.count;
    return true;
}
} // namespace

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return size == kChunk && IsRefused() ? nullptr : std::malloc(size);
}
