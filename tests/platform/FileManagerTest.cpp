// References to items of the file system.

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <halyon/platform/FileManager.h>

#include "tests/support/TempFolder.h"

using namespace Halyon;
namespace fs = std::filesystem;

namespace
{
constexpr FSRef kNoItem = {};

class FileReference : public testing::Test
{
protected:
    ~FileReference() override { fs::current_path(m_before); }

    static void Write(const fs::path& path, const char* content = "x") { std::ofstream(path) << content; }

    static OSStatus MakeRef(const fs::path& path, FSRef& ref, Boolean* isDirectory = nullptr)
    {
        std::memset(&ref, '#', sizeof ref);
        return FSPathMakeRef(path.c_str(), &ref, isDirectory);
    }

    // The path that the reference gives, or "status N".
    static std::string PathOf(const FSRef& ref)
    {
        char buffer[1024] = "#";
        const OSStatus status = FSRefMakePath(&ref, buffer, sizeof buffer);
        if (status == noErr)
            return buffer;
        EXPECT_STREQ(buffer, "");
        return "status " + std::to_string(status);
    }

    // Until the file system's clock has moved on: where it makes no handles, items born in one tick look the same.
    static void AwaitTick()
    {
        timespec start = {};
        timespec now = {};
        clock_gettime(CLOCK_REALTIME_COARSE, &start);
        do
            clock_gettime(CLOCK_REALTIME_COARSE, &now);
        while (now.tv_sec == start.tv_sec && now.tv_nsec == start.tv_nsec);
    }

    // A folder below the root whose path has `length` bytes, made piece by piece.
    fs::path Deep(std::size_t length) const
    {
        fs::path path = m_root;
        while (length - path.native().size() > 202)
            path /= std::string(200, 'd');
        path /= std::string(length - path.native().size() - 1, 'e');
        fs::create_directories(path);
        return path;
    }

    const HalyonTest::TempFolder m_folder;
    const fs::path& m_root = m_folder.Path();
    const fs::path m_before = fs::current_path();
};
} // namespace

TEST_F(FileReference, NamesTheItemByItsResolvedPath)
{
    fs::create_directory(m_root / "folder");
    Write(m_root / "folder/file");
    Write(m_root / "\xFF\xFE not text"); // bytes, as the file system has them
    fs::create_symlink("folder", m_root / "link");
    fs::create_symlink("../folder/file", m_root / "folder/again");
    fs::current_path(m_root / "folder");
    const std::tuple<fs::path, fs::path, Boolean> cases[] = {
        {m_root / "folder/file", m_root / "folder/file", 0},
        {m_root / "folder/", m_root / "folder", 1},
        {m_root / "folder/.././/folder/file", m_root / "folder/file", 0},
        {m_root / "link", m_root / "folder", 1},
        {m_root / "link/again", m_root / "folder/file", 0},
        {m_root / "\xFF\xFE not text", m_root / "\xFF\xFE not text", 0},
        {"file", m_root / "folder/file", 0},
        {"..", m_root, 1},
        {"/", "/", 1},
    };
    for (const auto& [path, expected, expectedDirectory] : cases)
    {
        FSRef ref;
        Boolean isDirectory = 9;
        EXPECT_EQ(MakeRef(path, ref, &isDirectory), noErr) << path;
        EXPECT_EQ(PathOf(ref), expected) << path;
        EXPECT_EQ(isDirectory, expectedDirectory) << path;
    }
}

