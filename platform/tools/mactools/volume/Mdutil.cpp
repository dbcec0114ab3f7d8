#include "volume/Mdutil.h"

#include "volume/TargetDevice.h"

#include <Host/HostPath.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

namespace {

constexpr const char* kName = "mdutil";
constexpr const char* kUsage = R"(usage: mdutil [-s] [-i on | off] volume ...

  -s         tell whether the volumes are indexed
  -i on|off  let them be indexed, or not, and tell so
)";
constexpr const char* kHostsMarker = ".trackerignore"; ///< decides here
constexpr std::array kMarkers { ".metadata_never_index", kHostsMarker };

struct Request {
    std::string change {}; ///< "on" or "off"; "" for none
    Arguments volumes {};
};

std::optional<Request> ReadRequest(const Arguments& arguments)
{
    Request request;
    auto argument = arguments.begin();
    bool asks = false;
    for (; argument != arguments.end() && argument->starts_with('-'); ++argument) {
        if (*argument == "-i" && argument + 1 != arguments.end())
            request.change = *++argument;
        else if (*argument == "-s")
            asks = true;
        else
            return {};
    }
    const std::string& change = request.change;
    const bool isRight = change.empty() ? asks : change == "on" || change == "off";
    request.volumes.assign(argument, arguments.end());
    return isRight && !request.volumes.empty() ? std::optional(request) : std::nullopt;
}

/// @return 0 or an errno. What is there already will do, whatever it is.
int AddMarker(int folder, const char* name)
{
    const Descriptor file(openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    return file || errno == EEXIST ? 0 : errno;
}

int RemoveMarker(int folder, const char* name)
{
    return unlinkat(folder, name, 0) == 0 || errno == ENOENT ? 0 : errno;
}

int SetIndexing(int folder, bool isOn)
{
    umask(S_IWGRP | S_IWOTH); // everybody's indexer is to see the markers
    for (const char* const name : kMarkers) {
        if (const int error = isOn ? RemoveMarker(folder, name) : AddMarker(folder, name); error != 0)
            return error;
    }
    return 0;
}

bool IsIndexed(int folder)
{
    struct stat info = {};
    return fstatat(folder, kHostsMarker, &info, AT_SYMLINK_NOFOLLOW) != 0;
}

bool IsStartUpVolume(int folder)
{
    struct stat info = {};
    struct stat startUp = {};
    return fstat(folder, &info) == 0 && stat(HostStartupVolume().c_str(), &startUp) == 0
        && info.st_dev == startUp.st_dev && info.st_ino == startUp.st_ino;
}

int Attend(const std::string& volume, const std::string& change)
{
    const Descriptor folder(open(HostPath(volume).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return Complain(kName, volume + ": " + std::strerror(errno));
    if (!IsStartUpVolume(folder.get()) && !MountOn("/proc/self/fd/" + std::to_string(folder.get())))
        return Complain(kName, volume + ": not the top of a volume");
    if (const int error = change.empty() ? 0 : SetIndexing(folder.get(), change == "on"); error != 0)
        return Complain(kName, volume + ": " + std::strerror(error));
    std::cout << volume << ":\n\tStatus: Indexing " << (IsIndexed(folder.get()) ? "Enabled" : "Disabled")
              << '\n';
    return 0;
}

}

int Mdutil(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    const std::optional<Request> request = ReadRequest(arguments);
    if (!request) {
        std::cerr << kUsage;
        return EX_USAGE;
    }
    int status = 0;
    for (const std::string& volume : request->volumes)
        status |= Attend(volume, request->change);
    return status;
}
