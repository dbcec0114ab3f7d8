// A bundle with any information file tells something or nothing, and never writes past a buffer.

#include "settings/NumVersion.h"
#include "util/Bundles.h"
#include "util/CFRef.h"

#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A bundle with a program in the memory of this machine, for as long as the fuzzer runs.
class Bundle {
public:
    Bundle()
    {
        if (mkdtemp(fFolder.data()) == nullptr)
            std::abort();
        for (const char* folder : { "/Contents", "/Contents/MacOS" })
            mkdir((fFolder + folder).c_str(), 0700);
        write("/Contents/MacOS/program", "", 0);
    }
    ~Bundle()
    {
        for (const char* file : { "/Contents/MacOS/program", "/Contents/Info.plist" })
            unlink((fFolder + file).c_str());
        for (const char* folder : { "/Contents/MacOS", "/Contents", "" })
            rmdir((fFolder + folder).c_str());
    }
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;

    const char* path() const { return fFolder.c_str(); }
    void write(const char* name, const void* bytes, size_t size) const
    {
        const int file = open((fFolder + name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (::write(file, bytes, size) != static_cast<ssize_t>(size))
            std::abort();
        close(file);
    }

private:
    std::string fFolder = "/dev/shm/zek-fuzz-XXXXXX";
};

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const Bundle bundle;
    bundle.write("/Contents/Info.plist", bytes, size);
    const size_t capacity = size % 64;
    const auto buffer = std::make_unique<char[]>(capacity); // of the exact size, for the sanitizer to see
    CreateBundleID_FromBundlePathname(bundle.path(), buffer.get(), capacity);
    CreateExecutablePathnameFromBundlePathname(bundle.path(), buffer.get(), capacity);
    BundleVersion(bundle.path());
    const CFRef<CFMutableDictionaryRef> info(CreateInfoPListDictionaryForBundle(bundle.path()));
    return 0;
}
