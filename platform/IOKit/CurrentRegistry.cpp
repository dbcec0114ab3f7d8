#include <IOKit/CurrentRegistry.h>

#include <Host/HostPath.h>

#include <mutex>

namespace iokit {

namespace {

struct Current {
    std::mutex mutex {};
    std::unique_ptr<Source> source = std::make_unique<HostSource>();
    std::string version {};
    std::shared_ptr<const Registry> registry {}; ///< null until it is asked for
};

Current& TheCurrent()
{
    static auto* const current
        = new Current; // lives as long as the program: other objects may ask while they end
    return *current;
}

std::string DeviceFile(const std::string& bsdName) { return CurrentRegistry()->deviceFile(bsdName); }

/// Whoever links the registry has the devices under their BSD names.
const bool kDevicesAreFound = (HostFindDevicesWith(DeviceFile), true);

}

void UseSource(std::unique_ptr<Source> source)
{
    Current& current = TheCurrent();
    const std::lock_guard lock(current.mutex);
    current.source = std::move(source);
    current.registry.reset();
}

std::shared_ptr<const Registry> CurrentRegistry()
{
    Current& current = TheCurrent();
    const std::lock_guard lock(current.mutex);
    std::string version = current.source->version();
    if (!current.registry || version != current.version) {
        current.registry = current.source->read();
        current.version = std::move(version);
    }
    return current.registry;
}

}
