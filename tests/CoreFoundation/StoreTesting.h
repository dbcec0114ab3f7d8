#pragma once

#include "Values.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// A folder of its own, gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "cf-XXXXXX").string();
        fPath = mkdtemp(name.data());
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(fPath, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(const std::string& name = "") const { return name.empty() ? fPath : fPath + '/' + name; }
    bool has(const std::string& name) const { return std::filesystem::exists(path(name)); }

    /// Folders on the way are made.
    void write(const std::string& name, std::string_view bytes) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    std::string read(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return { std::istreambuf_iterator<char>(file), {} };
    }

private:
    std::string fPath;
};

/// Sets or removes a variable of the environment, until the object goes.
class Environment {
public:
    Environment(const char* name, const char* value)
        : fName(name)
    {
        if (const char* old = std::getenv(name))
            fOld = old;
        set(value);
    }
    ~Environment() { set(fOld ? fOld->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    void set(const char* value) { value ? setenv(fName, value, 1) : unsetenv(fName); }

    const char* fName;
    std::optional<std::string> fOld;
};

/// @return the path of the URL, which is released; "(null)" for null.
inline std::string TakenPath(CFURLRef url)
{
    const Held<CFURLRef> owned = Hold(url);
    return url ? Taken(CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle)) : "(null)";
}
