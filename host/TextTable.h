// Aligned columns of text, for people.
//
//     TextTable table({{"Kind"}, {"Files", TextTable::Align::Right}, {"Path", TextTable::Align::Left, true}});
//     table.AddRow({"JPEG", "12", path});
//     table.AddRule();
//     table.AddRow({"Total", "12"});
//     std::fputs(table.Text(TerminalWidth(STDOUT_FILENO)).c_str(), stdout);
//
// Not for what another program reads.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace HynHost
{
class TextTable
{
public:
    enum class Align
    {
        Left,
        Right,
    };
    struct Column
    {
        std::string title;
        Align align = Align::Left;
        bool shrinks = false;      // its cells may lose their middle when the table is too wide
        std::string subtitle = {}; // stands in a line below the titles, which is there when any column has one
    };

    explicit TextTable(std::vector<Column> columns) : m_columns(std::move(columns)) {}

    // A row of UTF-8 cells; control characters are made visible. Cells that are missing at the end stay empty.
    void AddRow(std::vector<std::string> cells);
    // A line across the table.
    void AddRule() { m_rows.emplace_back(); }

    // The whole table with its titles. With a width, columns that may shrink do so until it fits, as far as they can.
    [[nodiscard]] std::string Text(std::optional<int> width) const;

private:
    [[nodiscard]] std::vector<int> Widths(std::optional<int> width) const;
    void AppendRow(std::string& text, const std::vector<std::string>& cells, const std::vector<int>& widths) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows; // an empty one is a rule
};
} // namespace HynHost
