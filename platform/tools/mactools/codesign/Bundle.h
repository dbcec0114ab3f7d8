#pragma once

#include <Host/Descriptor.h>

#include <string>

namespace codesign {

/// A bundle whose folders are held open, so that what is looked at stays in it, whatever becomes of its path.
struct Bundle {
    std::string path; ///< as whoever asked called it, without a trailing slash; for texts
    Descriptor root;
    std::string
        contentsName; ///< below the root: "Contents", "Versions/A" of a framework; "" where the root itself
    Descriptor contents; ///< folder that holds the seal and everything sealed
    std::string identifier; ///< "" without one
    std::string executable; ///< path of the main executable below the contents folder; it may be missing

    /// What to call something in the contents folder. @param relative its path there.
    std::string pathOf(const std::string& relative) const;
};

/// @param folder of the bundle. @param path for texts. @return 0 or an errno.
int OpenBundle(Descriptor folder, const std::string& path, Bundle& bundle);

/// The same for a Mac path. A link there is followed, but none within.
int OpenBundle(const std::string& path, Bundle& bundle);

/// Opens the bundle that a file is the main executable of. @param path Mac path of the file.
/// @return 0 or an errno; ENOENT when there is no such bundle.
int OpenBundleOf(const std::string& path, Bundle& bundle);

}
