// The trash of a Library: takes media out of the catalogue and their files to the desktop's trash, and brings both
// back.
//
// What was taken stays in temporary tables of the writer's engine handle, so it can be brought back until the end of
// the program. All [the writer].
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <host/DesktopTrash.h>
#include <host/window/SharedCatalog.h>

namespace HynHost
{
class LibraryTrash
{
public:
    using FailureFunction = std::function<void(const std::string& message)>;

    // `onFailure` is told of each item that could not be moved.
    LibraryTrash(SharedCatalog& catalog, FailureFunction onFailure);

    // Returns how many items went. Throws as the catalogue does; then all are where they were.
    std::size_t Take(const std::vector<long long>& ids);

    // Brings back what the last Take took, and returns how many items came. What could not come is tried again after
    // everything else. Throws as the catalogue does; files that have come then are found by the next import.
    std::size_t BringBack();

    // How many times BringBack has something to do.
    [[nodiscard]] std::size_t Levels() const noexcept { return m_levels.size(); }

private:
    struct Taken
    {
        long long number = 0; // in the temporary tables
        long long id = 0;     // that it had in the catalogue
        TrashItem item;
    };
    using Level = std::vector<Taken>;

    [[nodiscard]] Level Find(Database& database, const std::vector<long long>& ids, const VolumePlaces& places);
    static void MakeTables(Database& database);
    void Move(Level& level) const;
    [[nodiscard]] Level Restore(Level& level) const;

    SharedCatalog& m_catalog;
    const FailureFunction m_onFailure;
    std::vector<Level> m_levels; // the last one taken last
    long long m_number = 0;
};
} // namespace HynHost
