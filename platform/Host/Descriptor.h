#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

/// Owns a file descriptor, or none. For use inside platform/ only.
class Descriptor {
public:
    /// @param descriptor now owned; negative, as the failed call that was to open it answers, for none.
    explicit Descriptor(int descriptor = -1)
        : fDescriptor(descriptor)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : fDescriptor(std::exchange(other.fDescriptor, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        if (this != &other) {
            close();
            fDescriptor = std::exchange(other.fDescriptor, -1);
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    explicit operator bool() const { return fDescriptor >= 0; }
    int get() const { return fDescriptor; }
    int release() { return std::exchange(fDescriptor, -1); }

    /// @return 0, or the errno with which writing earlier bytes failed. EINTR is no failure: the descriptor
    /// is gone.
    int close()
    {
        const int descriptor = release();
        return descriptor < 0 || ::close(descriptor) == 0 || errno == EINTR ? 0 : errno;
    }

private:
    int fDescriptor;
};
