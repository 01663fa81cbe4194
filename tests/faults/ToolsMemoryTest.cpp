// Paths, bundles, files and dates without memory: a result is right or empty, never part of the right one.
#include <tests/faults/Operations.h>

#include <deque>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include <halyon/platform/BaseFunction.h>
#include <halyon/platform/CFHolder.h>
#include <halyon/tools/CHynPathHelper.h>
#include <halyon/tools/CHynPubTools.h>
#include <halyon/tools/CHynVersionHelper.h>

#include <tests/support/Environment.h>
#include <tests/support/TempFolder.h>

#ifdef HALYON_SANITIZED
// ICU's matcher of languages, when it could not be built, frees what it never had: it is not destroyed then, and what
// it got is lost.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions()
{
    return "leak:LocaleMatcher::Builder::build\n";
}
#endif

using namespace Halyon;
using namespace HalyonTest;
using Paths = CHynPathHelper;
using Tools = CHynPubTools;

namespace
{
// A bundle with two localisations, of which the user speaks the one that is not the first.
struct Bundle
{
    Bundle()
    {
        for (const char* folder : {"en", "ja"})
            std::filesystem::create_directories(folderOf.Path() / "Contents/Resources" /
                                                (std::string(folder) + ".lproj"));
        folderOf.Write("file");
        environment.Set("LC_ALL", nullptr);
        environment.Set("LANGUAGE", "ja");
    }

    TempFolder folderOf;
    Environment environment;
};

struct ToolsWorld
{
    // Right, or empty for want of memory; without a list of its localisations a bundle has none.
    HynResult Is(const CTovStringW& path, const CTovStringW& right, const CTovStringW& fallback = {}) const
    {
        return IsEither(path == right, path.IsEmpty() || path == fallback);
    }
    HynResult Is(const CTovStringW& path, const char16_t* right) const
    {
        return IsEither(path == right, path.IsEmpty());
    }

    static Bundle& Files()
    {
        static Bundle s_bundle;
        return s_bundle;
    }

    CTovStringW folder = CTovStringW::FromUTF8(Files().folderOf.Path().native());
    CTovStringW resources = folder + u"/Contents/Resources";
    CTovStringW japanese = resources + u"/ja.lproj";
    CTovStringW ui = japanese + u"/UI";
    CTovStringW fallbackUI = resources + u"/UI";
    CTovStringW file = folder + u"/file";
    CTovStringW root = ExpandTildePath(u"/");
    CFHolder<CFBundleRef> bundle{Tools::CreateBundleByPath(folder)};
    CTovStringW contents = folder + u"/Contents";
    CTovStringW expanded = root + u"a/b";
    CTovStringW changed = u"/a/b";

