// The pair of load-time marks that every source unit of halyon/ carries. Nothing reads them, so they are kept by force.
#pragma once

#include <cstdint>

namespace Halyon
{
[[gnu::used]] static std::uint32_t ADDCTBBegin = 0;
[[gnu::used]] static std::uint32_t ADDCTBEnd = 0xFFFFFFFFu;
} // namespace Halyon
