#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/UserName.h>
