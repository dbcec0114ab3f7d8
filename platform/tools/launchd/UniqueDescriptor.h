#pragma once

#include <unistd.h>

#include <utility>

namespace launchd {

/// Owns one file descriptor and closes it; -1 owns nothing.
class UniqueDescriptor {
public:
    explicit UniqueDescriptor(int descriptor = -1)
        : fDescriptor(descriptor)
    {
    }
    UniqueDescriptor(UniqueDescriptor&& other) noexcept
        : fDescriptor(std::exchange(other.fDescriptor, -1))
    {
    }
    UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept
    {
        std::swap(fDescriptor, other.fDescriptor);
        return *this;
    }
    UniqueDescriptor(const UniqueDescriptor&) = delete;
    UniqueDescriptor& operator=(const UniqueDescriptor&) = delete;
    ~UniqueDescriptor() { reset(); }

    int get() const { return fDescriptor; }
    explicit operator bool() const { return fDescriptor >= 0; }
    void reset()
    {
        if (fDescriptor >= 0)
            close(fDescriptor);
        fDescriptor = -1;
    }

private:
    int fDescriptor;
};

} // namespace launchd
