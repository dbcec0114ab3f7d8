#include <CoreFoundation/Encodings.h>
#include <CoreFoundation/UrlObject.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <unistd.h>

// File URLs and changes of paths.

namespace {

/// The bytes of a path as a URL's. A relative path keeps no colon, before which its first name would read as
/// a scheme.
std::string EncodedPath(std::string_view bytes, bool isRelative)
{
    // A semicolon would be legal, but older readers of URLs take what follows it for a parameter.
    return cf::PercentEncoded(bytes, isRelative ? "/!$&'()*+,=@" : "/!$&'()*+,=@:");
}

/// The URL of a path from the root on.
CFURLRef CreateAbsolute(std::string_view path, bool isDirectory)
{
    std::string text = "file://";
    text += EncodedPath(path, false);
    if (isDirectory && !text.ends_with('/'))
        text += '/';
    return new __CFURL(std::move(text), nullptr);
}

CFURLRef CreateFileUrl(std::string_view path, bool isDirectory, CFURLRef base)
{
    if (path.empty())
        return nullptr;
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    if (path.starts_with('/'))
        return CreateAbsolute(path, isDirectory);
    std::string text = EncodedPath(path, true);
    if (isDirectory)
        text += '/';
    if (base)
        return new __CFURL(std::move(text), base);
    const std::unique_ptr<char, decltype(&std::free)> folder(getcwd(nullptr, 0), &std::free);
    if (!folder) // it has been removed
        return nullptr;
    const cf::Owned<CFURLRef> workingFolder(CreateAbsolute(folder.get(), true));
    return new __CFURL(std::move(text), workingFolder.get());
}

bool IsFileScheme(std::string_view scheme)
{
    constexpr std::string_view file = "file";
    return std::ranges::equal(scheme, file, [](char c, char expected) { return (c | 0x20) == expected; });
}

/// The path in bytes, without a slash at the end; nothing when it is no file's or holds a null, which no path
/// can.
std::optional<std::string> FilePath(const __CFURL& url, bool isResolved)
{
    const std::string absolute = url.absoluteText();
    const cf::UrlParts whole = cf::SplitUrl(absolute);
    if (whole.isOpaque() || (whole.scheme && !IsFileScheme(*whole.scheme)))
        return std::nullopt;
    std::string path = cf::PercentDecoded(isResolved ? whole.path : url.parts().path);
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    if (path.empty() || path.find('\0') != std::string_view::npos)
        return std::nullopt;
    return path;
}

/// @param change answers the new path for the old one, nothing to refuse.
template <class Change> CFURLRef CreateChanged(CFURLRef original, Change change, const char* function)
{
    const __CFURL& url = cf::Check(original, function);
    // Without a path of its own the URL means the base's.
    const std::string text = url.parts().path.empty() ? url.absoluteText() : url.text();
    const bool keepsBase = !url.parts().path.empty();
    cf::UrlParts parts = cf::SplitUrl(text);
    if (parts.isOpaque())
        return nullptr;
    const std::optional<std::string> path = change(parts.path);
    if (!path)
        return nullptr;
    parts.path = *path;
    return new __CFURL(cf::JoinUrl(parts), keepsBase ? url.base.get() : nullptr);
}

std::optional<std::string> Utf8(CFStringRef string, const char* function)
{
    return cf::Encode(cf::Check(string, function).text, kCFStringEncodingUTF8);
}

}

