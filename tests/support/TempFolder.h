// A folder of a test's own, gone with its content at the end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

#include <halyon/string/CTovStringW.h>

namespace HalyonTest
{
class TempFolder
{
public:
    // Below the system's folder for such things unless another one is given. Anyone may enter it.
    explicit TempFolder(const std::filesystem::path& below = std::filesystem::temp_directory_path())
    {
        std::string pattern = (below / "halyonXXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr || chmod(pattern.c_str(), 0755) != 0)
            throw std::runtime_error("no folder for the test");
        m_path = std::filesystem::canonical(pattern);
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }
    [[nodiscard]] CTovStringW Wide(const std::string& name) const
    {
        return CTovStringW::FromUTF8((m_path / name).native());
    }
    void Write(const std::string& name, const std::string& content = "x") const
    {
        std::ofstream(m_path / name) << content;
    }

private:
    std::filesystem::path m_path;
};
} // namespace HalyonTest
