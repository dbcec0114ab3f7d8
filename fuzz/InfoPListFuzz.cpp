// A bundle with any information file tells something or nothing, and never writes past a buffer.

#include "fuzz/MemoryFolder.h"
#include "settings/NumVersion.h"
#include "util/Bundles.h"
#include "util/CFRef.h"

#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const MemoryFolder folder({ "Contents/MacOS/program" });
    folder.write("Contents/Info.plist", bytes, size);
    const char* const bundle = folder.path().c_str();
    const size_t capacity = size % 64;
    const auto buffer = std::make_unique<char[]>(capacity); // of the exact size, for the sanitizer to see
    CreateBundleID_FromBundlePathname(bundle, buffer.get(), capacity);
    CreateExecutablePathnameFromBundlePathname(bundle, buffer.get(), capacity);
    BundleVersion(bundle);
    const CFRef<CFMutableDictionaryRef> info(CreateInfoPListDictionaryForBundle(bundle));
    return 0;
}
