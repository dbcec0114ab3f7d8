#include "install/AgentInstaller.h"

#include "app/AppControllerBase.h"
#include "install/CopyItem.h"
#include "settings/NumVersion.h"
#include "settings/Preferences.h"
#include "util/Bundle.h"
#include "util/CFText.h"
#include "util/Launch.h"

#include <Host/AtomicFile.h>
#include <Host/HostPath.h>
#include <Host/HostTrash.h>
#include <QtCore/QFile>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr const char* kAgentName = "ZEK Velmora";
constexpr const char* kLaunchAgentLabel = "com.zek.Velmora";

std::unique_ptr<AgentInstaller> gAgentInstallerPtr;

CFRef<CFURLRef> ApplicationSupportURL()
{
    const AppControllerBase* const controller = AppControllerBase::appControllerPtr();
    return controller != nullptr ? controller->velmoraApplicationSupportDirectoryURL() : CFRef<CFURLRef>();
}

bool Exists(const std::string& path)
{
    struct stat item { };
    return !path.empty() && stat(path.c_str(), &item) == 0;
}

/// Creates a folder whose parent exists, unless it is there already.
bool EnsureFolder(const std::string& path) { return Exists(path) || mkdir(path.c_str(), 0777) == 0; }

/// An item that is not there, or whose place is unknown, needs no removing.
bool MoveToTrash(const std::string& path)
{
    return !Exists(path) || (HostPrepareTrash() && QFile::moveToTrash(QString::fromStdString(path)));
}

/// Writes an XML property list. Whether that worked shows when launchctl reads it, so nobody is told here.
void WritePropertyList(CFDictionaryRef plist, const std::string& path)
{
    const CFRef<CFDataRef> data(
        CFPropertyListCreateData(kCFAllocatorDefault, plist, kCFPropertyListXMLFormat_v1_0, 0, nullptr));
    if (data)
        WriteFileAtomically(
            path, CFDataGetBytePtr(data.get()), static_cast<size_t>(CFDataGetLength(data.get())));
}

CFRef<CFArrayRef> ArrayOfOne(CFTypeRef element)
{
    return CFRef(CFArrayCreate(kCFAllocatorDefault, &element, 1, &kCFTypeArrayCallBacks));
}

}

AgentInstaller* AgentInstaller::agentInstallerPtr() { return gAgentInstallerPtr.get(); }

AgentInstaller* AgentInstaller::init()
{
    gAgentInstallerPtr.reset(new AgentInstaller);
    return gAgentInstallerPtr.get();
}

AgentInstaller::AgentInstaller()
{
    const AppControllerBase* const controller = AppControllerBase::appControllerPtr();
    const uint32_t offered = controller != nullptr ? controller->versionAsNumVersionVariant() : 0;
    const uint32_t installed = agentVersion();
    fCanInstall = installed == 0;
    fCanUpdate = installed != 0 && offered > installed;
    fInstalledVersionNewer = installed != 0 && offered < installed;
}

bool AgentInstaller::canInstall() const { return fCanInstall; }

bool AgentInstaller::canUpdate() const { return fCanUpdate; }

bool AgentInstaller::installedVersionNewer() const { return fInstalledVersionNewer; }

OSStatus AgentInstaller::install()
{
    const CFRef<CFURLRef> source = agentSourceURL();
    const CFRef<CFURLRef> destination = agentDestURL();
    const CFRef<CFURLRef> plistURL = launchAgentPListURL();
    const CFRef<CFURLRef> supportFolder = ApplicationSupportURL();
    const CFRef<CFURLRef> launchAgents = launchAgentDirectoryURL();
    if (!source || !plistURL || !supportFolder || !launchAgents)
        return fnfErr;

    if (!EnsureFolder(FileSystemPath(supportFolder.get())))
        return permErr;
    if (CopyItem(FileSystemPath(source.get()), FileSystemPath(destination.get())) != 0)
        return permErr;
    if (!EnsureFolder(FileSystemPath(launchAgents.get())))
        return permErr;
    const CFRef<CFDictionaryRef> plist = createPListForLaunchAgentWithURL(destination.get());
    if (!plist)
        return permErr;
    WritePropertyList(plist.get(), FileSystemPath(plistURL.get()));
    return startStopVelmoraProcess(true);
}

