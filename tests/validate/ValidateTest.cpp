// The validator as its users run it: on the module, on a component of somebody's own, and on modules each of which
// breaks one rule on purpose.

#include <cstdio>
#include <fstream>
#include <regex>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/Command.h"

using namespace HalyonTest;

namespace
{
Ended Validate(const std::string& arguments)
{
    return HalyonTest::RunShell(HYNVALIDATE " " + arguments + " 2>&1");
}

std::string BrokenModule(const std::string& fault)
{
    return HYN_BROKEN_MODULES "/" + fault + ".so";
}

struct Fault
{
    const char* module;
    const char* check;  // the one that fails; empty: none
    const char* reason; // a part of it
};

void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.module;
}

// clang-format off
const Fault kFaults[] = {
    {"None",                    "", ""},
    {"AbortsAtLoad",            "load", "killed by SIGABRT, loading the module"},
#if !defined(HYN_INSTRUMENTED)
    {"NeedsItsHost",            "dependencies", "which no library that it names brings"},
#endif
    {"NoEntryPoint",            "exports", "does not export MyDllGetClassObject"},
    {"ExtraSymbol",             "nothing-else-exported", "ExtraHelper"},
    {"WrongIdentifier",         "identifiers", "IID_IHynUnknown as 00000000-0000"},
    {"ComparesHalfAClass",      "unknown-class", "gave 0x00000000 (HYN_S_OK), not 0x81000001 (HYN_E_NOINTERFACE)"},
    {"ReleaseComesFirst",       "root-slots", "slot 0 (AddRef)"},
    {"ForgetsAddRef",           "reference-balance", "after a query for 3D7A1F62-52B4-4C8E-901D-6EF24B83A715 gave 100, not 101"},
    {"Asymmetric",              "query-laws", "asked through 3D7A1F62"},
    {"TwoIdentities",           "query-laws", "gives another pointer for IID_IHynUnknown through 3D7A1F62"},
    {"ComparesHalfAnInterface", "unknown-interface", "gave 0x00000000 (HYN_S_OK)"},
    {"CrashesOnNull",           "null-arguments", "and a null out pointer"},
    {"FailureLeaks",            "leaks", "with an unknown interface leaves"},
    {"SwapsSlots",              "slots", "RollbackTrans in slot 7"},
    {"CountRaces",              "threads", "4 threads"},
    {"Exits",                   "can-unload-now", "the process ended with status 0, calling MyDllCanUnloadNow"},
    {"Hangs",                   "can-unload-now", "not done after 3 s, calling MyDllCanUnloadNow"},
    {"Throws",                  "can-unload-now", "an exception crossed the interface"},
    {"KeepsLinkedForEver",      "unload", "nodelete"},
    {"LeavesAThread",           "unload", "threads"},
    {"LeavesAThreadKey",        "unload", "ending a thread that used the module"},
    {"PinnedByAThreadLocal",    "unload", "is still in the process"},
    {"LoadsOnce",               "load-twice", "killed by SIGABRT, loading the module again"},
};
// clang-format on

class Module : public testing::TestWithParam<Fault>
{
};
INSTANTIATE_TEST_SUITE_P(BrokenBy, Module, testing::ValuesIn(kFaults),
                         [](const auto& test) { return std::string(test.param.module); });

TEST_P(Module, IsCaughtByTheCheckThatNamesItsFaultAlone)
{
    const Fault& fault = GetParam();
    // The others may take their time, on a busy machine or an emulated one.
    const std::string limit = fault.module == std::string("Hangs") ? "3 " : "60 ";
    const Ended run = Validate("--json --time-limit " + limit + BrokenModule(fault.module));
    const nlohmann::json report = nlohmann::json::parse(run.output);
    EXPECT_EQ(run.status, *fault.check == '\0' ? 0 : 1) << run.output;
    std::string failed;
    for (const auto& check : report["checks"])
    {
        if (check["result"] != "failed")
            continue;
        failed += check["name"];
        EXPECT_NE(check["reason"].get<std::string>().find(fault.reason), std::string::npos) << check;
    }
    EXPECT_EQ(failed, fault.check);
}

TEST(Validate, FindsNothingWrongWithTheModule)
{
    const Ended run = Validate(HYNSQ_MODULE);
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("18 checks: 18 ok, 0 failed, 0 skipped"), std::string::npos) << run.output;
}

TEST(Validate, HoldsAModuleToTheClassesAndInterfacesThatAreNamed)
{
    const std::string sample = "3D7A1F60-52B4-4C8E-901D-6EF24B83A715";
    const std::string second = "3D7A1F62-52B4-4C8E-901D-6EF24B83A715";
    const struct
    {
        std::string classes;
        int status;
        const char* reason;
    } cases[] = {
        {sample + ":" + second, 0, ""},
        {second, 1, "does not make 3D7A1F62"},
        {sample + ":" + second + "," + sample, 1, "does not answer 3D7A1F60"},
        {"3D7A1F60", 2, "'3D7A1F60' is not CLASS[:INTERFACE,...]"},
    };
    for (const auto& test : cases)
    {
        const Ended run = Validate("--only query-laws --class " + test.classes + " " + BrokenModule("None"));
        EXPECT_EQ(run.status, test.status) << run.output;
        EXPECT_NE(run.output.find(test.reason), std::string::npos) << run.output;
    }
}

TEST(Validate, TellsWhyAFileCannotBeChecked)
{
    const std::string otherMachine = testing::TempDir() + "OtherMachine.so";
    std::string bytes = ContentOf(HYNSQ_MODULE);
    bytes.at(18) = 2; // e_machine
    std::ofstream(otherMachine, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    const std::pair<std::string, const char*> cases[] = {
        {"/no/such.so", "No such file or directory"},
        {"/", "it is empty or no file"},
        {HYN_MAN_PAGE, "it is no ELF file"},
        {otherMachine, "it is for another machine"},
        {HYNVALIDATE, "it is a program"},
        {"--only nothing x", "there is no check 'nothing'"},
        {"", "MODULE is required"},
    };
    for (const auto& [arguments, reason] : cases)
    {
        const Ended run = Validate(arguments);
        EXPECT_EQ(run.status, 2) << arguments;
        EXPECT_NE(run.output.find(reason), std::string::npos) << run.output;
    }
    std::remove(otherMachine.c_str());
}

TEST(Validate, IsToldWholeByItsManualPage)
{
    std::string page = ContentOf(HYN_MAN_PAGE);
    std::erase(page, '\\');
    const std::string offered = Validate("--help").output + Validate("--list").output;
    const std::regex word("--[a-z-]+|\n[a-z-]+(?=  )");
    int count = 0;
    for (std::sregex_iterator found(offered.begin(), offered.end(), word), end; found != end; ++found, ++count)
    {
        const std::string name = found->str().substr(found->str().front() == '\n' ? 1 : 0);
        EXPECT_NE(page.find(name), std::string::npos) << name;
    }
    EXPECT_GT(count, 20);
    EXPECT_EQ(HalyonTest::ManualPageWarnings(HYN_MAN_PAGE), "");
}
} // namespace
