#pragma once

#include <CoreFoundation/CFBase.h>

#include <bit>
#include <cstdint>
#include <vector>

namespace cf {

/// Finds the places of entries in an array of theirs by their hashes: a table of numbers with linear probing,
/// at most half full. It stores no entries and knows neither their keys nor how these are compared.
class HashIndex {
public:
    static constexpr uint32_t kNone = UINT32_MAX;

    /// @param isWanted asked about each place that may be right. @return the place, or kNone.
    template <class IsWanted> uint32_t find(CFHashCode hash, IsWanted isWanted) const
    {
        if (fSlots.empty())
            return kNone;
        for (size_t slot = home(hash); fSlots[slot] != kNone; slot = next(slot)) {
            if (isWanted(fSlots[slot]))
                return fSlots[slot];
        }
        return kNone;
    }

    void clear() { fSlots.clear(); }
    bool hasRoomFor(size_t count) const { return count * 2 <= fSlots.size(); }

    /// Makes it anew, with room for twice as many. @param hashOf the hash of the entry at each place 0 …
    /// count.
    template <class HashOf> void rebuild(uint32_t count, HashOf hashOf)
    {
        fSlots.assign(std::bit_ceil(size_t { 4 } * count), kNone);
        for (uint32_t place = 0; place < count; place++)
            insert(hashOf(place), place);
    }

    /// Only with room.
    void insert(CFHashCode hash, uint32_t place)
    {
        size_t slot = home(hash);
        while (fSlots[slot] != kNone)
            slot = next(slot);
        fSlots[slot] = place;
    }

    /// The entry at `from` has moved to `to`.
    void move(CFHashCode hash, uint32_t from, uint32_t to) { fSlots[slotOf(hash, from)] = to; }

    /// @param hashOf as above, still answering for `place`.
    template <class HashOf> void erase(uint32_t place, HashOf hashOf)
    {
        size_t hole = slotOf(hashOf(place), place);
        // Closes the gap, so that no later entry of the run is cut off from its home.
        for (size_t slot = next(hole); fSlots[slot] != kNone; slot = next(slot)) {
            const size_t wanted = home(hashOf(fSlots[slot]));
            const bool mayStay
                = ((slot - wanted) & (fSlots.size() - 1)) < ((slot - hole) & (fSlots.size() - 1));
            if (mayStay)
                continue;
            fSlots[hole] = fSlots[slot];
            hole = slot;
        }
        fSlots[hole] = kNone;
    }

private:
    // Hashes of addresses and small numbers differ little in their low bits; multiplying spreads them, and
    // the product's high bits depend on all of them.
    size_t home(CFHashCode hash) const
    {
        constexpr uint64_t golden = 0x9e3779b97f4a7c15;
        return (hash * golden) >> (64 - std::countr_zero(fSlots.size()));
    }
    size_t next(size_t slot) const { return (slot + 1) & (fSlots.size() - 1); }
    size_t slotOf(CFHashCode hash, uint32_t place) const
    {
        size_t slot = home(hash);
        while (fSlots[slot] != place)
            slot = next(slot);
        return slot;
    }

    std::vector<uint32_t> fSlots; ///< a power of two of them, or none
};

}
