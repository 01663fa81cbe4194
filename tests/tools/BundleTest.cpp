// The folders of bundles, and which localisation is taken.

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <halyon/platform/CFHolder.h>
#include <halyon/tools/CHynPubTools.h>

#include "tests/support/Command.h"
#include "tests/support/Environment.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Text.h"

using namespace Halyon;
using namespace HalyonTest;
using Tools = CHynPubTools;
namespace fs = std::filesystem;

namespace
{
// What a user has set, in words such as "LANG=ja"; the other variables are not set.
void Speak(Environment& environment, const std::string& words)
{
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
        environment.Set(name, nullptr);
    std::istringstream stream(words);
    for (std::string name, value; std::getline(stream, name, '=') && std::getline(stream, value, ' ');)
        environment.Set(name, value.c_str());
}

std::string OutputOf(const fs::path& program)
{
    return HalyonTest::OutputOf("'" + program.native() + "'");
}

std::string Resource(CFBundleRef bundle, const CTovStringW& name, const CTovStringW& type = {},
                     const CTovStringW& subFolder = {})
{
    const auto optional = [](const CTovStringW& text)
    {
        return text.IsEmpty() ? nullptr : text.StringRef();
    };
    const CFHolder<CFStringRef> nameRef(name.StringRef());
    const CFHolder<CFStringRef> typeRef(optional(type));
    const CFHolder<CFStringRef> folderRef(optional(subFolder));
    const CFHolder<CFURLRef> url(CFBundleCopyResourceURL(bundle, nameRef.get(), typeRef.get(), folderRef.get()));
    char path[1024];
    return CFURLGetFileSystemRepresentation(url.get(), 1, path, sizeof path) ? path : "none";
}
} // namespace

