#pragma once

#include <DiskArbitration/Refusal.h>
#include <DiskArbitration/UDisks.h>
#include <Host/HostMounts.h>

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace da {

enum class Verb { Mount, Unmount, Eject, Rename };

/// What a disk is asked for.
struct Wish {
    Verb verb;
    bool isForWhole = false; ///< mount and unmount: all volumes of the disk
    bool isForced = false; ///< unmount
    std::string text {}; ///< mount: options, as mount has them; rename: the name
};

/// A medium that the wish is about.
struct Part {
    dev_t device;
    std::string deviceFile; ///< "/dev/sda1"
    std::optional<HostMount> mount {}; ///< of its volume, as the plan is made
};

/// One message to the disk service. After the text come options, always.
struct ServiceCall {
    std::string object; ///< its path
    const char* interface;
    const char* method;
    std::optional<std::string> text {}; ///< the argument before the options
    std::string mountOptions {}; ///< the option of that name; "" for none
    bool isForced = false; ///< likewise
    const Part* part; ///< that it is about
};

/// The calls that together fulfil a wish, in any order; or why there are none.
struct Plan {
    std::vector<ServiceCall> calls {};
    std::optional<Refusal> refusal {};
    const Part* busy = nullptr; ///< the part because of which it is refused; null for none
};

/// @param parts those that the wish may be about, at least one; the disk itself, or the whole one, is the first. They have
/// to outlive the plan.
Plan PlanFor(const Wish& wish, const std::vector<Part>& parts, const ServedObjects& service);

}
