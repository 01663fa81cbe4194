#pragma once

#include <halyon/database/IHynSQConnection.h>

namespace HalyonTest
{
// Uses an empty database by codes alone. What went wrong, or null.
const char* RunWithoutExceptions(Halyon::IHynSQConnection* connection);
} // namespace HalyonTest
