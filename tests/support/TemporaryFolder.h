#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder of its own, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = "/tmp/test-XXXXXX";
        fPath = mkdtemp(name.data());
        std::filesystem::permissions(fPath, std::filesystem::perms(0755));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(fPath, ignored);
    }

    std::string operator/(const std::string& name) const { return fPath + '/' + name; }
    const std::string& path() const { return fPath; }

private:
    std::string fPath;
};

inline void WriteText(const std::string& file, const std::string& text)
{
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string ReadText(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}