TEST(Bundle, EveryOperationNamesItsFolder)
{
    const TempFolder top;
    const fs::path folder = top.Path() / "F\u00F8to.app";
    fs::create_directories(folder / "Contents/Resources/ja.lproj");
    Environment environment;
    Speak(environment, "LANGUAGE=ja");
    const CTovStringW path = top.Wide("F\u00F8to.app/"); // as people write folders
    const CFHolder<CFBundleRef> bundle(Tools::CreateBundleByPath(path));
    ASSERT_NE(bundle, nullptr);
    __CFBundle* b = bundle.get();
    const std::pair<CTovStringW, const char*> cases[] = {
        {Tools::GetBundleContentsPath(b), "Contents"},
        {Tools::GetBundleResourcePath(b), "Contents/Resources"},
        {Tools::GetBundleLocalizePath(b), "Contents/Resources/ja.lproj"},
        {Tools::GetBundleLocalizeUIPath(b), "Contents/Resources/ja.lproj/UI"},
        {Tools::GetBundleContentsPathWithName(b, u"x"), "Contents/x"},
        {Tools::GetBundleResourcePathWithName(b, u"x y/z"), "Contents/Resources/x y/z"},
        {Tools::GetBundleLocalizePathWithName(b, u"\u5199"), "Contents/Resources/ja.lproj/\u5199"},
        {Tools::GetBundleLocalizeUIPathWithName(b, u"x"), "Contents/Resources/ja.lproj/UI/x"},
        {Tools::GetResourcePathFromBundlePath(path), "Contents/Resources"},
        {Tools::GetLocalizePathFromBundlePath(path), "Contents/Resources/ja.lproj"},
        {Tools::GetLocalizeUIPathFromBundlePath(path), "Contents/Resources/ja.lproj/UI"},
        {Tools::GetResourcePathWithNameFromBundlePath(path, u"x"), "Contents/Resources/x"},
        {Tools::GetLocalizePathWithNameFromBundlePath(path, u"x"), "Contents/Resources/ja.lproj/x"},
        {Tools::GetLocalizeUIPathWithNameFromBundlePath(path, u"x"), "Contents/Resources/ja.lproj/UI/x"},
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(U8(result), (folder / expected).native());

    std::u16string module(1024, u'#');
    ASSERT_EQ(Tools::GetModulePath(b, module.data()), 1);
    EXPECT_EQ(U8(module.substr(0, module.find(u'#'))), top.Path().native()) << "and no terminator behind it";
    EXPECT_EQ(module.find_first_not_of(u'#', module.find(u'#')), std::u16string::npos);
    ASSERT_EQ(Tools::GetModuleUIPath(b, module.data()), 1);
    EXPECT_EQ(U8(module.c_str()), (top.Path() / "UI").native());
}

TEST(Bundle, TheUsersLanguagesChooseTheLocalisation)
{
    const struct
    {
        const char* user;
        std::vector<const char*> folders;
        const char* expected; // "" for none
    } cases[] = {
        {"LANGUAGE=ja", {"en", "ja", "fr"}, "ja"},
        {"LANGUAGE=sw:fr_CA:ja", {"en", "fr", "ja"}, "fr"},
        {"LC_ALL=ja_JP.UTF-8 LC_MESSAGES=fr_FR LANG=de_DE", {"de", "en", "fr", "ja"}, "ja"},
        {"LANGUAGE= LC_ALL= LC_MESSAGES=fr_FR.ISO-8859-15@euro LANG=de_DE", {"de", "en", "fr", "ja"}, "fr"},
        {"LANG=de_AT", {"de", "en", "fr", "ja"}, "de"},
        {"LANGUAGE=sw LANG=de_AT.UTF-8", {"de", "en", "fr"}, "de"},
        // Old bundles call the folders by the languages' English names.
        {"LANGUAGE=ja_JP", {"English", "French", "Japanese"}, "Japanese"},
        {"LANGUAGE=nb_NO", {"English", "Norwegian Bokm\u00E5l"}, "Norwegian Bokm\u00E5l"},
        // Scripts, regions, variants.
        {"LANGUAGE=zh_TW", {"en", "zh-Hans", "zh-Hant"}, "zh-Hant"},
        {"LANGUAGE=zh_CN.UTF-8", {"en", "zh_HK", "zh_SG"}, "zh_SG"},
        {"LANGUAGE=pt_BR", {"pt", "pt_PT"}, "pt"},
        {"LANGUAGE=pt_AO", {"pt", "pt_PT"}, "pt_PT"},
        {"LANGUAGE=en_AU", {"en-GB", "en_US", "fr"}, "en-GB"},
        {"LANG=sr_RS@latin", {"sr", "sr-Latn"}, "sr-Latn"},
        {"LANG=sr_RS.UTF-8", {"sr", "sr_Latn"}, "sr"},
        {"LANG=ca_ES.UTF-8@valencia", {"ca", "ca_ES@valencia"}, "ca_ES@valencia"},
        // Nothing that the user reads: English, else the first; a name that is no language is the last choice.
        {"LANGUAGE=ko", {"de", "en_GB", "ja"}, "en_GB"},
        {"LC_ALL=C", {"de", "English", "ja"}, "English"},
        {"", {"sv", "fr", "ja", "de", "it", "nl"}, "de"},
        {"LANGUAGE=base", {"Base", "ja"}, "ja"},
        {"LANGUAGE=ja", {"Base"}, "Base"},
        {"LANGUAGE=ja", {}, ""},
    };
    for (const auto& c : cases)
    {
        const TempFolder top;
        const fs::path resources = top.Path() / "Contents/Resources";
        fs::create_directories(resources / "UI");
        top.Write("Contents/Resources/ko.lproj", "a file is no localisation");
        for (const char* folder : c.folders)
            fs::create_directories(resources / (std::string(folder) + ".lproj"));
        Environment environment;
        Speak(environment, c.user);
        const std::string expected = *c.expected != 0 ? "/" + std::string(c.expected) + ".lproj" : "";
        EXPECT_EQ(U8(Tools::GetLocalizePathFromBundlePath(top.Wide(""))), resources.native() + expected) << c.user;
    }
}

TEST(Bundle, WhatIsNoBundleGivesNothing)
{
    const TempFolder top;
    top.Write("file");
    for (const CTovStringW& path : {CTovStringW(), top.Wide("missing"), top.Wide("file")})
    {
        EXPECT_EQ(Tools::CreateBundleByPath(path), nullptr) << U8(path);
        EXPECT_EQ(U8(Tools::GetResourcePathFromBundlePath(path)), "") << U8(path);
        EXPECT_EQ(U8(Tools::GetLocalizeUIPathWithNameFromBundlePath(path, u"x")), "") << "never a relative path";
    }
    EXPECT_EQ(Tools::CreateBundleByPath(nullptr), nullptr);
    EXPECT_EQ(Tools::GetModulePath(nullptr, nullptr), 0);
    EXPECT_EQ(Tools::GetModuleUIPath(nullptr, nullptr), 0);
    const CFHolder<CFBundleRef> root(Tools::CreateBundleByPath(u"/"));
    char16_t untouched[1024] = u"#";
    EXPECT_EQ(Tools::GetModulePath(root.get(), untouched), 0);
    EXPECT_EQ(Tools::GetModuleUIPath(root.get(), untouched), 0);
    EXPECT_EQ(U8(untouched), "#");
    EXPECT_EQ(U8(Tools::GetBundleResourcePath(root.get())), "/Contents/Resources");
}

TEST(Bundle, PathsThatDoNotFitAreNeverCut)
{
    const TempFolder top;
    std::string name;
    while (top.Path().native().size() + name.size() < 1000)
        name += "/" + std::string(std::min<std::size_t>(200, 1009 - top.Path().native().size() - name.size()), 'x');
    fs::create_directories(top.Path() / name.substr(1));
    const CFHolder<CFBundleRef> bundle(Tools::CreateBundleByPath(top.Wide(name.substr(1))));
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(U8(Tools::GetBundleContentsPath(bundle.get())), top.Path().native() + name + "/Contents");
    EXPECT_EQ(U8(Tools::GetBundleResourcePath(bundle.get())), "");
    EXPECT_EQ(U8(Tools::GetBundleResourcePathWithName(bundle.get(), u"x")), "");
}

TEST(Bundle, ResourcesAreFoundBeforeTheirLocalisations)
{
    const TempFolder top;
    fs::create_directories(top.Path() / "Contents/Resources/ja.lproj/icons");
    top.Write("Contents/Resources/both.png");
    top.Write("Contents/Resources/ja.lproj/both.png");
    top.Write("Contents/Resources/ja.lproj/only");
    top.Write("Contents/Resources/ja.lproj/icons/sub.png");
    const std::string resources = (top.Path() / "Contents/Resources/").native();
    const CFHolder<CFBundleRef> bundle(Tools::CreateBundleByPath(top.Wide("")));
    EXPECT_EQ(Resource(bundle.get(), u"both.png"), resources + "both.png");
    EXPECT_EQ(Resource(bundle.get(), u"both", u"png"), resources + "both.png");
    EXPECT_EQ(Resource(bundle.get(), u"only"), resources + "ja.lproj/only");
    EXPECT_EQ(Resource(bundle.get(), u"sub", u"png", u"icons"), resources + "ja.lproj/icons/sub.png");
    EXPECT_EQ(Resource(bundle.get(), u"sub", u"png"), "none");
    EXPECT_EQ(Resource(nullptr, u"both.png"), "none");
}

TEST(Bundle, TheProgramsOwnBundleIsFoundByWhereItLies)
{
    const TempFolder top;
    const fs::path inside = top.Path() / "Tool.app/Contents/Linux/probe";
    const fs::path flat = top.Path() / "bin/probe";
    fs::create_directories(inside.parent_path());
    fs::create_directories(top.Path() / "Tool.app/Contents/Resources/ja.lproj");
    fs::create_directories(flat.parent_path());
    fs::copy_file(BUNDLE_PROBE, inside);
    fs::copy_file(BUNDLE_PROBE, flat);
    fs::create_symlink(inside, top.Path() / "link");
    const std::string bundle = (top.Path() / "Tool.app").native();
    const std::string expected =
        bundle + "/Contents\n" + bundle + "/Contents/Resources/ja.lproj\n1 " + top.Path().native() + "\n";
    EXPECT_EQ(OutputOf(inside), expected);
    EXPECT_EQ(OutputOf(top.Path() / "link"), expected);
    const std::string folder = flat.parent_path().native();
    EXPECT_EQ(OutputOf(flat), folder + "/Contents\n" + folder + "/Contents/Resources\n1 " + top.Path().native() + "\n");
}
