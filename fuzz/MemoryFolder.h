#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

/// A folder in the memory of this machine, for as long as the fuzzer runs.
class MemoryFolder {
public:
    /// @param files empty ones to begin with, with the folders that they lie in.
    explicit MemoryFolder(const std::vector<std::string>& files)
    {
        if (mkdtemp(fPath.data()) == nullptr)
            std::abort();
        for (const std::string& file : files) {
            std::filesystem::create_directories(std::filesystem::path(fPath + '/' + file).parent_path());
            write(file, "", 0);
        }
    }
    ~MemoryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(fPath, ignored);
    }
    MemoryFolder(const MemoryFolder&) = delete;
    MemoryFolder& operator=(const MemoryFolder&) = delete;

    const std::string& path() const { return fPath; }
    /// Replaces a file. @param file below the folder.
    void write(const std::string& file, const void* bytes, size_t size) const
    {
        std::ofstream stream(fPath + '/' + file, std::ios::binary);
        stream.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
        if (!stream.flush())
            std::abort();
    }

private:
    std::string fPath = "/dev/shm/zek-fuzz-XXXXXX";
};
