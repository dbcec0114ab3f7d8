#pragma once

#include <unistd.h>
#include <utility>

/// Owns one open file descriptor and closes it at the end of its scope. Files that were written are flushed
/// with fsync before, so that close has nothing left to report.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int owned)
        : fDescriptor(owned)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : fDescriptor(std::exchange(other.fDescriptor, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(fDescriptor, other.fDescriptor);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor()
    {
        if (fDescriptor >= 0)
            close(fDescriptor);
    }

    int get() const { return fDescriptor; }
    explicit operator bool() const { return fDescriptor >= 0; }

private:
    int fDescriptor = -1;
};
