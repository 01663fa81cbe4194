// What the tests of the client share: the module under test and a database in memory.
#pragma once

#include <gtest/gtest.h>

#include <halyon/client/HynSQ.h>

#include "tests/support/TempFolder.h"
#include "tests/support/Text.h"

namespace HalyonTest
{
using namespace Halyon;

inline Client::Connection Memory()
{
    return {Client::Module(HYNSQ_MODULE), ":memory:"};
}

// The code that `call` throws; HYN_S_OK when it throws nothing.
template <class Call>
HynResult Thrown(Call call)
{
    try
    {
        call();
    }
    catch (const Client::Error& error)
    {
        return error.code();
    }
    return HYN_S_OK;
}
} // namespace HalyonTest
