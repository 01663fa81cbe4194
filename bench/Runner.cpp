#include "Runner.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <nlohmann/json.hpp>
#include <sys/utsname.h>
#include <unistd.h>

#include "HeapCount.h"

namespace Bench
{
namespace
{
double Now(Clock clock)
{
    timespec now{};
    clock_gettime(clock == Clock::Wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

// What the rounds of one work gave, by turn.
struct Samples
{
    std::vector<std::vector<double>> nanoseconds;
    std::vector<double> heap;
};

void CheckedRound(const Work& work, Samples& samples)
{
    for (const Turn& turn : work.turns)
    {
        turn.setUp(true);
        const std::uint64_t before = HeapCalls();
        turn.run();
        samples.heap.push_back(static_cast<double>(HeapCalls() - before) / static_cast<double>(turn.operations));
        turn.check();
    }
}

void TimedRound(const Work& work, int round, Clock clock, Samples& samples)
{
    const std::size_t count = work.turns.size();
    for (std::size_t place = 0; place < count; ++place)
    {
        const std::size_t index = (place + static_cast<std::size_t>(round)) % count;
        const Turn& turn = work.turns[index];
        turn.setUp(false);
        const double begin = Now(clock);
        turn.run();
        const double end = Now(clock);
        turn.check();
        samples.nanoseconds[index].push_back((end - begin) / static_cast<double>(turn.operations));
    }
}

WorkResult Summary(const Work& work, const Samples& samples)
{
    WorkResult result{work.name, work.unit, work.target, {}};
    const std::vector<double>& reference = samples.nanoseconds.front();
    for (std::size_t i = 0; i < work.turns.size(); ++i)
    {
        const std::vector<double>& own = samples.nanoseconds[i];
        std::vector<double> ratios;
        for (std::size_t round = 0; round < own.size(); ++round)
            ratios.push_back(own[round] / reference[round]);
        result.turns.push_back({work.turns[i].contender, work.turns[i].operations, Median(own), Median(ratios),
                                samples.heap[i] - samples.heap.front()});
    }
    return result;
}

// On a terminal only: elsewhere the line would pile up.
void ShowProgress(const std::string& text)
{
    if (isatty(STDERR_FILENO) != 0)
        std::fprintf(stderr, "\r\033[K%s", text.c_str());
}

std::string ProcessorName()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
    {
        if (line.starts_with("model name"))
            return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

// The contenders of all works in the order in which they first appear.
std::vector<std::string> Contenders(const std::vector<WorkResult>& results)
{
    std::vector<std::string> names;
    for (const WorkResult& work : results)
    {
        for (const TurnResult& turn : work.turns)
        {
            if (std::find(names.begin(), names.end(), turn.contender) == names.end())
                names.push_back(turn.contender);
        }
    }
    return names;
}

// "1.02", or with a mark when the contender did fewer operations than the reference.
std::string RatioCell(const WorkResult& work, const std::string& contender)
{
    const auto found = std::find_if(work.turns.begin(), work.turns.end(),
                                    [&](const TurnResult& turn) { return turn.contender == contender; });
    if (found == work.turns.end())
        return "-";
    std::ostringstream cell;
    cell << std::fixed << std::setprecision(found->ratio < 10 ? 3 : 1) << found->ratio;
    if (found->operations < work.turns.front().operations)
        cell << '*';
    return cell.str();
}

std::string Number(double value, int digits)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

std::string Aligned(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const auto& row : rows)
    {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    std::ostringstream text;
    for (std::size_t line = 0; line < rows.size(); ++line)
    {
        for (std::size_t i = 0; i < widths.size(); ++i)
            text << "| " << (i == 0 ? std::left : std::right) << std::setw(static_cast<int>(widths[i])) << rows[line][i]
                 << ' ';
        text << "|\n";
        if (line == 0)
        {
            for (std::size_t i = 0; i < widths.size(); ++i)
                text << '|' << std::string(widths[i] + 1, '-') << (i == 0 ? '-' : ':');
            text << "|\n";
        }
    }
    return text.str();
}
} // namespace

std::vector<WorkResult> Run(const std::vector<Work>& works, int rounds, Clock clock)
{
    std::vector<WorkResult> results;
    for (const Work& work : works)
    {
        Samples samples;
        samples.nanoseconds.resize(work.turns.size());
        CheckedRound(work, samples);
        for (int round = 0; round < rounds; ++round)
        {
            ShowProgress(work.name + ": round " + std::to_string(round + 1) + " of " + std::to_string(rounds));
            TimedRound(work, round, clock, samples);
        }
        ShowProgress("");
        results.push_back(Summary(work, samples));
    }
    return results;
}

std::string Table(const std::vector<WorkResult>& results)
{
    const std::vector<std::string> names = Contenders(results);
    std::vector<std::string> header{"work", names[0] + ", ns", "at most"};
    header.insert(header.end(), names.begin() + 1, names.end());
    header.emplace_back("heap calls added");
    std::vector<std::vector<std::string>> rows{header};
    bool fewer = false;
    for (const WorkResult& work : results)
    {
        std::vector<std::string> row{work.name + ", " + std::to_string(work.turns[0].operations) + " " + work.unit,
                                     Number(work.turns[0].nanoseconds, 0),
                                     work.target > 0 ? Number(work.target, 2) : "-"};
        for (std::size_t i = 1; i < names.size(); ++i)
        {
            row.push_back(RatioCell(work, names[i]));
            fewer = fewer || row.back().back() == '*';
        }
        row.push_back(work.turns.size() > 1 ? Number(work.turns[1].addedHeap, 2) : "-");
        rows.push_back(row);
    }
    return Aligned(rows) +
           (fewer ? "\n* on fewer operations, to keep the run short; the times are by operation.\n" : "");
}

void WriteJson(const std::string& file, const std::vector<WorkResult>& results, int rounds)
{
    nlohmann::ordered_json document{{"machine", Machine()}, {"rounds", rounds}, {"works", nlohmann::json::array()}};
    for (const WorkResult& work : results)
    {
        nlohmann::ordered_json turns = nlohmann::json::array();
        for (const TurnResult& turn : work.turns)
            turns.push_back({{"contender", turn.contender},
                             {"operations", turn.operations},
                             {"nanoseconds", turn.nanoseconds},
                             {"ratio", turn.ratio},
                             {"added_heap_calls", turn.addedHeap}});
        document["works"].push_back(
            {{"name", work.name}, {"unit", work.unit}, {"target", work.target}, {"contenders", turns}});
    }
    std::ofstream out(file);
    out << document.dump(2) << '\n';
    if (!out.flush())
        throw std::runtime_error("cannot write " + file);
}

std::string Machine()
{
    utsname system{};
    uname(&system);
    return ProcessorName() + ", " + std::to_string(std::thread::hardware_concurrency()) + " cores, " + system.sysname +
           " " + system.release;
}
} // namespace Bench
