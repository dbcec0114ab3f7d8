#pragma once

#include <map>
#include <string>
#include <sys/types.h>

namespace da {

/// What has been found on a device. A text that is not there is "".
struct Contents {
    std::string label;
    std::string uuid; ///< or a shorter number
    std::string type; ///< of a file system, as the host names it: "vfat"; "" for anything else
};

/// Asks the host's disk service, unless it would have to be started for that. Waits at most two seconds in all.
/// @param systemBus address. @return by the numbers of the devices; empty when nobody answers.
std::map<dev_t, Contents> ContentsFromUDisks(const std::string& systemBus);

}
