#include "app/WindowFrontEnd.h"
#include "app/unattended/Unattended.h"
#include "util/Bundle.h"
#include "util/CFText.h"
#include "util/Launch.h"

#include <Host/HostDisplay.h>
#include <Host/HostHomeFolders.h>
#include <Host/HostPath.h>
#include <cstdio>

namespace {

/// The installer's name and version, from its bundle.
std::string VersionLine()
{
    return StdString(MainBundleText(CFSTR("CFBundleName"))) + " "
        + StdString(MainBundleText(CFSTR("CFBundleShortVersionString"))) + "\n";
}

int ShowWindows(int argc, char* argv[])
{
    if (!HostHasDisplay()) {
        std::fprintf(
            stderr, "zek-velmora-installer: there is no display for windows\n%s", UsageText().c_str());
        return static_cast<int>(Outcome::usage);
    }
    const HostHomeFolders folders;
    return RunWithWindows(argc, argv);
}

int CarryOut(const Options& options)
{
    const HostHomeFolders folders;
    return static_cast<int>(RunUnattended(options));
}

}

int main(int argc, char* argv[])
{
    PutProcessInOrder();
    HostEnterHome();
    std::string error;
    const std::optional<Options> options = ParseOptions({ argv + 1, argv + argc }, error);
    if (!options) {
        std::fprintf(stderr, "zek-velmora-installer: %s\n%s", error.c_str(), UsageText().c_str());
        return static_cast<int>(Outcome::usage);
    }
    switch (options->command) {
    case Options::Command::windows:
        return ShowWindows(argc, argv);
    case Options::Command::help:
        std::fputs(UsageText().c_str(), stdout);
        return 0;
    case Options::Command::version:
        std::fputs(VersionLine().c_str(), stdout);
        return 0;
    case Options::Command::status:
        return static_cast<int>(RunUnattended(*options));
    default:
        return CarryOut(*options);
    }
}
