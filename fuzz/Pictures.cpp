// Picture files into regions and icons, by whatever plug-ins the toolkit has.

#include <QImageReader>

#include <halyon/tools/CHynIconHelper2.h>
#include <halyon/tools/CHynPubTools.h>
#include <tests/support/TempFolder.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
void Draw(const FSRef& ref)
{
    BitMap map;
    if (GraphicsImportDraw(&ref, &map) != noErr)
        return;
    const std::size_t width = static_cast<std::size_t>(map.bounds.right - map.bounds.left);
    const auto height = static_cast<std::size_t>(map.bounds.bottom - map.bounds.top);
    Hold(map.bounds.left == 0 && map.bounds.top == 0 && map.uRowWords * 64 >= width, "a row has room for its pixels");
    for (std::size_t y = 0; y < height && width % 64 != 0; ++y)
        Hold(map.spWords[y * map.uRowWords + width / 64] >> (width % 64) == 0, "no pixel is set behind the last");
}

void MakeRegion(const char16_t* path)
{
    const RgnHandle region = CHynPubTools::CreateRgnFromFile(path);
    if (region == nullptr)
        return;
    Rect bounds = {};
    GetRegionBounds(region, &bounds);
    Hold(bounds.left >= 0 && bounds.top >= 0 && bounds.left <= bounds.right && bounds.top <= bounds.bottom,
         "a region lies where the picture does");
    DisposeRgn(region);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const HalyonTest::TempFolder folder;
    QImageReader::setAllocationLimit(16);
    folder.Write("picture", std::string(reinterpret_cast<const char*>(data), size));
    FSRef ref = {};
    Hold(FSPathMakeRef((folder.Path() / "picture").c_str(), &ref, nullptr) == noErr, "the file can be named");
    Draw(ref);
    MakeRegion(folder.Wide("picture"));
    CHynIconHelper2::DestroyIcon(CHynIconHelper2::CreateIconFromFile(&ref));
    return 0;
}
