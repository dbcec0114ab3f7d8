#include "install/DriverInterface.h"

#include "settings/NumVersion.h"
#include "util/Bundle.h"

#include <Host/HostPath.h>
#include <sys/stat.h>

namespace {

constexpr const char* kToolName = "driverinstall";
constexpr const char* kDriverName = "ZEKDockChargingSupport.kext";
constexpr const char* kOldDriverName = "ZEKThunderboltDockChargingSupport.kext";

std::unique_ptr<DriverInterface> gDriverInterfacePtr;

std::string PathInExtensions(const char* driverName)
{
    return std::string("/Library/Extensions/") + driverName;
}

bool IsInstalled(const char* driverName)
{
    struct stat item { };
    return stat(HostPath(PathInExtensions(driverName)).c_str(), &item) == 0;
}

std::vector<std::string> UninstallArguments(const char* driverName)
{
    return { "uninstall", "drivername", driverName };
}

}

DriverInterface* DriverInterface::driverInterfacePtr() { return gDriverInterfacePtr.get(); }

DriverInterface* DriverInterface::init()
{
    gDriverInterfacePtr.reset(new DriverInterface);
    DriverInterface* const made = gDriverInterfacePtr.get();
    if (made->createAuthorization() && made->setToolName(kToolName) == noErr)
        made->readVersions();
    else
        gDriverInterfacePtr.reset();
    return gDriverInterfacePtr.get();
}

void DriverInterface::readVersions()
{
    if (!IsInstalled(kDriverName))
        return;
    const uint32_t installed = installedVersion();
    fDriverInstalled = installed != 0;
    fCanUpdate = carriedVersion() != installed;
}

uint32_t DriverInterface::carriedVersion()
{
    return BundleVersion((MainBundleResources() + "/" + kDriverName).c_str());
}

uint32_t DriverInterface::installedVersion() { return BundleVersion(installedPath().c_str()); }

std::string DriverInterface::installedPath() { return PathInExtensions(kDriverName); }

bool DriverInterface::oldDriverInstalled() { return IsInstalled(kOldDriverName); }

bool DriverInterface::canInstall() const { return !fDriverInstalled; }

bool DriverInterface::canUpdate() const { return fCanUpdate; }

bool DriverInterface::driverPresent() const { return fDriverInstalled; }

bool DriverInterface::restartMightBeRequired() const { return !fDriverInstalled || fCanUpdate; }

bool DriverInterface::restartRequired() const { return fRestartRequired; }

OSStatus DriverInterface::install()
{
    OSStatus status = uninstallOldDriverIfPresent();
    if (status == noErr) {
        const std::string resources = MainBundleResources();
        status = resources.empty() ? OSStatus { paramErr }
                                   : callDriverInstallWithArguments({ "install", "drivername", kDriverName,
                                       "sourcedirectory", resources });
    }
    fRestartRequired = status == noErr;
    return status;
}

OSStatus DriverInterface::update() { return install(); }

OSStatus DriverInterface::uninstall()
{
    fRestartRequired = false;
    if (const OSStatus status = uninstallOldDriverIfPresent())
        return status;
    if (!IsInstalled(kDriverName))
        return noErr;
    const OSStatus status = callDriverInstallWithArguments(UninstallArguments(kDriverName));
    fRestartRequired = status == noErr;
    return status;
}

OSStatus DriverInterface::uninstallOldDriverIfPresent()
{
    return oldDriverInstalled() ? callDriverInstallWithArguments(UninstallArguments(kOldDriverName)) : noErr;
}

OSStatus DriverInterface::callDriverInstallWithArguments(const std::vector<std::string>& arguments)
{
    return runToolWithArguments(arguments);
}
