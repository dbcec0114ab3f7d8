#include "HostHomeFolders.h"

#if __APPLE__

HostHomeFolders::HostHomeFolders() = default;
HostHomeFolders::~HostHomeFolders() = default;

#else

#include "HostPath.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// From the top down.
constexpr const char* kFolders[] = { "/Library", "/Library/Application Support", "/Library/Preferences" };
/// From the bottom up; with those that programs make themselves.
constexpr const char* kTraces[]
    = { "/Library/LaunchAgents", "/Library/Preferences", "/Library/Application Support", "/Library" };

}

HostHomeFolders::HostHomeFolders()
{
    for (const char* folder : kFolders)
        mkdir((HostHomeFolder() + folder).c_str(), 0700);
}

HostHomeFolders::~HostHomeFolders()
{
    for (const char* folder : kTraces)
        rmdir((HostHomeFolder() + folder).c_str()); // which refuses where it holds something
}

#endif
