#include <IOKit/HostRegistry.h>

#include <Host/Computer.h>
#include <IOKit/HostDisks.h>
#include <IOKit/Properties.h>

namespace iokit {

namespace {

Entry& AddPlatformExpert(Registry& registry, const HostTree& host)
{
    const std::string model = ComputerModel(host);
    Properties properties;
    properties.textData("manufacturer", Told(host.text("sys/class/dmi/id/sys_vendor")))
        .textData("model", model)
        .textData("product-name", model)
        .text("IOPlatformSerialNumber", ComputerSerialNumber(host))
        .text("IOPlatformUUID", ComputerUUID(host));
    const std::string className = "IOPlatformExpertDevice";
    return registry.add(registry.root(), className, model.empty() ? className : model, "", properties.take());
}

}

Registry ReadHostRegistry(const HostTree& host)
{
    Registry registry;
    AddHostDisks(registry, AddPlatformExpert(registry, host), host);
    return registry;
}

}
