#include "codesign/Bundle.h"

#include "codesign/OpenBeneath.h"

#include <CoreFoundation/CFBundle.h>
#include <Host/HostPath.h>

#include <algorithm>
#include <array>
#include <fcntl.h>

namespace codesign {

namespace {

constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr const char* kProgramFolder = "/Contents/MacOS/";

/// What a kind of bundle has where, below its root and its contents folder.
struct Layout {
    std::string contents;
    const char* info;
    const char* programs;
};

bool IsName(const std::string& text)
{
    return !text.empty() && text != "." && text != ".." && text.find('/') == std::string::npos;
}

std::string WithoutTrailingSlashes(std::string path)
{
    path.erase(std::max<size_t>(path.find_last_not_of('/') + 1, 1));
    return path;
}

/// The name of a bundle without its extension, which its executable has where nothing else is said.
std::string Stem(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}

/// The layouts to try, the first that fits is the bundle's.
std::array<Layout, 3> Layouts(int root)
{
    const Descriptor versions = OpenBeneath(root, "Versions", O_PATH | O_DIRECTORY);
    const std::string current = versions ? LinkTarget(versions.get(), "Current") : "";
    return { Layout { "Contents", "Info.plist", "MacOS/" },
        Layout { "Versions/" + (IsName(current) ? current : "Current"), "Resources/Info.plist", "" },
        Layout { "", "Info.plist", "" } };
}

}

std::string Bundle::pathOf(const std::string& relative) const
{
    return path + (contentsName.empty() ? "" : '/' + contentsName) + '/' + relative;
}

int OpenBundle(Descriptor folder, const std::string& path, Bundle& bundle)
{
    bundle.root = std::move(folder);
    bundle.path = WithoutTrailingSlashes(path);
    for (const Layout& layout : Layouts(bundle.root.get())) {
        bundle.contents = OpenBeneath(bundle.root.get(), layout.contents, kFolder);
        if (!bundle.contents)
            continue;
        bundle.contentsName = layout.contents;
        cf::Owned<CFDictionaryRef> info;
        ReadDictionaryBeneath(bundle.contents.get(), layout.info, info);
        const auto textOf = [&info](CFStringRef key) {
            return info ? cf::TextOf(CFDictionaryGetValue(info.get(), key)) : "";
        };
        bundle.identifier = textOf(kCFBundleIdentifierKey);
        const std::string program = textOf(kCFBundleExecutableKey);
        bundle.executable = layout.programs + (IsName(program) ? program : Stem(bundle.path));
        return 0;
    }
    return errno;
}

int OpenBundle(const std::string& path, Bundle& bundle)
{
    Descriptor folder(open(HostPath(path).c_str(), kFolder));
    return folder ? OpenBundle(std::move(folder), path, bundle) : errno;
}

int OpenBundleOf(const std::string& path, Bundle& bundle)
{
    const size_t end = path.rfind(kProgramFolder);
    if (end == std::string::npos || end == 0)
        return ENOENT;
    if (const int error = OpenBundle(path.substr(0, end), bundle); error != 0)
        return error;
    return bundle.pathOf(bundle.executable) == path ? 0 : ENOENT;
}

}
