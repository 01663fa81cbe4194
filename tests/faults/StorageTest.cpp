// A disk that fails under transactions, and one that loses its power. How many times is said by HALYON_STORAGE_STEP
// (every how many'th operation fails) and HALYON_POWER_CUTS (of each sort).
#include <cstdio>
#include <cstdlib>

#include <tests/faults/Ledger.h>
#include <tests/faults/Storage.h>

using namespace HalyonTest;

namespace
{
int Number(const char* variable, int otherwise)
{
    const char* value = std::getenv(variable);
    return value != nullptr ? static_cast<int>(std::strtol(value, nullptr, 10)) : otherwise;
}

constexpr int kTransactions = 6;

// Fails one operation, once or for good, and looks at what is left. Returns whether it was reached.
bool FailOne(Ledger::Settings settings, Storage::Fault fault, int nth, bool forGood)
{
    SCOPED_TRACE(nth);
    Storage storage;
    Ledger ledger(settings);
    EXPECT_TRUE(ledger.Transact());
    storage.FailAt(fault, nth, forGood);
    for (int i = 0; i < kTransactions; ++i)
        ledger.Transact();
    const bool failed = storage.HasFailed();
    EXPECT_TRUE(failed || ledger.Done() == kTransactions + 1);

    // The disk is well again: the connection is of use, or says that it is not and a new one is.
    storage.FailAt(Storage::Fault::Any, 0, false);
    if (!ledger.Transact())
    {
        ledger.Close();
        EXPECT_TRUE(ledger.Transact());
    }
    ledger.Verify();
    EXPECT_TRUE(ledger.Transact()) << "after it was opened again";
    return failed;
}

TEST(Storage, FailuresLoseNothingThatWasDoneAndLeaveNothingHalfDone)
{
    const int step = Number("HALYON_STORAGE_STEP", 23);
    int count = 0;
    for (const Ledger::Settings settings : {Ledger::Settings{"DELETE", "FULL"}, Ledger::Settings{"WAL", "FULL"}})
    {
        for (const auto& [fault, name] : Storage::kFaults)
        {
            for (const bool forGood : {false, true})
            {
                SCOPED_TRACE(testing::Message() << settings.journal << ": " << name << (forGood ? " and on" : ""));
                for (int nth = 1; FailOne(settings, fault, nth, forGood) && !HasFailure(); nth += step)
                    ++count;
            }
        }
    }
    std::printf("storage: %d failures\n", count);
}

// What a host may choose, and what it has then.
const struct
{
    Ledger::Settings settings;
    bool keepsNames; // a deleted file does not come back
    int mostLost;
} kPowerCuts[] = {
    {{"DELETE", "FULL"}, true, 0},    {{"DELETE", "EXTRA"}, false, 0}, {{"DELETE", "FULL"}, false, 1},
    {{"TRUNCATE", "FULL"}, false, 0}, {{"WAL", "FULL"}, false, 0},     {{"WAL", "NORMAL"}, false, 1000},
};

TEST(Storage, PowerCutsLoseNothingThatWasDoneAndLeaveNothingHalfDone)
{
    const int cuts = Number("HALYON_POWER_CUTS", 10);
    std::mt19937 random(20240229);
    int done = 0;
    for (const auto& sort : kPowerCuts)
    {
        for (int cut = 0; cut < cuts && !HasFailure(); ++cut)
        {
            const auto seed = static_cast<std::uint32_t>(random());
            SCOPED_TRACE(testing::Message() << sort.settings.journal << " " << sort.settings.synchronous << ", names "
                                            << (sort.keepsNames ? "kept" : "lost") << ", seed " << seed);
            Storage storage;
            Ledger ledger(sort.settings);
            // Twice, so that one also hits what the first has left to repair.
            for (int i = 0; i < 2; ++i)
            {
                storage.FailAt(Storage::Fault::Any, 1 + static_cast<int>(random() % 400), true);
                for (int n = 0; n < kTransactions && !storage.HasFailed(); ++n)
                    ledger.Transact();
                storage.CutPower(seed, sort.keepsNames);
                ledger.Verify(sort.mostLost);
            }
            EXPECT_TRUE(ledger.Transact());
            done += 2;
        }
    }
    std::printf("power: %d cuts\n", done);
}
} // namespace
