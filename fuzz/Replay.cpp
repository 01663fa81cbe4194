// Runs a target once on each file of the folders and files that are named, without a fuzzer. A missing folder holds
// nothing: not every target has found a fault.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Input.h"

namespace fs = std::filesystem;

int main(int argc, char** argv)
{
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i)
    {
        if (fs::is_directory(argv[i]))
            std::copy(fs::directory_iterator(argv[i]), fs::directory_iterator(), std::back_inserter(files));
        else if (fs::exists(argv[i]))
            files.emplace_back(argv[i]);
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files)
    {
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        std::fprintf(stderr, "%s\n", file.c_str()); // the last one named is the one that failed
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
