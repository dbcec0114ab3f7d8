// Whatever a bundle's seal says, its check ends, twice with the same finding, and blames the seal, a file in it, or nothing.

#include "fuzz/MemoryFolder.h"
#include "platform/tools/mactools/codesign/Verification.h"

#include <fcntl.h>

namespace {

constexpr const char* kSeal = "Contents/_CodeSignature/CodeResources";

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

codesign::Finding Check(const std::string& path, bool strict)
{
    codesign::Bundle bundle;
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Require(codesign::OpenBundle(std::move(folder), path, bundle) == 0);
    return codesign::Verify(bundle, strict);
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static const MemoryFolder folder({ kSeal, "Contents/Info.plist", "Contents/MacOS/program",
        "Contents/Resources/data.txt", "Contents/Resources/de.lproj/Localizable.strings",
        "Contents/PlugIns/Inner.bundle/Contents/Info.plist" });
    folder.write(kSeal, bytes, size);
    const codesign::Finding finding = Check(folder.path(), size % 2 == 0);
    const codesign::Finding again = Check(folder.path(), size % 2 == 0);
    Require(finding.problem == again.problem && finding.details == again.details);
    Require(!finding.problem.empty() || finding.details.empty());
    return 0;
}
