#include <IOKit/RecordedEntry.h>

#include <unordered_map>
#include <unordered_set>

namespace iokit {

namespace {

constexpr const char* kRootClass = "IORegistryEntry";

class Maker {
public:
    explicit Maker(size_t unreadable)
        : fRecording { Registry(), unreadable }
        , fUnusedID(fRecording.registry.root().id)
    {
    }

    Recording make(std::vector<RecordedEntry>& recorded)
    {
        fMade.assign(recorded.size(), nullptr);
        for (size_t i = 0; i < recorded.size(); ++i)
            add(recorded[i], i);
        numberTheRest();
        for (const auto& [entry, count] : fRetainCounts)
            entry->retainCount = count;
        fRecording.registry.completeDeviceTree();
        return std::move(fRecording);
    }

private:
    struct Step {
        size_t place; ///< in the list
        uint32_t index; ///< of the entry
    };

    void add(RecordedEntry& recorded, size_t place)
    {
        Entry* const parent = parentOf(recorded);
        if (parent == nullptr)
            return;
        leaveUpTo(recorded.parent);
        complete(recorded);
        Entry* const known = knownEntry(recorded);
        if (known != nullptr && isFurtherParent(*parent, *known, recorded)) {
            fRecording.registry.link(*parent, *known);
            return;
        }
        if (known != nullptr) {
            ++fRecording.unreadable;
            recorded.id.reset();
        }
        Entry& entry = place == 0 && isRoot(recorded) ? fillRoot(recorded) : append(*parent, recorded);
        setFacts(entry, recorded);
        fMade[place] = &entry;
        fWay.push_back({ place, entry.index });
        fIsOnWay.resize(entry.index + size_t { 1 });
        fIsOnWay[entry.index] = true;
        if (entry.index > 0)
            fLinks.insert(linkOf(*parent, entry));
    }

    /// @return null below what is there already.
    Entry* parentOf(const RecordedEntry& recorded)
    {
        return recorded.parent == RecordedEntry::kNone ? &fRecording.registry.root() : fMade[recorded.parent];
    }

    void leaveUpTo(size_t parent)
    {
        while (!fWay.empty() && fWay.back().place != parent) {
            fIsOnWay[fWay.back().index] = false;
            fWay.pop_back();
        }
    }

    void complete(RecordedEntry& recorded)
    {
        if (recorded.lineage.empty()) {
            ++fRecording.unreadable;
            recorded.lineage = kRootClass;
            recorded.isWhole = false;
        }
        if (recorded.name.empty()) // entries that nobody named have their class's name
            recorded.name = recorded.lineage.substr(0, recorded.lineage.find(':'));
    }

    Entry* knownEntry(const RecordedEntry& recorded) const
    {
        const auto known = recorded.id ? fKnown.find(*recorded.id) : fKnown.end();
        return known != fKnown.end() ? known->second : nullptr;
    }

    /// Whether it is told once more of `known`, for a parent that it can have besides those that it has.
    bool isFurtherParent(const Entry& parent, const Entry& known, const RecordedEntry& recorded)
    {
        const bool isSame = known.name == recorded.name && known.location == recorded.location
            && recorded.lineage.substr(0, recorded.lineage.find(':')) == known.objectClass->name;
        return isSame && known.index > 0 && !fIsOnWay[known.index]
            && fLinks.insert(linkOf(parent, known)).second;
    }

    static uint64_t linkOf(const Entry& parent, const Entry& child)
    {
        return uint64_t { parent.index } << 32U | child.index;
    }

    static bool isRoot(const RecordedEntry& recorded)
    {
        const bool isOfItsClass
            = recorded.lineage == kRootClass || recorded.lineage.starts_with("IORegistryEntry:");
        return isOfItsClass && (recorded.name == "Root" || recorded.name == kRootClass);
    }

    Entry& fillRoot(RecordedEntry& recorded)
    {
        Entry& root = fRecording.registry.root();
        root.location = std::move(recorded.location);
        if (recorded.properties)
            root.properties = std::move(recorded.properties);
        return root;
    }

    Entry& append(Entry& parent, RecordedEntry& recorded)
    {
        // Whatever is no service tells no state.
        const char* const origin = recorded.service || !recorded.isWhole ? "IOService" : kRootClass;
        const Class& objectClass = fRecording.registry.classes().learn(recorded.lineage, origin);
        return fRecording.registry.add(parent, objectClass.name, std::move(recorded.name),
            std::move(recorded.location), std::move(recorded.properties));
    }

    void setFacts(Entry& entry, const RecordedEntry& recorded)
    {
        if (recorded.service)
            entry.service = recorded.service;
        if (recorded.retainCount)
            fRetainCounts.emplace_back(&entry, *recorded.retainCount);
        if (recorded.id) {
            entry.id = *recorded.id;
            fKnown.emplace(entry.id, &entry);
        } else {
            fUnnumbered.push_back(&entry);
        }
    }

    void numberTheRest()
    {
        if (fMade.front() != &fRecording.registry.root())
            fUnnumbered.insert(fUnnumbered.begin(), &fRecording.registry.root());
        for (Entry* const entry : fUnnumbered) {
            while (fKnown.contains(fUnusedID))
                ++fUnusedID;
            entry->id = fUnusedID++;
        }
    }

    Recording fRecording;
    uint64_t fUnusedID; ///< or the next one after it that is not
    std::vector<Entry*> fMade; ///< for each in the list; null for those that are not looked at
    std::vector<Step> fWay; ///< to the entry added last
    std::vector<bool> fIsOnWay; ///< by the indexes of entries
    std::unordered_map<uint64_t, Entry*> fKnown; ///< by their numbers
    std::unordered_set<uint64_t> fLinks;
    std::vector<Entry*> fUnnumbered;
    std::vector<std::pair<Entry*, uint32_t>> fRetainCounts;
};

}

std::optional<Recording> MakeRecording(std::vector<RecordedEntry> entries, size_t unreadable)
{
    if (entries.empty())
        return {};
    return Maker(unreadable).make(entries);
}

}
