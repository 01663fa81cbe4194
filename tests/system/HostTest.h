// What the journeys share: a folder of their own, a catalogue in it, and the sample files with dates that are always
// the same.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/system/HostProcess.h>

namespace HalyonTest
{
inline ::testing::AssertionResult Shows(const std::string& text, std::string_view part)
{
    if (text.find(part) != std::string::npos)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "\"" << part << "\" is not in:\n" << text;
}

// Whether the program failed, with status 1, and said why.
inline ::testing::AssertionResult Fails(const HostOutcome& outcome, std::string_view reason)
{
    if (outcome.status != 1)
        return ::testing::AssertionFailure() << "status " << outcome.status << "\n" << outcome.err;
    return Shows(outcome.err, reason);
}

class HostTest : public ::testing::Test
{
protected:
    HostTest();

    [[nodiscard]] std::filesystem::path Path(const std::string& name) const { return m_folder.Path() / name; }
    [[nodiscard]] std::string Catalog() const { return Path("catalog.db").string(); }

    // A copy of the sample files in the folder `media`, or of those that are named; each was modified at
    // 2024-06-01 12:00:00 UTC.
    [[nodiscard]] std::filesystem::path CopySamples(const std::vector<std::string>& names = {}) const;

    // Runs the program in this test's zone, with its home in the folder.
    [[nodiscard]] HostOutcome Host(const std::vector<std::string>& arguments, HostOptions options = {}) const;
    [[nodiscard]] HostOutcome Import(const std::filesystem::path& media, HostOptions options = {}) const;
    [[nodiscard]] HostOutcome List(std::vector<std::string> arguments, HostOptions options = {}) const;
    // The rows of a query on the catalogue as CSV without the line of titles, lines ended by "\n".
    [[nodiscard]] std::string Query(const std::string& sql) const;

    [[nodiscard]] HostOptions InZone(HostOptions options) const;

    std::string m_zone = "UTC";

private:
    TempFolder m_folder;
};
} // namespace HalyonTest
