#include <host/TextTable.h>

#include <algorithm>
#include <cstddef>
#include <numeric>

#include <host/DisplayWidth.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
constexpr int kGap = 2;       // spaces between columns
constexpr int kNarrowest = 8; // columns shrink no further

std::string Rule(const std::vector<int>& widths)
{
    std::string text;
    for (const int width : widths)
        text.append(text.empty() ? 0 : kGap, ' ').append(static_cast<std::size_t>(width), '-');
    return text + '\n';
}
} // namespace

void TextTable::AddRow(std::vector<std::string> cells)
{
    cells.resize(m_columns.size());
    for (std::string& cell : cells)
        cell = PrintableText(cell);
    m_rows.push_back(std::move(cells));
}

std::string TextTable::Text(std::optional<int> width) const
{
    const std::vector<int> widths = Widths(width);
    std::vector<std::string> titles;
    std::vector<std::string> subtitles;
    for (const Column& column : m_columns)
    {
        titles.push_back(PrintableText(column.title));
        subtitles.push_back(PrintableText(column.subtitle));
    }

    std::string text;
    AppendRow(text, titles, widths);
    if (std::ranges::any_of(subtitles, [](const std::string& subtitle) { return !subtitle.empty(); }))
        AppendRow(text, subtitles, widths);
    text += Rule(widths);
    for (const auto& cells : m_rows)
    {
        if (cells.empty())
            text += Rule(widths);
        else
            AppendRow(text, cells, widths);
    }
    return text;
}

std::vector<int> TextTable::Widths(std::optional<int> width) const
{
    std::vector<int> widths;
    for (const Column& column : m_columns)
        widths.push_back(
            std::max(DisplayWidth(PrintableText(column.title)), DisplayWidth(PrintableText(column.subtitle))));
    for (const auto& cells : m_rows)
    {
        for (std::size_t k = 0; k < cells.size(); ++k)
            widths[k] = std::max(widths[k], DisplayWidth(cells[k]));
    }
    if (!width)
        return widths;

    int excess = std::accumulate(widths.begin(), widths.end(), kGap * (static_cast<int>(widths.size()) - 1)) - *width;
    while (excess > 0)
    {
        int* widest = nullptr;
        for (std::size_t k = 0; k < widths.size(); ++k)
        {
            if (m_columns[k].shrinks && widths[k] > (widest == nullptr ? kNarrowest : *widest))
                widest = &widths[k];
        }
        if (widest == nullptr)
            break;
        --*widest;
        --excess;
    }
    return widths;
}

void TextTable::AppendRow(std::string& text, const std::vector<std::string>& cells,
                          const std::vector<int>& widths) const
{
    for (std::size_t k = 0; k < cells.size(); ++k)
    {
        const std::string cell = ShortenMiddle(cells[k], std::max(widths[k], 1));
        const auto padding = static_cast<std::size_t>(std::max(0, widths[k] - DisplayWidth(cell)));
        if (k != 0)
            text.append(kGap, ' ');
        if (m_columns[k].align == Align::Right)
            text.append(padding, ' ');
        text += cell;
        if (m_columns[k].align == Align::Left)
            text.append(padding, ' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
}
} // namespace HynHost
