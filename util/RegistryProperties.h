#pragma once

#include "util/CFRef.h"
#include <IOKit/IOKitLib.h>
#include <cstdint>
#include <optional>
#include <utility>

// Properties of registry entries and what is in them. For use inside util/ and its front end only.

/// Owns one reference to a registry entry or iterator.
class IORef {
public:
    IORef() = default;
    explicit IORef(io_object_t owned)
        : fObject(owned)
    {
    }
    IORef(IORef&& other) noexcept
        : fObject(other.release())
    {
    }
    IORef& operator=(IORef other) noexcept
    {
        std::swap(fObject, other.fObject);
        return *this;
    }
    ~IORef()
    {
        if (fObject != 0)
            IOObjectRelease(fObject);
    }

    io_object_t get() const { return fObject; }
    explicit operator bool() const { return fObject != 0; }
    [[nodiscard]] io_object_t release() { return std::exchange(fObject, 0); }
    /// For functions that answer a reference through a pointer. Only while it holds none.
    io_object_t* receive() { return &fObject; }

private:
    io_object_t fObject = 0;
};

/// The entry's own; null when it has none, and for null and 0.
CFRef<CFTypeRef> OwnProperty(io_registry_entry_t entry, CFStringRef key);

/// That of the entry or else of the nearest ancestor in the service plane that has one.
CFRef<CFTypeRef> SearchedProperty(io_registry_entry_t entry, CFStringRef key);

/// The member of a dictionary that SearchedProperty() finds; null as well when it has no such member or is none.
CFRef<CFTypeRef> SearchedMember(io_registry_entry_t entry, CFStringRef dictionary, CFStringRef key);

/// @return none for null and for what is no number.
std::optional<int64_t> NumberFrom(CFTypeRef value);

/// Whether the value is a string and this one.
bool IsString(CFTypeRef value, CFStringRef text);

/// Whether the value is a boolean and true.
bool IsTrue(CFTypeRef value);

/// Copies a string's ASCII text. @param buffer "" where that fails: for null, other types, other characters and texts that
/// are too long.
bool CopyASCII(CFTypeRef value, char* buffer, size_t size);

/// Zeroes a buffer. @param buffer null is left alone.
void Clear(char* buffer, size_t size);

/// Copies as much of a text as fits and ends it with a zero byte. @return whether all of it did. @param destination null and
/// 0 bytes are left alone.
bool CopyText(char* destination, const char* source, size_t size);