CFURLRef CFURLCreateWithFileSystemPath(
    CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle pathStyle, Boolean isDirectory)
{
    return CFURLCreateWithFileSystemPathRelativeToBase(allocator, filePath, pathStyle, isDirectory, nullptr);
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(
    CFAllocatorRef, CFStringRef filePath, CFURLPathStyle pathStyle, Boolean isDirectory, CFURLRef baseURL)
{
    if (!filePath || pathStyle != kCFURLPOSIXPathStyle)
        return nullptr;
    const std::optional<std::string> path = Utf8(filePath, __func__);
    return path ? CreateFileUrl(*path, isDirectory, baseURL) : nullptr;
}

CFURLRef CFURLCreateFromFileSystemRepresentation(
    CFAllocatorRef allocator, const UInt8* buffer, CFIndex bufLen, Boolean isDirectory)
{
    return CFURLCreateFromFileSystemRepresentationRelativeToBase(
        allocator, buffer, bufLen, isDirectory, nullptr);
}

CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(
    CFAllocatorRef, const UInt8* buffer, CFIndex bufLen, Boolean isDirectory, CFURLRef baseURL)
{
    if (!buffer || bufLen < 1)
        return nullptr;
    return CreateFileUrl(
        { reinterpret_cast<const char*>(buffer), static_cast<size_t>(bufLen) }, isDirectory, baseURL);
}

Boolean CFURLGetFileSystemRepresentation(
    CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer, CFIndex maxBufLen)
{
    const std::optional<std::string> path = FilePath(cf::Check(url, __func__), resolveAgainstBase);
    if (!path || !buffer || maxBufLen < 0 || path->size() >= static_cast<size_t>(maxBufLen))
        return false;
    *std::ranges::copy(*path, buffer).out = 0;
    return true;
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle)
{
    const std::optional<std::string> path = FilePath(cf::Check(anURL, __func__), false);
    return path && pathStyle == kCFURLPOSIXPathStyle ? cf::MakeString(*path) : nullptr;
}

CFURLRef CFURLCreateCopyAppendingPathComponent(
    CFAllocatorRef, CFURLRef url, CFStringRef pathComponent, Boolean isDirectory)
{
    const std::optional<std::string> component = Utf8(pathComponent, __func__);
    if (!component)
        return nullptr;
    const auto append = [&](std::string_view path) -> std::optional<std::string> {
        std::string_view name = *component;
        name.remove_prefix(std::min(name.find_first_not_of('/'), name.size()));
        while (name.ends_with('/'))
            name.remove_suffix(1);
        std::string changed(path);
        if (!changed.ends_with('/'))
            changed += '/';
        changed += EncodedPath(name, false);
        if (isDirectory && !changed.ends_with('/'))
            changed += '/';
        return changed;
    };
    return CreateChanged(url, append, __func__);
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef url)
{
    const auto remove = [](std::string_view path) -> std::optional<std::string> {
        const cf::Component last = cf::LastComponent(path);
        const std::string_view name = path.substr(last.start, last.end - last.start);
        if (name == "/" || name.empty())
            return std::string(path);
        if (name == "." || name == "..") // what is above is not in the text
            return std::string(path.substr(0, last.end)) + "/../";
        return last.start == 0 ? "./" : std::string(path.substr(0, last.start));
    };
    return CreateChanged(url, remove, __func__);
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef, CFURLRef url, CFStringRef extension)
{
    const std::optional<std::string> text = Utf8(extension, __func__);
    if (!text || text->empty() || text->find('/') != std::string_view::npos)
        return nullptr;
    const auto extend = [&](std::string_view path) -> std::optional<std::string> {
        const cf::Component last = cf::LastComponent(path);
        const std::string_view name = path.substr(last.start, last.end - last.start);
        if (name.empty() || name == "/")
            return std::nullopt;
        std::string changed(path);
        return changed.insert(last.end, EncodedPath(*text, true)).insert(last.end, 1, '.');
    };
    return CreateChanged(url, extend, __func__);
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef, CFURLRef url)
{
    const auto shorten = [](std::string_view path) -> std::optional<std::string> {
        const cf::Component last = cf::LastComponent(path);
        const size_t point = cf::ExtensionPoint(path.substr(last.start, last.end - last.start));
        std::string changed(path);
        if (point != std::string_view::npos)
            changed.erase(last.start + point, last.end - last.start - point);
        return changed;
    };
    return CreateChanged(url, shorten, __func__);
}