    // What the C library keeps of its zone is as it was again.
    ToolsWorld() = default;
    ToolsWorld(const ToolsWorld&) = delete;
    ToolsWorld& operator=(const ToolsWorld&) = delete;
    ~ToolsWorld() { TovTimeZoneChanged(); }
};

FILETIME Moment()
{
    FILETIME moment = {};
    Tools::ConvertToFileTime(&moment, 0.0);
    return moment;
}

void Renew(ToolsWorld& world)
{
    world.changed = u"/a/b";
}

using Op = Operation<ToolsWorld>;
constexpr Op::Failing kRenewed = {{HYN_E_FAIL, HYN_E_FAIL}, Renew};
// ICU's matcher of languages loses what it has when it gets no more.
constexpr Op::Failing kMatched = {{HYN_E_FAIL, HYN_E_FAIL}, nullptr, 16};
#define HYN_IS(name, ...) Op(name, []([[maybe_unused]] ToolsWorld& world) { return world.Is(__VA_ARGS__); })
#define HYN_MATCHED(name, ...) Op(name, kMatched, [](ToolsWorld& world) { return world.Is(__VA_ARGS__); })
#define HYN_DO(name, ...) Op(name, kRenewed, []([[maybe_unused]] ToolsWorld& world) { __VA_ARGS__ })

const Op kPaths[] = {
    HYN_DO("AddBackslash", Paths::AddBackslash(world.changed);
           return IsEither(world.changed == u"/a/b/", world.changed == u"/a/b");),
    HYN_DO("RemoveBacksplash", world.changed = u"/a/"; const bool isReady = !world.changed.IsEmpty();
           Paths::RemoveBacksplash(world.changed);
           return IsEither(world.changed == u"/a", world.changed == (isReady ? u"/a/" : u""));),
    HYN_DO("RemoveFileSpec", const int removed = Paths::RemoveFileSpec(world.changed);
           return IsEither(removed == 1 && world.changed == u"/a", removed == 0 && world.changed == u"/a/b");),
    HYN_IS("MakeFullPath", Paths::MakeFullPath(u"/a", u"b"), u"/a/b"),
    HYN_IS("FindExtension", Paths::FindExtension(u"/a/b.c"), u".c"),
    HYN_IS("FindFileName", Paths::FindFileName(u"/a/b.c"), u"b.c"),
    HYN_DO("CommonPrefix", CTovStringW prefix; const int length = Paths::CommonPrefix(u"/a/b", u"/a/c", prefix);
           return IsEither(length == 2 && prefix == u"/a", length == 0 && prefix.IsEmpty());),
    HYN_IS("ReplaceUpLevelPath", Paths::ReplaceUpLevelPath(u"/a/b", u"/a", u"/x"), u"/x/b"),
    HYN_IS("ExpandTildePath", ExpandTildePath(world.changed), world.expanded),
    HYN_DO("FileInSameFolder", return IsDone(Paths::FileInSameFolder(u"/a/b", u"/a/c"));),
    HYN_DO("PathInPath", const int nesting = Paths::PathInPath(u"/usr/bin", world.root);
           return IsEither(nesting == -1, nesting == 0);),
    HYN_IS("GetPathDriver", Paths::GetPathDriver(u"/proc/1"), u"/proc"),
    HYN_IS("GetRelativePath", Paths::GetRelativePath(u"/proc/1/x"), u"/1/x/"),
    HYN_IS("GetFileRelativePath", Paths::GetFileRelativePath(u"/proc/1/x"), u"/1/"),
    HYN_DO("IsDirectory and IsFileExists",
           return IsDone(Paths::IsDirectory(world.folder) == 1 && Paths::IsFileExists(world.file) == 1);),
    HYN_DO("IsRoot", const int isRoot = Paths::IsRoot(u"/proc"); return IsEither(isRoot == 1, isRoot == 0);),
    HYN_DO("IsSameRoot", const int isSame = Paths::IsSameRoot(u"/proc/1", u"/proc");
           return IsEither(isSame == 1, isSame == 0);),
    HYN_DO("IsSameRoot of two", return IsDone(Paths::IsSameRoot(u"/proc/1", u"/") == 0);),
    HYN_DO("IsValidScanFolder of the system's", return IsDone(!Paths::IsValidScanFolder(u"/usr/bin"));),
    HYN_DO("IsReadOnlyFile", const int isReadOnly = Paths::IsReadOnlyFile(world.file);
           return IsEither(isReadOnly == 0, isReadOnly == 1);),
};

const Op kBundles[] = {
    HYN_IS("GetBundleContentsPath", Tools::GetBundleContentsPath(world.bundle.get()), world.contents),
    HYN_IS("GetBundleResourcePath", Tools::GetBundleResourcePath(world.bundle.get()), world.resources),
    HYN_MATCHED("GetBundleLocalizePath", Tools::GetBundleLocalizePath(world.bundle.get()), world.japanese,
                world.resources),
    HYN_MATCHED("GetBundleLocalizeUIPath", Tools::GetBundleLocalizeUIPath(world.bundle.get()), world.ui,
                world.fallbackUI),
    HYN_IS("GetResourcePathFromBundlePath", Tools::GetResourcePathFromBundlePath(world.folder), world.resources),
    HYN_MATCHED("GetLocalizePathFromBundlePath", Tools::GetLocalizePathFromBundlePath(world.folder), world.japanese,
                world.resources),
    HYN_IS("GetBundleResourcePathWithName", Tools::GetBundleResourcePathWithName(world.bundle.get(), u"ja.lproj"),
           world.japanese),
    HYN_DO("GetModuleUIPath", char16_t path[1024] = {};
           const int found = Tools::GetModuleUIPath(world.bundle.get(), path);
           return IsEither(found == 1 && std::u16string_view(path).ends_with(u"/UI"), found == 0 && path[0] == 0);),
    HYN_DO("a resource", const CFHolder<CFStringRef> name(CFStringCreateWithCharacters(nullptr, u"ja.lproj", 8));
           const CFHolder<CFURLRef> url(CFBundleCopyResourceURL(world.bundle.get(), name.get(), nullptr, nullptr));
           return IsEither(url != nullptr, true);),
};

const Op kOthers[] = {
    HYN_DO("DeleteFile", const int deleted = Tools::DeleteFile(world.folder, nullptr, 0, 0);
           return IsDone(deleted == 0);), // it has content
    HYN_DO("FileTimeToString", const FILETIME moment = Moment();
           const CTovStringW text = Tools::FileTimeToString(u"%04d-%02d-%02d %02d:%02d:%02d", &moment);
           return IsEither(text.GetLength() == 19, text.IsEmpty());),
    HYN_DO("dates", FILETIME moment = Moment(); Tools::ConvertToFileTimeDW(&moment, 20240229);
           return IsDone(Tools::ConvertFromFileTimeDW(&moment) == 20240229);),
    HYN_DO("reading the zone again", TovTimeZoneChanged(); FILETIME moment = Moment();
           Tools::ConvertToFileTimeDW(&moment, 20240229);
           return IsDone(Tools::ConvertFromFileTimeDW(&moment) == 20240229);),
    HYN_DO("versions", tagHYN_VERSION version = {};
           return IsDone(CHynVersionHelper::GetVersion(u"1.2.3.4", version) == 1 && version.fourth == 4);),
};

// A user's own trash, on the file's volume.
struct TrashWorld
{
    TrashWorld()
    {
        std::filesystem::remove_all(Top() / "Trash");
        std::ofstream(file) << "kept";
        EXPECT_EQ(FSPathMakeRef(file.c_str(), &ref, nullptr), noErr);
    }

