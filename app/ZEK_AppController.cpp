#include "app/ZEK_AppController.h"

#include "app/FrontEnd.h"
#include "settings/NumVersion.h"
#include "settings/SystemVersion.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <sys/stat.h>

namespace {

std::unique_ptr<ZEK_AppController> gAppControllerPtr;

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
    return SystemVersion() >= kFirstSystemWithDarkAppearance && fFrontEnd.appearanceIsDark();
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
