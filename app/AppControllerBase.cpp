#include "app/AppControllerBase.h"

#include "util/CFText.h"

#include <Host/HostPath.h>

AppControllerBase* AppControllerBase::appControllerPtr()
{
    return dynamic_cast<AppControllerBase*>(ZEK_AppController::appControllerPtr());
}

std::string AppControllerBase::helpBookName() const { return "ZEK Velmora Help"; }

bool AppControllerBase::rememberWindowPostions() const { return false; }

CFRef<CFURLRef> AppControllerBase::velmoraApplicationSupportDirectoryURL() const
{
    const std::string home = HostHomeFolder();
    if (home.empty())
        return {};
    return URLRelativeTo(FileURL(home + "/Library/Application Support", true).get(), "ZEK Velmora/");
}
