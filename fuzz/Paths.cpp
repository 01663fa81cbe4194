// Paths as text: every operation on buffers of exactly the size that it asks for, and the laws between them.

#include <halyon/platform/TovPCMac.h>
#include <halyon/tools/CHynPathHelper.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Buffer;
using HalyonFuzz::Hold;

namespace
{
bool EndsInSlash(std::u16string_view text)
{
    return text.ends_with(u'/');
}

// One operation in place: on a buffer and, through the helper, on a string.
void ChangeInPlace(const std::u16string& path)
{
    Buffer added(path, 1);
    Hold(TovPathAddSlash(added) == (EndsInSlash(path) ? 0 : 1), "adding a separator tells whether there was none");
    Hold(EndsInSlash(added.Text()) && TovPathAddSlash(added) == 0, "a separator is added once");
    Hold(TovPathRemoveSlash(added) == (added.Text() != u"/" || path.size() > 1 ? 1 : 0) || path.size() <= 1,
         "what was added can be removed");
    if (!EndsInSlash(path) && !path.empty())
        Hold(added.Text() == path, "adding and removing a separator changes nothing");

    Buffer shorter(path, 0);
    std::u16string before = path;
    while (TovPathRemoveFileSpec(shorter) != 0)
    {
        const std::u16string after = shorter.Text();
        Hold(after.size() < before.size() && before.starts_with(after), "removing a component shortens at the end");
        before = after;
    }
    Hold(shorter.Text() == before && (before.empty() || before == u"/"), "without its components a path is / or empty");

    CTovStringW text(path.c_str());
    Buffer same(path, 1);
    Hold(CHynPathHelper::RemoveFileSpec(text) == TovPathRemoveFileSpec(same) && text == same.Text(),
         "strings and buffers lose the same component");
    CHynPathHelper::RemoveBacksplash(text);
    CHynPathHelper::AddBackslash(text);
}

void Join(const std::u16string& folder, const std::u16string& name)
{
    Buffer joined(folder, name.size() + 1);
    Hold(TovPathAppend(joined, name.c_str()) == 1, "a name can be appended");
    Hold(CHynPathHelper::MakeFullPath(folder.c_str(), name.c_str()) == joined.Text(), "both ways of joining agree");
    const std::size_t seam = joined.Text().size();
    Hold(seam <= folder.size() + name.size() + 1, "joining adds at most a separator");
    if (!folder.empty() && !name.empty() && name.find(u'/') == std::u16string::npos)
    {
        Hold(joined.Text().ends_with(u'/' + name), "the joined path ends in the name");
        Hold(CHynPathHelper::FindFileName(joined) == name, "the name of a joined path is the name");
    }
}

void TakeApart(const std::u16string& path)
{
    const Buffer buffer(path, 0);
    const char16_t* begin = buffer;
    const char16_t* end = begin + path.size();
    const char16_t* name = TovPathFindFileName(begin);
    const char16_t* extension = TovPathFindExtension(begin);
    Hold(begin <= name && name <= extension && extension <= end, "name and extension lie in the path, in this order");
    Hold(extension == end || *extension == u'.', "an extension begins with a dot");
    Hold(CHynPathHelper::FindExtension(begin) == extension, "both ways of finding the extension agree");
    const CTovStringW whole = CHynPathHelper::ReplaceUpLevelPath(begin, begin, u"/new");
    Hold(whole == u"/new", "a path is its own prefix");
    static_cast<void>(CHynPathHelper::IsUNC(begin));
    static_cast<void>(CHynPathHelper::IsRecycleBinFolder(begin));
    static_cast<void>(ExpandTildePath(CTovStringW(begin)));
}

void Compare(const std::u16string& a, const std::u16string& b)
{
    Buffer one(kTovPathUnits);
    Buffer other(kTovPathUnits);
    const int length = TovPathCommonPrefix(a.c_str(), b.c_str(), one);
    Hold(length == static_cast<int>(one.Text().size()), "the length is that of the common prefix");
    Hold(length == TovPathCommonPrefix(b.c_str(), a.c_str(), other) && one.Text() == other.Text(),
         "the common prefix does not depend on the order");
    Hold(a.starts_with(one.Text()) && b.starts_with(one.Text()), "the common prefix begins both");
    CTovStringW text;
    Hold(CHynPathHelper::CommonPrefix(a.c_str(), b.c_str(), text) == length && text == one.Text(),
         "the common prefix is the same as a string");

    Hold(CHynPathHelper::FileInSameFolder(a.c_str(), b.c_str()) ==
             CHynPathHelper::FileInSameFolder(b.c_str(), a.c_str()),
         "to lie in the same folder does not depend on the order");
    const int nested = CHynPathHelper::PathInPath(a.c_str(), b.c_str());
    Hold(nested >= -2 && nested <= 1, "nesting has four answers");
    const int reversed = CHynPathHelper::PathInPath(b.c_str(), a.c_str());
    Hold(nested == -2 || nested == 0 ? reversed == nested : reversed == -nested, "nesting turns round with the order");
    static_cast<void>(CHynPathHelper::ReplaceUpLevelPath(a.c_str(), b.c_str(), u"x"));
}

// What asks the file system, without a change to it.
void Ask(const std::u16string& a, const std::u16string& b)
{
    Buffer driver(kTovPathUnits);
    const int hasDriver = TovGetPathDriver(a.c_str(), driver);
    Hold(hasDriver == (driver.Text().empty() ? 0 : 1), "a volume has a folder, the startup volume none");
    Hold(a.starts_with(driver.Text()), "the volume's folder begins the path");
    Hold(CHynPathHelper::GetPathDriver(a.c_str()) == driver.Text(), "both ways of finding the volume agree");
    static_cast<void>(CHynPathHelper::GetRelativePath(a.c_str()));
    static_cast<void>(CHynPathHelper::GetFileRelativePath(a.c_str()));
    Hold((CHynPathHelper::IsSameRoot(a.c_str(), b.c_str()) != 0) ==
             (CHynPathHelper::IsSameRoot(b.c_str(), a.c_str()) != 0),
         "to lie on the same volume does not depend on the order");
    static_cast<void>(CHynPathHelper::IsRoot(a.c_str()));
    Hold(CHynPathHelper::IsDirectory(a.c_str()) == 0 || CHynPathHelper::IsFileExists(a.c_str()) != 0,
         "a folder that is there exists");
    static_cast<void>(CHynPathHelper::IsReadOnlyFile(a.c_str()));
    const std::uint32_t kind = TovGetDriveType(a.c_str());
    Hold(kind >= kTovDriveUnknown && kind <= kTovDriveMemory, "a kind of volume is one of the known");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HalyonFuzz::Input input(data, size);
    const std::u16string a = input.TakeText();
    const std::u16string b = input.TakeText();
    ChangeInPlace(a);
    Join(a, b);
    TakeApart(a);
    Compare(a, b);
    if (!input.IsEmpty()) // takes its time
        Ask(a, b);
    return 0;
}
