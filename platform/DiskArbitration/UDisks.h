#pragma once

#include <map>
#include <memory>
#include <string>
#include <sys/types.h>

struct sd_bus;
struct sd_bus_message;

// The host's disk service, as it tells about itself on the system bus.

namespace da {

constexpr const char* kDiskService = "org.freedesktop.UDisks2";

/// What has been found on a device. A text that is not there is "".
struct Contents {
    std::string label;
    std::string uuid; ///< or a shorter number
    std::string type; ///< of a file system, as the host names it: "vfat"; "" for anything else
};

struct ServedBlock {
    std::string object; ///< its path on the bus
    std::string drive; ///< the path of its drive's object; "/" for none
    bool hasFileSystem = false; ///< one that can be mounted
    bool isLoop = false; ///< it is backed by a file
    Contents contents {};
};

struct ServedDrive {
    bool isEjectable = false; ///< it lets go of its medium
    bool canPowerOff = false; ///< it can be unplugged when told so
};

struct ServedObjects {
    std::map<dev_t, ServedBlock> blocks {};
    std::map<std::string, ServedDrive> drives {}; ///< by the paths of their objects
};

struct ReleaseMessage {
    void operator()(sd_bus_message* message) const;
};
using Message = std::unique_ptr<sd_bus_message, ReleaseMessage>;

/// @param bus a connection. @return the question for all objects; null when it cannot be made.
Message QuestionForObjects(sd_bus* bus);
/// @param answer to that question. @return what is as it should be.
ServedObjects ReadObjects(sd_bus_message* answer);

/// Asks the host's disk service, unless it would have to be started for that. Waits at most two seconds in all.
/// @param systemBus address. @return nothing when nobody answers.
ServedObjects ObjectsFromUDisks(const std::string& systemBus);

}
