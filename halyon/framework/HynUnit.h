// The pair of load-time marks that every source unit of halyon/ carries. Nothing reads them.
#pragma once

#include <cstdint>

namespace Halyon
{
[[maybe_unused]] static std::uint32_t ADDCTBBegin = 0;
[[maybe_unused]] static std::uint32_t ADDCTBEnd = 0xFFFFFFFFu;
} // namespace Halyon
