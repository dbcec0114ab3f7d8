#include "util/CFText.h"

#include <vector>

namespace {

std::optional<std::string> EncodedString(CFStringRef text, CFStringEncoding encoding)
{
    if (text == nullptr)
        return std::nullopt;
    const CFRange whole = CFRangeMake(0, CFStringGetLength(text));
    CFIndex size = 0;
    if (CFStringGetBytes(text, whole, encoding, 0, false, nullptr, 0, &size) != whole.length)
        return std::nullopt;
    std::string bytes(static_cast<size_t>(size), '\0');
    CFStringGetBytes(text, whole, encoding, 0, false, reinterpret_cast<UInt8*>(bytes.data()), size, nullptr);
    return bytes;
}

}

std::string StdString(CFStringRef text) { return EncodedString(text, kCFStringEncodingUTF8).value_or(""); }

std::optional<std::string> ASCIIString(CFStringRef text)
{
    return EncodedString(text, kCFStringEncodingASCII);
}

CFRef<CFStringRef> CFText(std::string_view utf8)
{
    return CFRef(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
        static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

std::string FileSystemPath(CFURLRef url)
{
    if (url == nullptr)
        return "";
    const CFRef<CFURLRef> absolute(CFURLCopyAbsoluteURL(url));
    const CFRef<CFStringRef> path(CFURLCopyFileSystemPath(absolute.get(), kCFURLPOSIXPathStyle));
    if (!path)
        return "";
    std::vector<char> bytes(
        static_cast<size_t>(CFStringGetMaximumSizeOfFileSystemRepresentation(path.get())));
    if (!CFStringGetFileSystemRepresentation(path.get(), bytes.data(), static_cast<CFIndex>(bytes.size())))
        return "";
    return bytes.data();
}

CFRef<CFURLRef> FileURL(std::string_view path, bool isDirectory)
{
    return CFRef(CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), isDirectory));
}

CFRef<CFURLRef> URLRelativeTo(CFURLRef base, std::string_view path)
{
    if (base == nullptr || path.empty())
        return {};
    return CFRef(CFURLCreateFromFileSystemRepresentationRelativeToBase(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), path.back() == '/',
        base));
}
