// The payload that a producer and a handler agree on.
//
// An event carries it as a counted object: whoever posts keeps its own reference and may release it at once. Its only
// use to queues and threads is its reference count, so a component derives its own payload class from it.
#pragma once

#include <halyon/framework/IHynUnknown.h>

namespace Halyon
{
class IHynEventParam : public IHynUnknown
{
};
} // namespace Halyon
