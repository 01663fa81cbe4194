// What of events and threads is no comparison: costs, memory and precision of the system's own.
#pragma once

#include <string>
#include <vector>

namespace Bench
{
struct Figure
{
    std::string name;
    std::string unit;
    double value;
    double most; // at most so much
};

// Takes about 40 seconds, most of them waiting. Requires: an application object, and the main thread.
std::vector<Figure> ThreadFigures();

// One line a figure.
std::string Table(const std::vector<Figure>& figures);
} // namespace Bench
