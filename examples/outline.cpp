// Prints where the black pixels of a picture begin and end, and how large the fitting thumbnail is.
//   outline PICTURE

#include <cstdio>

#include <halyon/tools/CHynPubTools.h>

int main(int argc, char** argv)
{
    const CTovStringW path = CTovStringW::FromUTF8(argc > 1 ? argv[1] : "");
    Halyon::RgnHandle rgn = Halyon::CHynPubTools::CreateRgnFromFile(path);
    if (rgn == nullptr)
    {
        std::fprintf(stderr, "outline: no picture can be read from %s\n", path.ToUTF8().c_str());
        return 1;
    }
    Halyon::Rect bounds;
    Halyon::GetRegionBounds(rgn, &bounds);
    Halyon::DisposeRgn(rgn);
    std::int32_t width = bounds.right - bounds.left;
    std::int32_t height = bounds.bottom - bounds.top;
    Halyon::CHynPubTools::TLFitIn(&width, &height, 160, 160);
    std::printf("%d,%d to %d,%d; %d x %d\n", bounds.left, bounds.top, bounds.right, bounds.bottom, width, height);
}
