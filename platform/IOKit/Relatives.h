#pragma once

#include <IOKit/IOTypes.h>
#include <IOKit/Registry.h>

#include <string>
#include <vector>

namespace iokit {

/// The entries around one, without itself, each once. @param options kIORegistryIterateRecursively, kIORegistryIterateParents.
/// @return depth first in the order of the plane: the children, or the parents, before which all of an earlier one's come.
std::vector<const Entry*> Relatives(const Entry& entry, Plane plane, IOOptionBits options);

/// @return "IOService:/name@location/…", which starts below the plane's first entry; "" for an entry outside of the plane.
std::string PathOf(const Registry& registry, const Entry& entry, Plane plane);

/// The entry of such a path; null for none.
const Entry* EntryAtPath(const Registry& registry, const std::string& path);

/// @param name may be null. @return null for a plane that there is not.
const Plane* PlaneNamed(const char* name);

}
