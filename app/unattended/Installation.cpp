#include "app/unattended/Installation.h"

#include "app/AppControllerBase.h"
#include "install/AgentInstaller.h"
#include "install/DriverInterface.h"
#include "settings/Preferences.h"
#include "util/CFText.h"
#include "util/Launch.h"

#include <Host/HostPath.h>
#include <charconv>
#include <cstdio>
#include <memory>
#include <sys/stat.h>

namespace {

bool Exists(const std::string& path)
{
    struct stat item { };
    return lstat(path.c_str(), &item) == 0;
}

/// What a file holds, as far as it can be read; what is cut short is no property list any more.
std::string ReadFile(const std::string& path)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    std::string bytes;
    char buffer[4096];
    size_t count = 0;
    while (file && (count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0)
        bytes.append(buffer, count);
    return bytes;
}

CFRef<CFPropertyListRef> ReadPropertyList(const std::string& path)
{
    const std::string bytes = ReadFile(path);
    const CFRef<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
    return CFRef<CFPropertyListRef>(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

Installation::LaunchAgent ReadLaunchAgent(const std::string& path, CFDictionaryRef expected)
{
    if (!Exists(path))
        return Installation::LaunchAgent::absent;
    const CFRef<CFPropertyListRef> stored = ReadPropertyList(path);
    return stored && expected != nullptr && CFEqual(stored.get(), expected)
        ? Installation::LaunchAgent::whole
        : Installation::LaunchAgent::damaged;
}

/// The process id in what "launchctl list LABEL" prints; 0 when the job has none.
int64_t ProcessInListing(const std::string& listing)
{
    constexpr std::string_view key = "\"PID\" = ";
    const size_t at = listing.find(key);
    int64_t process = 0;
    if (at != std::string::npos)
        std::from_chars(listing.data() + at + key.size(), listing.data() + listing.size(), process);
    return process;
}

void ReadJob(CFDictionaryRef launchAgent, Installation& found)
{
    if (launchAgent == nullptr)
        return;
    const auto label = static_cast<CFStringRef>(CFDictionaryGetValue(launchAgent, CFSTR("Label")));
    const auto listing = OutputOfProgram(HostPath("/bin/launchctl"), { "list", StdString(label) });
    found.jobLoaded = listing.has_value();
    found.jobProcess = listing ? ProcessInListing(*listing) : 0;
}

}

bool Installation::agentComplete(uint32_t version) const
{
    return version != 0 && agentVersion == version && launchAgent == LaunchAgent::whole && jobProcess != 0;
}

bool Installation::driverComplete(uint32_t version) const
{
    return version != 0 && driverVersion == version && !oldDriver;
}

bool Installation::gone() const
{
    return !agentFolder && launchAgent == LaunchAgent::absent && !jobLoaded && !driverFolder && !oldDriver
        && !settings && settingsOnDisk;
}

Installation ReadInstallation()
{
    const AgentInstaller& agent = *AgentInstaller::agentInstallerPtr();
    const CFRef<CFURLRef> agentURL = agent.agentDestURL();
    const CFRef<CFDictionaryRef> launchAgent = agent.createPListForLaunchAgentWithURL(agentURL.get());
    const CFRef<CFURLRef> folder
        = AppControllerBase::appControllerPtr()->velmoraApplicationSupportDirectoryURL();

    Installation found;
    found.agentPath = FileSystemPath(agentURL.get());
    found.agentVersion = agent.agentVersion();
    found.agentFolder = Exists(FileSystemPath(folder.get()));
    found.launchAgentPath = FileSystemPath(agent.launchAgentPListURL().get());
    found.launchAgent = ReadLaunchAgent(found.launchAgentPath, launchAgent.get());
    ReadJob(launchAgent.get(), found);
    found.driverPath = HostPath(DriverInterface::installedPath());
    found.driverVersion = DriverInterface::installedVersion();
    found.driverFolder = Exists(found.driverPath);
    found.oldDriver = DriverInterface::oldDriverInstalled();
    found.settingsOnDisk = Preferences::synchronize();
    found.settings = Preferences::anySettingStored();
    const std::string request = HostRestartRequestPath();
    found.restartRequest = Exists(request) ? request : "";
    return found;
}
