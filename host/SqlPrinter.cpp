#include <host/SqlPrinter.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <utility>

#include <unistd.h>

#include <nlohmann/json.hpp>

#include <host/HostError.h>
#include <host/Terminal.h>
#include <host/TextTable.h>

namespace HynHost
{
namespace
{
// In the order of SqlValue.
constexpr std::array<std::string_view, std::variant_size_v<SqlValue>> kTypeNames = {"null", "integer", "real", "text",
                                                                                    "blob"};

void Write(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        ThrowSystemError("cannot write to", "standard output", errno);
}

// The fewest digits that read back as the same number, with a sign that it is no integer.
std::string RealText(double value)
{
    std::array<char, 40> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    std::string text(digits.data(), result.ptr);
    if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string Hex(const SqlBlob& bytes)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::byte byte : bytes)
    {
        text += kDigits[std::to_integer<std::size_t>(byte >> 4)];
        text += kDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
    }
    return text;
}

// A value as words; how NULL, texts and blobs look is the form's own.
struct Plain
{
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(long long value) const { return std::to_string(value); }
    std::string operator()(double value) const { return RealText(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const SqlBlob& value) const { return Hex(value); }
};

std::string PlainText(const SqlValue& value)
{
    return std::visit(Plain(), value);
}

std::string CellText(const SqlValue& value)
{
    if (std::holds_alternative<std::monostate>(value))
        return "NULL";
    return std::holds_alternative<SqlBlob>(value) ? "x'" + PlainText(value) + "'" : PlainText(value);
}

std::string CsvText(const SqlValue& value)
{
    std::string text = PlainText(value);
    if (!std::holds_alternative<std::string>(value) ||
        (!text.empty() && text.find_first_of("\",\r\n") == std::string::npos))
        return text;
    for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at + 2))
        text.insert(at, 1, '"');
    return '"' + text + '"';
}

std::string JsonString(const std::string& text)
{
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string JsonText(const SqlValue& value)
{
    const auto* real = std::get_if<double>(&value);
    if (real != nullptr && std::isinf(*real)) // JSON has no word for it, but reads this as it
        return *real < 0 ? "-9e999" : "9e999";
    if (real != nullptr || std::holds_alternative<long long>(value))
        return PlainText(value);
    return std::holds_alternative<std::monostate>(value) ? "null" : JsonString(PlainText(value));
}

// What occurs in one column, by the order of SqlValue.
using TypesSeen = std::array<bool, kTypeNames.size()>;

std::string TypeTitle(const TypesSeen& seen)
{
    std::string title;
    for (const std::size_t type : {1U, 2U, 3U, 4U, 0U})
    {
        if (seen[type])
            title.append(title.empty() ? "" : ", ").append(kTypeNames[type]);
    }
    return title;
}

void PrintTable(SqlResult& result)
{
    std::vector<TypesSeen> seen(result.Names().size());
    std::vector<std::vector<std::string>> rows;
    for (; !result.AtEnd(); result.Next())
    {
        const std::vector<SqlValue> values = result.Row();
        std::vector<std::string>& cells = rows.emplace_back();
        for (std::size_t k = 0; k < values.size(); ++k)
        {
            seen[k][values[k].index()] = true;
            cells.push_back(CellText(values[k]));
        }
    }

    std::vector<TextTable::Column> columns;
    for (std::size_t k = 0; k < seen.size(); ++k)
    {
        const bool numbers = (seen[k][1] || seen[k][2]) && !seen[k][3] && !seen[k][4];
        const auto align = numbers ? TextTable::Align::Right : TextTable::Align::Left;
        columns.push_back({result.Names()[k], align, !numbers, TypeTitle(seen[k])});
    }
    TextTable table(std::move(columns));
    for (auto& cells : rows)
        table.AddRow(std::move(cells));
    Write(table.Text(TerminalWidth(STDOUT_FILENO)));
    Write("(" + std::to_string(rows.size()) + (rows.size() == 1 ? " row)\n" : " rows)\n"));
}

void PrintCsv(SqlResult& result)
{
    const auto printLine = [](const std::vector<SqlValue>& values)
    {
        std::string line;
        for (const SqlValue& value : values)
            line.append(line.empty() && &value == &values.front() ? "" : ",").append(CsvText(value));
        Write(line + "\r\n");
    };
    printLine({result.Names().begin(), result.Names().end()});
    for (; !result.AtEnd(); result.Next())
        printLine(result.Row());
}

void PrintJson(SqlResult& result)
{
    Write("[");
    for (const char* separator = "\n"; !result.AtEnd(); result.Next(), separator = ",\n")
    {
        const std::vector<SqlValue> values = result.Row();
        std::string object = separator;
        for (std::size_t k = 0; k < values.size(); ++k)
        {
            object.append(k == 0 ? "{" : ", ").append(JsonString(result.Names()[k])).append(": ");
            object += JsonText(values[k]);
        }
        Write(object + "}");
    }
    Write("\n]\n");
}
} // namespace

void PrintSqlResult(SqlResult& result, SqlForm form, bool first)
{
    if (!first)
        Write(form == SqlForm::Csv ? "\r\n" : form == SqlForm::Table ? "\n" : "");
    if (form == SqlForm::Table)
        PrintTable(result);
    else if (form == SqlForm::Csv)
        PrintCsv(result);
    else
        PrintJson(result);
}
} // namespace HynHost
