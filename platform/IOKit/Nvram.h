#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/Runtime.h>
#include <Host/HostTree.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace iokit {

/// Variables by their names. Values are any bytes, mostly text.
using NvramVariables = std::map<std::string, std::string>;

/// Where the variables of the computer's firmware are kept, which outlive a restart. Failures are told by an errno.
class Nvram {
public:
    static constexpr size_t kLongestValue = size_t { 60 } * 1024; ///< bytes

    Nvram() = default;
    Nvram(const Nvram&) = delete;
    Nvram& operator=(const Nvram&) = delete;
    virtual ~Nvram() = default;

    /// What is another text whenever there may be other variables.
    virtual std::string version() const = 0;

    /// @return 0; EBADMSG where what is kept is damaged; any other reason why it cannot be read. Then there are none.
    virtual int read(NvramVariables& variables) const = 0;
    /// @return 0; EINVAL for what IsNvramName() denies, and for values that are too long; any other reason.
    int set(const std::string& name, const std::string& value);
    /// @return 0; ENOENT where there is no such one; any other reason.
    int remove(const std::string& name);
    /// Removes all of them.
    virtual int clear() = 0;

private:
    /// @param value nothing to remove it.
    virtual int change(const std::string& name, const std::optional<std::string>& value) = 0;
};

/// Whether variables may have the name: printable ASCII without blanks, slashes and equals signs, at most 64 of them.
bool IsNvramName(std::string_view name);

/// The variables as properties: what is printable ASCII as strings, else data.
cf::Owned<CFDictionaryRef> NvramProperties(const NvramVariables& variables);

/// Whether the start-up volume's variables are those of the computer's own firmware: the volume is the system's, and the
/// kernel shows them.
bool IsNvramFirmwares(const HostTree& host = HostTree());
/// The start-up volume's variables: the firmware's own, or else a file on the volume.
std::unique_ptr<Nvram> StartupVolumesNvram(const HostTree& host = HostTree());

}
