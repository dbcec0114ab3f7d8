#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kext {

/// A kernel extension as its bundle describes it.
struct Extension {
    std::string identifier;
    std::string version;
    std::string path; ///< on its volume: "/Library/Extensions/Driver.kext"
    std::vector<std::string> libraries; ///< identifiers of the extensions that it links against
    bool isPartOfKernel; ///< stands for something that is built into the kernel
    std::filesystem::file_time_type modified; ///< when the bundle or its information file was last changed
};

struct Extensions {
    std::vector<Extension> all; ///< sorted by identifier
    /// When one was last changed, put there or taken away, also one that is left out.
    std::filesystem::file_time_type lastChange = std::filesystem::file_time_type::min();
    bool hasFolder = false; ///< whether the volume has a place for extensions
};

/// Reads the bundles in a volume's folders of extensions and those carried within them. One without a readable
/// Info.plist, an identifier or a version is left out; of two with the same identifier the newer version counts.
/// @param volume host path, without a trailing slash. @param tool that complains of what is left out.
Extensions ReadExtensions(const std::string& volume, const char* tool);

}