TEST_F(FileReference, WhatCannotBeReachedGivesNoItem)
{
    Write(m_root / "file");
    fs::create_symlink("nowhere", m_root / "dangling");
    fs::create_symlink("circle", m_root / "circle");
    const std::pair<fs::path, OSStatus> cases[] = {{"", paramErr},
                                                   {m_root / "missing/file", fnfErr},
                                                   {m_root / "file/", fnfErr},
                                                   {m_root / "file/below", fnfErr},
                                                   {m_root / "dangling", fnfErr},
                                                   {m_root / "circle", fnfErr},
                                                   {m_root / std::string(300, 'n'), pathTooLongErr}};
    for (const auto& [path, status] : cases)
    {
        FSRef ref;
        Boolean isDirectory = 9;
        EXPECT_EQ(MakeRef(path, ref, &isDirectory), status) << path;
        EXPECT_EQ(std::memcmp(&ref, &kNoItem, sizeof ref), 0) << path;
        EXPECT_EQ(isDirectory, 9) << path;
    }
}

TEST_F(FileReference, PathsOf1023BytesFitAndLongerOnesFail)
{
    FSRef ref;
    const fs::path longest = Deep(1023);
    EXPECT_EQ(MakeRef(longest, ref), noErr);
    EXPECT_EQ(PathOf(ref), longest);
    char small[1023] = "#";
    EXPECT_EQ(FSRefMakePath(&ref, small, sizeof small), pathTooLongErr);
    EXPECT_STREQ(small, "");
    EXPECT_EQ(MakeRef(Deep(1024), ref), pathTooLongErr);

    // What counts is where a path leads, not how long it is written.
    fs::create_directory_symlink(Deep(1024), m_root / "short");
    EXPECT_EQ(MakeRef(m_root / "short", ref), pathTooLongErr);
    std::string roundabout = m_root.string();
    while (roundabout.size() < 1500)
        roundabout += "/.";
    EXPECT_EQ(MakeRef(roundabout, ref), noErr);
    EXPECT_EQ(PathOf(ref), m_root);
}

TEST_F(FileReference, NeverActsOnAnotherItem)
{
    const fs::path item = m_root / "folder/item";
    fs::current_path(m_root);
    for (const char* change : {
             "rm -f folder/item",
             "mv folder/item elsewhere",
             "echo > new; mv -f new folder/item",
             "rm -f folder/item; echo > folder/item", // the new one likes to get the number of the old one
             "rm -f folder/item; mkdir folder/item",
             "mv folder/item elsewhere; ln -s ../elsewhere folder/item",
             "mv folder gone",
             "mv folder gone; mkdir folder; echo > folder/item",
             "rm -rf folder; echo > folder",
         })
    {
        for (const auto& entry : fs::directory_iterator(m_root))
            fs::remove_all(entry);
        fs::create_directory(m_root / "folder");
        Write(item);
        FSRef ref;
        ASSERT_EQ(MakeRef(item, ref), noErr);
        // Changes to the item itself leave it the same.
        Write(item, "longer than it was");
        fs::permissions(item, fs::perms::owner_read);
        ASSERT_EQ(PathOf(ref), item) << change;
        AwaitTick();
        ASSERT_EQ(std::system(change), 0) << change;
        EXPECT_EQ(PathOf(ref), "status " + std::to_string(fnfErr)) << change;
    }
}

TEST_F(FileReference, OfNoItemAndMissingArgumentsAreRefused)
{
    FSRef garbage;
    std::memset(&garbage, '/', sizeof garbage); // no terminator anywhere
    for (const FSRef& none : {kNoItem, garbage})
        EXPECT_EQ(PathOf(none), "status " + std::to_string(fnfErr));
    FSRef ref;
    ASSERT_EQ(MakeRef(m_root, ref), noErr);
    char buffer[1024] = "#";
    EXPECT_EQ(FSRefMakePath(&ref, nullptr, 100), paramErr);
    EXPECT_EQ(FSRefMakePath(&ref, buffer, 0), paramErr);
    EXPECT_STREQ(buffer, "#");
    EXPECT_EQ(FSRefMakePath(nullptr, buffer, sizeof buffer), paramErr);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(FSPathMakeRef("/", nullptr, nullptr), paramErr);
    EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
    EXPECT_EQ(std::memcmp(&ref, &kNoItem, sizeof ref), 0);
}