OSStatus AgentInstaller::update()
{
    // Removing first is what lets the copy succeed: copying never overwrites.
    const OSStatus status = uninstallAndIsUpdating(true);
    return status == noErr ? install() : status;
}

OSStatus AgentInstaller::uninstallAndIsUpdating(bool updating)
{
    if (const OSStatus status = startStopVelmoraProcess(false))
        return status;
    if (!MoveToTrash(FileSystemPath(agentDestURL().get())))
        return permErr;
    // The agent lay in this folder, so what goes now is whatever else it holds.
    if (!MoveToTrash(FileSystemPath(ApplicationSupportURL().get())))
        return permErr;
    if (!MoveToTrash(FileSystemPath(launchAgentPListURL().get())))
        return permErr;
    if (!updating && Preferences::preferencesPtr() != nullptr)
        Preferences::preferencesPtr()->removeAllPreferences();
    return noErr;
}

uint32_t AgentInstaller::agentVersion() const
{
    const CFRef<CFURLRef> url = agentDestURL();
    const CFRef<CFBundleRef> bundle(url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr);
    if (!bundle)
        return 0;
    const auto text = ASCIIString(BundleText(bundle.get(), CFSTR("CFBundleShortVersionString")));
    uint32_t version = 0;
    if (text)
        ConvertStringToNumVersion(text->c_str(), &version);
    return version;
}

CFRef<CFDictionaryRef> AgentInstaller::createPListForLaunchAgentWithURL(CFURLRef agentURL) const
{
    const std::string agent = FileSystemPath(agentURL);
    const CFRef<CFStringRef> program = CFText(agent + "/Contents/MacOS/" + kAgentName);
    const CFRef<CFStringRef> label = CFText(kLaunchAgentLabel);
    if (agent.empty() || !program)
        return {};

    const CFRef<CFArrayRef> sessions = ArrayOfOne(CFSTR("Aqua"));
    const CFRef<CFArrayRef> arguments = ArrayOfOne(program.get());
    const void* keys[] = { CFSTR("Label"), CFSTR("Disabled"), CFSTR("KeepAlive"),
        CFSTR("LimitLoadToSessionType"), CFSTR("Program"), CFSTR("ProgramArguments") };
    const void* values[]
        = { label.get(), kCFBooleanFalse, kCFBooleanTrue, sessions.get(), program.get(), arguments.get() };
    return CFRef(CFDictionaryCreate(kCFAllocatorDefault, keys, values, std::size(keys),
        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

CFRef<CFURLRef> AgentInstaller::launchAgentDirectoryURL() const
{
    const std::string home = HostHomeFolder();
    return home.empty() ? CFRef<CFURLRef>() : FileURL(home + "/Library/LaunchAgents", true);
}

CFRef<CFURLRef> AgentInstaller::launchAgentPListURL() const
{
    return URLRelativeTo(launchAgentDirectoryURL().get(), std::string(kLaunchAgentLabel) + ".plist");
}

CFRef<CFURLRef> AgentInstaller::agentSourceURL() const
{
    const CFRef<CFStringRef> name = CFText(kAgentName);
    return MainBundleResource(name.get(), CFSTR(".app"));
}

CFRef<CFURLRef> AgentInstaller::agentDestURL() const
{
    return URLRelativeTo(ApplicationSupportURL().get(), std::string(kAgentName) + ".app");
}

OSStatus AgentInstaller::startStopVelmoraProcess(bool start)
{
    const CFRef<CFURLRef> plistURL = launchAgentPListURL();
    if (!plistURL)
        return memFullErr;
    const int error = LaunchDetached(
        HostPath("/bin/launchctl"), { start ? "load" : "unload", FileSystemPath(plistURL.get()) });
    return error == 0 ? OSStatus { noErr } : OSStatus { memFullErr };
}
