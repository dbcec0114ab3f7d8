#pragma once

#include <IOKit/Nvram.h>

#include <string>
#include <vector>

namespace iokit {

/// The variables of one vendor in the computer's firmware. Linux shows each as a file, attributes first, and guards most of
/// them with the immutable flag.
class EfiVariables {
public:
    static constexpr const char* kFolder = "sys/firmware/efi/efivars";
    static constexpr const char* kApple = "7c436110-ab2a-4bbb-a880-fe41995c9f82";
    static constexpr const char* kGlobal
        = "8be4df61-93ca-11d2-aa0d-00e098032b8c"; ///< what the firmware starts from

    /// @param vendor one of those.
    EfiVariables(HostTree host, std::string vendor);

    /// What is another text whenever there may be other variables.
    std::string version() const;
    std::vector<std::string> names() const;
    /// @return nothing where there is no such one.
    std::optional<std::string> value(const std::string& name) const;

    /// A new variable outlives restarts and is seen before and after the system starts; others keep their attributes.
    /// @param name, here and below, without slashes. @param value not empty: to the firmware that would mean to remove it.
    /// @return 0 or an errno.
    int set(const std::string& name, const std::string& value) const;
    int remove(const std::string& name) const;

private:
    std::string path(const std::string& name) const;

    HostTree fHost;
    std::string fEnding; ///< of the files' names
};

/// Apple's variables in the computer's firmware. It keeps no empty ones: EINVAL.
class NvramFirmware : public Nvram {
public:
    explicit NvramFirmware(const HostTree& host);

    std::string version() const override { return fFirmware.version(); }
    int read(NvramVariables& variables) const override;
    int clear() override;

private:
    int change(const std::string& name, const std::optional<std::string>& value) override;

    EfiVariables fFirmware;
};

}
