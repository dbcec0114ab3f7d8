#include "app/ZEK_AppController.h"

#include "app/FrontEnd.h"
#include "settings/NumVersion.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <sys/stat.h>
#include <sys/sysctl.h>

namespace {

std::unique_ptr<ZEK_AppController> gAppControllerPtr;

/// The version of the running system; 0 on systems too old to tell.
uint32_t SystemVersion()
{
    char text[32] = {};
    size_t size = sizeof text - 1;
    uint32_t version = 0;
    if (sysctlbyname("kern.osproductversion", text, &size, nullptr, 0) == 0)
        ConvertStringToNumVersion(text, &version);
    return version;
}

}

ZEK_AppController* ZEK_AppController::appControllerPtr() { return gAppControllerPtr.get(); }

void ZEK_AppController::registerShared(std::unique_ptr<ZEK_AppController> controller)
{
    gAppControllerPtr = std::move(controller);
}

ZEK_AppController::ZEK_AppController(FrontEnd& frontEnd)
    : fFrontEnd(frontEnd)
{
    umask(022);
    const CFStringRef version = MainBundleText(CFSTR("CFBundleShortVersionString"));
    if (version == nullptr)
        return;
    fVersionStringPtr = StdString(version);
    if (const std::optional<std::string> ascii = ASCIIString(version))
        ConvertStringToNumVersion(ascii->c_str(), &fVersion.whole);
}

ZEK_AppController::~ZEK_AppController() = default;

const std::optional<std::string>& ZEK_AppController::versionAsString() const { return fVersionStringPtr; }

uint32_t ZEK_AppController::versionAsNumVersionVariant() const { return fVersion.whole; }

std::string ZEK_AppController::productNamePtr() const { return ""; }

bool ZEK_AppController::isDarkMode() const
{
    constexpr uint32_t kFirstWithDarkAppearance = 0x10E08000; // 10.14
    if (SystemVersion() < kFirstWithDarkAppearance)
        return false;
    // The user's choice of appearance as the system itself keeps it; there is no entry while it is the light
    // one.
    CFPreferencesAppSynchronize(kCFPreferencesAnyApplication);
    const CFRef<CFTypeRef> style(
        CFPreferencesCopyAppValue(CFSTR("AppleInterfaceStyle"), kCFPreferencesAnyApplication));
    return style && CFEqual(style.get(), CFSTR("Dark"));
}

void ZEK_AppController::openHelpPageWithHelpHint(int32_t hint) const
{
    fFrontEnd.showHelp(helpBookName(), helpAnchorStringFromHelpHint(hint));
}

std::string ZEK_AppController::helpBookName() const { return ""; }

std::optional<std::string> ZEK_AppController::helpAnchorStringFromHelpHint(int32_t) const
{
    return std::nullopt;
}

int32_t ZEK_AppController::defaultHelpHint() const { return fDefaultHelpHint; }

void ZEK_AppController::setDefaultHelpHint(int32_t hint) { fDefaultHelpHint = hint; }

bool ZEK_AppController::rememberWindowPostions() const { return true; }

bool ZEK_AppController::suppressDialogWithKey(const std::string&) const { return false; }

void ZEK_AppController::setSuppressDialogWithKey(const std::string&) { }
