#include "profile/SystemProfiler.h"

#include "profile/Item.h"
#include "profile/Reports.h"
#include "profile/TextForm.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <optional>

namespace {

using profile::Date;
using profile::Item;

constexpr const char* kTool = "system_profiler";

struct DataType {
    const char* name;
    const char* parent;
    const char* title;
    Item::List (*items)(const HostTree&);
    bool isLong = false; ///< comes in full reports only, unless it is asked for
};

constexpr const char* kRoot = "SPRootDataType";
constexpr const char* kHardware = "SPHardwareDataType";
constexpr const char* kSoftware = "SPSoftwareDataType";

constexpr std::array<DataType, 19> kDataTypes { {
    { kHardware, kRoot, "Hardware", profile::HardwareItems },
    { "SPPowerDataType", kHardware, "Power", profile::PowerItems },
    { "SPMemoryDataType", kHardware, "Memory", profile::MemoryItems },
    { "SPDisplaysDataType", kHardware, "Graphics/Displays", profile::DisplayItems },
    { "SPPCIDataType", kHardware, "PCI", profile::PciItems },
    { "SPThunderboltDataType", kHardware, "Thunderbolt", profile::ThunderboltItems },
    { "SPNVMeDataType", kHardware, "NVMExpress", profile::NvmeItems },
    { "SPFireWireDataType", kHardware, "FireWire", profile::FireWireItems },
    { "SPFibreChannelDataType", kHardware, "Fibre Channel", profile::FibreChannelItems },
    { "SPParallelSCSIDataType", kHardware, "Parallel SCSI", profile::ParallelScsiItems },
    { "SPSASDataType", kHardware, "SAS", profile::SasItems },
    { "SPSerialATADataType", kHardware, "SATA/SATA Express", profile::SataItems },
    { "SPUSBDataType", kHardware, "USB", profile::UsbItems },
    { "SPStorageDataType", kHardware, "Storage", profile::StorageItems },
    { kSoftware, kRoot, "Software", profile::SoftwareItems },
    { "SPExtensionsDataType", kSoftware, "Extensions", profile::ExtensionItems, true },
    { "SPApplicationsDataType", kSoftware, "Applications", profile::ApplicationItems, true },
    { "SPLogsDataType", kSoftware, "Logs", profile::LogItems, true },
    { "SPDiagnosticsDataType", kHardware, "Diagnostics", profile::DiagnosticItems },
} };

/// What tells whose computer it is.
constexpr std::array<const char*, 15> kPersonalKeys { "serial_number", "platform_UUID", "dimm_serial_number",
    "sppower_battery_serial_number", "spdisplays_display-serial-number", "switch_uid_key", "device_guid",
    "spfc_port_wwn", "spfc_node_wwn", "device_serial", "serial_num", "volume_uuid", "local_host_name",
    "user_name", "contents" };

struct Request {
    std::vector<const DataType*> types;
    std::string detail = "full";
    bool asXml = false;
    bool listsTypes = false;
    bool hasNames = false; ///< data types were asked for, known or not
};

const DataType* TypeNamed(const std::string& name)
{
    const auto* const found = std::find_if(
        kDataTypes.begin(), kDataTypes.end(), [&name](const DataType& type) { return type.name == name; });
    return found != kDataTypes.end() ? found : nullptr;
}

int Usage()
{
    std::cerr << "usage: system_profiler [-listDataTypes]\n"
                 "       system_profiler [-xml] [-timeout seconds] [-detailLevel mini | basic | full] [data "
                 "type ...]\n";
    return 1;
}

void AddType(Request& request, const std::string& name)
{
    request.hasNames = true;
    if (const DataType* const type = TypeNamed(name))
        request.types.push_back(type);
    else
        Complain(kTool, name + ": there is no such data type");
}

/// @return nothing when the arguments are not understood.
std::optional<Request> RequestIn(const Arguments& arguments)
{
    Request request;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const std::string next = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (argument == "-xml")
            request.asXml = true;
        else if (argument == "-listDataTypes")
            request.listsTypes = true;
        else if (argument == "-detailLevel" && (next == "mini" || next == "basic" || next == "full"))
            request.detail = arguments[++i];
        else if (argument == "-timeout" && NumberIn(next).value_or(-1) >= 0)
            ++i;
        else if (!argument.starts_with('-'))
            AddType(request, argument);
        else
            return {};
    }
    for (const DataType& type : kDataTypes) {
        if (!request.hasNames && (request.detail == "full" || !type.isLong))
            request.types.push_back(&type);
    }
    return request;
}

Item::List ItemsOf(const DataType& type, const Request& request, const HostTree& tree)
{
    Item::List items = type.items(tree);
    for (const char* const key : kPersonalKeys) {
        if (request.detail == "mini")
            std::for_each(items.begin(), items.end(), [key](Item& item) { item.remove(key); });
    }
    return items;
}

Item Report(const DataType& type, const Request& request, const Arguments& call, const HostTree& tree)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const Item::List items = ItemsOf(type, request, tree);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return Item()
        .put("_SPCommandLineArguments", call)
        .put("_SPCompletionInterval", seconds)
        .put("_SPResponseTime", seconds)
        .put("_dataType", type.name)
        .put("_items", items)
        .put("_parentDataType", type.parent)
        .put("_timeStamp", Date { std::time(nullptr) });
}

int WriteXml(const Request& request, const Arguments& arguments, const HostTree& tree, std::ostream& out)
{
    Arguments call { "/usr/sbin/system_profiler" };
    call.insert(call.end(), arguments.begin(), arguments.end());
    Item::List reports;
    for (const DataType* const type : request.types)
        reports.push_back(Report(*type, request, call, tree));
    return WritePropertyList(kTool, profile::PropertyListOf(reports).get(), out);
}

}

int SystemProfiler(const Arguments& arguments)
{
    return WriteSystemProfile(arguments, HostTree(), std::cout);
}

int WriteSystemProfile(const Arguments& arguments, const HostTree& tree, std::ostream& out)
{
    const std::optional<Request> request = RequestIn(arguments);
    if (!request)
        return Usage();
    if (request->listsTypes) {
        out << "Available Datatypes:\n";
        for (const DataType& type : kDataTypes)
            out << type.name << '\n';
        return 0;
    }
    const bool knowsNone = request->hasNames && request->types.empty();
    if (request->asXml)
        return WriteXml(*request, arguments, tree, out) != 0 || knowsNone ? 1 : 0;
    for (const DataType* const type : request->types)
        profile::WriteText(out, type->title, ItemsOf(*type, *request, tree));
    return knowsNone ? 1 : 0;
}
