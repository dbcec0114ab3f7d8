#include <IOKit/HostRegistry.h>

#include <Host/Computer.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/HostDisks.h>
#include <IOKit/HostNetwork.h>
#include <IOKit/Nvram.h>
#include <IOKit/Properties.h>

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace iokit {

namespace {

/// The models that programs may take the computer for, each with a null at the end; as a rule only its own.
std::string CompatibleModels(const HostTree& host, const std::string& model)
{
    const std::string told = host.bytes("sys/firmware/devicetree/base/compatible");
    return !told.empty() || model.empty() ? told : model + '\0';
}

Entry& AddPlatformExpert(Registry& registry, const HostTree& host)
{
    const auto firmware
        = [&host](const char* name) { return Told(host.text(std::string("sys/class/dmi/id/") + name)); };
    const std::string model = ComputerModel(host);
    Properties properties;
    properties.data("compatible", CompatibleModels(host, model))
        .textData("version", firmware("product_version"))
        .textData("board-id", firmware("board_name"))
        .textData("manufacturer", firmware("sys_vendor"))
        .textData("model", model)
        .textData("product-name", model)
        .text("IOPlatformSerialNumber", ComputerSerialNumber(host))
        .text("IOPlatformUUID", ComputerUUID(host));
    const std::string className = "IOPlatformExpertDevice";
    return registry.add(registry.root(), className, model.empty() ? className : model, "", properties.take());
}

void AddOptions(Registry& registry, Entry& computer, const HostTree& host)
{
    NvramVariables variables;
    StartupVolumesNvram(host)->read(variables);
    registry.add(computer, "IODTNVRAM", "options", "", NvramProperties(variables));
}

}

Registry ReadHostRegistry(const HostTree& host, uint64_t firstID)
{
    Registry registry(firstID);
    Entry& computer = AddPlatformExpert(registry, host);
    HostDevices devices(registry, computer, host);
    AddHostDisks(registry, computer, devices, host);
    AddHostNetwork(registry, computer, devices, host);
    AddOptions(registry, computer, host);
    registry.completeDeviceTree();
    return registry;
}

/// The kernel counts the news of its devices; udev writes down what it finds out about them a little later. The firmware's
/// variables are nobody's news.
std::string HostSource::version()
{
    if (!fNews)
        fNews = Descriptor(
            open(fHost.path("sys/kernel/uevent_seqnum").c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::array<char, 24> count {};
    (void)!pread(fNews.get(), count.data(), count.size() - 1, 0);
    struct stat status { };
    stat(fHost.path("run/udev/data").c_str(), &status);
    return std::string(count.data()) + std::to_string(status.st_mtim.tv_sec) + '.'
        + std::to_string(status.st_mtim.tv_nsec) + ' ' + StartupVolumesNvram(fHost)->version();
}

std::shared_ptr<const Registry> HostSource::read()
{
    auto registry = std::make_shared<const Registry>(ReadHostRegistry(fHost, fNextID));
    fNextID += registry->entries().size();
    return registry;
}

}
