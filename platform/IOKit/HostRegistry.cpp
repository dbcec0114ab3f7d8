#include <IOKit/HostRegistry.h>

#include <Host/HostText.h>
#include <IOKit/HostAttributes.h>
#include <IOKit/HostDisks.h>
#include <IOKit/Properties.h>

namespace iokit {

namespace {

constexpr size_t kUUIDDigits = 32;

/// The machine's id, 32 hexadecimal digits, in the form of a UUID; "" where it is none.
std::string MachineUUID(const std::string& path)
{
    std::string digits = Cleaned(HostText(path).value_or(""));
    if (digits.size() != kUUIDDigits)
        return "";
    for (const size_t place : { 20U, 16U, 12U, 8U }) // from the end, so that the others stay where they are
        digits.insert(place, 1, '-');
    return UUIDText(digits);
}

Entry& AddPlatformExpert(Registry& registry, const HostFolders& folders)
{
    const Attributes firmware(folders.sys + "/class/dmi/id");
    const std::string model = firmware.text("product_name");
    Properties properties;
    properties.textData("manufacturer", firmware.text("sys_vendor"))
        .textData("model", model)
        .textData("product-name", model)
        .text("IOPlatformSerialNumber", firmware.text("product_serial"))
        .text("IOPlatformUUID", MachineUUID(folders.machineID));
    const std::string className = "IOPlatformExpertDevice";
    return registry.add(registry.root(), className, model.empty() ? className : model, "", properties.take());
}

}

Registry ReadHostRegistry(const HostFolders& folders)
{
    Registry registry;
    AddHostDisks(registry, AddPlatformExpert(registry, folders), folders);
    return registry;
}

}
