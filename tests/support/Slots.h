// The numbers of virtual operations in the tables of their classes, which other binaries have in their code.
#pragma once

#include <cstddef>
#include <cstring>

namespace HalyonTest
{
// A pointer to a virtual operation holds where its slot begins in the table; on some machines its lowest bit is a mark.
template <class Signature, class Class>
int SlotOf(Signature Class::*operation)
{
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &operation, sizeof offset);
    return static_cast<int>(offset) / static_cast<int>(sizeof(void*));
}
} // namespace HalyonTest
