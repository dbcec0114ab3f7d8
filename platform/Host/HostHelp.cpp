#include "HostHelp.h"

#if __APPLE__

std::vector<std::string> HostHelpCommand(const std::string& bookFolder, const std::string&)
{
    return { "/usr/bin/open", bookFolder };
}

#else

#include "HostPath.h"

std::vector<std::string> HostHelpCommand(const std::string& bookFolder, const std::string& anchor)
{
    std::vector<std::string> command { HostToolsFolder() + "/HelpViewer", bookFolder };
    if (!anchor.empty())
        command.push_back(anchor);
    return command;
}

#endif
