#pragma once

#include <IOKit/IOTypes.h>
#include <IOKit/Registry.h>

#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace iokit {

/// An entry that is sure to stay.
struct Held {
    std::shared_ptr<const Registry> registry;
    const Entry* entry = nullptr; ///< null for none

    explicit operator bool() const { return entry != nullptr; }
    const Entry* operator->() const { return entry; }
};

/// The objects that this program holds, by the numbers that it knows them under. Safe to use from all threads.
class References {
public:
    static References& shared();

    /// @return the number of an entry, with one reference more to be released; 0 for none.
    io_object_t hold(const Held& entry);
    /// @return the number of a new iterator over these entries of the registry.
    io_object_t iterate(std::shared_ptr<const Registry> registry, std::vector<const Entry*> entries);

    bool retain(io_object_t object); ///< false, here and below, for a number of nothing
    bool release(io_object_t object);
    UInt32 count(io_object_t object);

    /// @return none for an iterator as well.
    Held entry(io_object_t object);
    /// @return the next entry of an iterator; none at the end, and for what is no iterator.
    Held next(io_object_t iterator);
    /// Lets an iterator start anew.
    void reset(io_object_t iterator);

    /// How many references there are in all, so that a program can find out whether it keeps any.
    size_t total();

private:
    struct Object {
        std::shared_ptr<const Registry> registry;
        const Entry* entry; ///< null for an iterator
        std::vector<const Entry*> entries; ///< an iterator's
        size_t next;
        UInt32 count;
    };

    io_object_t add(Object object);
    Object* find(io_object_t object);

    std::mutex fMutex;
    std::unordered_map<io_object_t, Object> fObjects;
    std::unordered_map<const Entry*, io_object_t> fNumbers;
    io_object_t fLast = 0;
};

}
