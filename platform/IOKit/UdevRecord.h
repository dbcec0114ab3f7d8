#pragma once

#include <map>
#include <string>

namespace iokit {

/// What udev found out about a device, from its database. Nothing where there is no udev or it does not know the device.
class UdevRecord {
public:
    UdevRecord() = default;
    /// @param folder of the database, "/run/udev/data". @param deviceNumbers of a block device, "8:0".
    UdevRecord(const std::string& folder, const std::string& deviceNumbers);

    bool isKnown() const { return !fValues.empty(); }
    /// @return the property; "" where it is not there. In those whose names end in "_ENC" or "_NAME" characters are
    /// written as "\x20", which is undone.
    std::string operator[](const std::string& name) const;

private:
    std::map<std::string, std::string> fValues;
};

}
