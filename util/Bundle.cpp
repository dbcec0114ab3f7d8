#include "util/Bundle.h"

#include "util/CFText.h"

CFStringRef BundleText(CFBundleRef bundle, CFStringRef key)
{
    const CFDictionaryRef information = CFBundleGetInfoDictionary(bundle);
    const CFTypeRef value = information != nullptr ? CFDictionaryGetValue(information, key) : nullptr;
    return CFDynamicCast<CFStringRef>(value, CFStringGetTypeID());
}

CFStringRef MainBundleIdentifier()
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    return bundle != nullptr ? CFBundleGetIdentifier(bundle) : nullptr;
}

CFStringRef MainBundleText(CFStringRef key)
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    return bundle != nullptr ? BundleText(bundle, key) : nullptr;
}

std::string MainBundleResources()
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    const CFRef<CFURLRef> url(bundle != nullptr ? CFBundleCopyResourcesDirectoryURL(bundle) : nullptr);
    return FileSystemPath(url.get());
}

CFRef<CFURLRef> MainBundleResource(CFStringRef name, CFStringRef extension)
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    return CFRef<CFURLRef>(
        bundle != nullptr ? CFBundleCopyResourceURL(bundle, name, extension, nullptr) : nullptr);
}

std::string LocalizedString(CFStringRef key)
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    const CFRef<CFStringRef> text(
        bundle != nullptr ? CFBundleCopyLocalizedString(bundle, key, CFSTR(""), nullptr) : nullptr);
    return StdString(text ? text.get() : key);
}
