#pragma once

// Names of planes, and keys of properties and of matching dictionaries. They are macros, as Apple's are: programs put them
// into CFSTR().

#define kIOServicePlane "IOService"
#define kIODeviceTreePlane "IODeviceTree"

#define kIOProviderClassKey "IOProviderClass"
#define kIONameMatchKey "IONameMatch"
#define kIOPropertyMatchKey "IOPropertyMatch"
#define kIORegistryEntryIDKey "IORegistryEntryID"
