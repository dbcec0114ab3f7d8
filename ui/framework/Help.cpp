#include "ui/framework/Help.h"

#include "util/Bundle.h"
#include "util/CFText.h"
#include "util/Launch.h"

#include <Host/HostHelp.h>
#include <cstdio>
#include <cstring>
#include <vector>

std::string HelpBookFolder()
{
    const std::string name = StdString(MainBundleText(CFSTR("CFBundleHelpBookFolder")));
    return name.empty() ? "" : MainBundleResources() + "/" + name;
}

bool ShowHelp(const std::string& anchor)
{
    const std::string folder = HelpBookFolder();
    if (folder.empty()) {
        std::fprintf(stderr, "the application has no help book\n");
        return false;
    }
    std::vector<std::string> command = HostHelpCommand(folder, anchor);
    const std::string viewer = command.front();
    command.erase(command.begin());
    const int error = LaunchDetached(viewer, command);
    if (error != 0)
        std::fprintf(stderr, "cannot start %s: %s\n", viewer.c_str(), std::strerror(error));
    return error == 0;
}

bool OpenHelpAnchor(const std::string& anchor, const std::string& book)
{
    if (StdString(MainBundleText(CFSTR("CFBundleHelpBookName"))) == book)
        return ShowHelp(anchor);
    std::fprintf(stderr, "the application has no help book \"%s\"\n", book.c_str());
    return false;
}
