#include "UserName.h"

#include <CoreFoundation/Runtime.h>
#include <Host/TextReading.h>
#include <Host/UserRecord.h>

#include <unistd.h>

CFStringRef CSCopyUserName(Boolean useShortName)
{
    const std::optional<UserRecord> user = RecordOfUser(getuid());
    if (!user || user->name.empty())
        return nullptr;
    return cf::MakeString(CleanLine(useShortName != 0 ? user->name : user->fullName));
}
