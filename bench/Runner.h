// Runs the same works through several contenders, turn about, and reports each as a multiple of the first.
//
// For comparisons on a machine that others use too: a round times every contender once, the next round starts with
// another one, and the ratio of a contender is the median over the rounds of its time by the reference's time in the
// same round. Not for absolute numbers: the nanoseconds are those of this machine in this hour.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Bench
{
// One contender's turn at a work. `setUp` and `check` are not timed; `check` throws when the work was not done, or was
// done otherwise than by the reference.
struct Turn
{
    std::string contender;
    std::size_t operations;                   // the time is reported by operation, so a slow contender may do fewer
    std::function<void(bool complete)> setUp; // `complete`: the round that is not timed, in which every byte is checked
    std::function<void()> run;
    std::function<void()> check;
};

// A work; its first turn is the reference.
struct Work
{
    std::string name;
    std::string unit;
    double target; // at most this multiple of the reference for the second turn; 0: none set
    std::vector<Turn> turns;
};

struct TurnResult
{
    std::string contender;
    std::size_t operations;
    double nanoseconds; // median, by operation
    double ratio;       // median of the ratios to the reference, by round
    double addedHeap;   // heap calls by operation, less the reference's
};

struct WorkResult
{
    std::string name;
    std::string unit;
    double target;
    std::vector<TurnResult> turns;
};

enum class Clock
{
    Wall,
    Processor // of the whole process: on a busy machine, and for works on one thread
};

// One round in which everything is checked to the last byte and heap calls are counted, then `rounds` timed ones.
// Progress goes to standard error. Exceptions of the turns come through.
std::vector<WorkResult> Run(const std::vector<Work>& works, int rounds, Clock clock);

// The results as one table: a row a work, a column a contender.
std::string Table(const std::vector<WorkResult>& results);

// The results, the machine and the number of rounds as JSON. Throws when the file cannot be written.
void WriteJson(const std::string& file, const std::vector<WorkResult>& results, int rounds);

// Processor, number of cores and system, on one line.
std::string Machine();
} // namespace Bench
