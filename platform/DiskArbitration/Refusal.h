#pragma once

#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DADissenter.h>

#include <string>
#include <systemd/sd-bus.h>

namespace da {

/// Why something was not done.
struct Refusal {
    DAReturn status = kDAReturnError;
    std::string sentence {}; ///< for people; "" for none
    pid_t process = 0; ///< that holds the volume; 0 for none, or none that is known
};

/// @param error of the disk service or of the bus.
Refusal RefusalFrom(const sd_bus_error& error);

cf::Owned<DADissenterRef> MakeDissenter(const Refusal& refusal);

}