    // Always the same: the C library keeps every value that a variable ever had.
    static const std::filesystem::path& Top()
    {
        static const TempFolder s_folder;
        static Environment s_environment;
        s_environment.Set("XDG_DATA_HOME", s_folder.Path().c_str());
        return s_folder.Path();
    }

    const std::string file = Top() / "file";
    const std::string moved = Top() / "Trash/files/file";
    const std::string record = Top() / "Trash/info/file.trashinfo";
    FSRef ref = {};
};

const Operation<TrashWorld> kTrash[] = {
    {"the trash",
     [](TrashWorld& world)
     {
         const OSStatus status = FEMoveFilesToTrash(1, &world.ref);
         const auto isThere = [](const std::string& path)
         {
             return access(path.c_str(), F_OK) == 0;
         };
         const bool isMoved = !isThere(world.file) && isThere(world.moved) && isThere(world.record);
         const bool isLeft = isThere(world.file) && !isThere(world.moved) && !isThere(world.record);
         return IsEither(status == noErr && isMoved, status == memFullErr && isLeft);
     }},
};

TEST(ToolsMemory, AResultIsRightOrEmptyWithoutIt)
{
    FailEachAllocation("paths", kPaths);
    FailEachAllocation("bundles", kBundles);
    FailEachAllocation("files and dates", kOthers);
    FailEachAllocation("trash", kTrash);
}
} // namespace
