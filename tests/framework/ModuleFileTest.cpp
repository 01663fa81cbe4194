// What the module's file holds, as the binary tools show it.

#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace
{
std::string OutputOf(const std::string& command)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    std::array<char, 4096> part{};
    while (pipe != nullptr && std::fgets(part.data(), part.size(), pipe.get()) != nullptr)
        output += part.data();
    return output;
}

// The last word of each line of what `tool` says of the module.
std::multiset<std::string> LastWords(const std::string& tool)
{
    std::istringstream lines(OutputOf(tool + " '" HYNSQ_MODULE "'"));
    std::multiset<std::string> words;
    for (std::string line; std::getline(lines, line);)
        words.insert(line.substr(line.find_last_of(' ') + 1));
    return words;
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

bool IsIdentifier(const std::string& name)
{
    return StartsWith(name, "CLSID_") || StartsWith(name, "IID_");
}

TEST(ModuleFile, ExportsTheEntryPointsAndTheIdentifiersAlone)
{
    std::multiset<std::string> names = LastWords("nm -D --defined-only");
    EXPECT_EQ(names.erase("MyDllGetClassObject"), 1u);
    EXPECT_EQ(names.erase("MyDllCanUnloadNow"), 1u);
    EXPECT_EQ(std::erase_if(names, IsIdentifier), 68u);
    EXPECT_TRUE(names.empty()) << *names.begin() << " should not be visible";
}

TEST(ModuleFile, NeedsTheEngineUnicodeAndTheLanguageRuntimeAlone)
{
    // The sanitizers' own libraries come with an instrumented build.
    const char* allowed[] = {"[libsqlite3.so", "[libicuuc.so", "[libstdc++.so", "[libgcc_s.so",
                             "[libc.so",       "[libm.so",     "[ld",           "[libasan.so",
                             "[libubsan.so",   "[libtsan.so",  "[libicudata.so"};
    std::multiset<std::string> needed = LastWords("readelf -dW '" HYNSQ_MODULE "' | grep NEEDED; true");
    EXPECT_GE(needed.size(), 3u);
    for (const char* name : allowed)
        std::erase_if(needed, [name](const std::string& library) { return StartsWith(library, name); });
    EXPECT_TRUE(needed.empty()) << *needed.begin() << " should not be needed";
}

TEST(ModuleFile, BindsItsIdentifiersToItself)
{
    // A relocation by name would let any library in the process put another value in their place.
    const std::string relocations = OutputOf("readelf -rW '" HYNSQ_MODULE "'");
    EXPECT_NE(relocations.find("sqlite3_open16"), std::string::npos);
    for (const char* name : {" IID_", " CLSID_", " MyDll"})
        EXPECT_EQ(relocations.find(name), std::string::npos) << name;
}

TEST(ModuleFile, CarriesTheLoadTimeMarksInEachUnit)
{
    const std::multiset<std::string> names = LastWords("nm -C");
    EXPECT_GE(names.count("Halyon::ADDCTBBegin"), 10u);
    EXPECT_EQ(names.count("Halyon::ADDCTBBegin"), names.count("Halyon::ADDCTBEnd"));
}
} // namespace
