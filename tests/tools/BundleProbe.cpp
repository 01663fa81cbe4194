// Prints the folders of the bundle that it lies in.

#include <cstdio>

#include <halyon/tools/CHynPubTools.h>

using Halyon::CHynPubTools;

int main()
{
    char16_t module[1024] = {};
    const int found = CHynPubTools::GetModulePath(nullptr, module);
    std::printf("%s\n%s\n%d %s\n", CHynPubTools::GetBundleContentsPath(nullptr).ToUTF8().c_str(),
                CHynPubTools::GetBundleLocalizePath(nullptr).ToUTF8().c_str(), found,
                CTovStringW(module).ToUTF8().c_str());
}
