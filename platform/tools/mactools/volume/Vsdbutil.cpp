#include "volume/Vsdbutil.h"

#include "volume/VolumeDatabase.h"

#include <Host/HostPath.h>
#include <Host/RecordLock.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <sysexits.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kName = "vsdbutil";
constexpr const char* kUsage = R"(usage: vsdbutil { -a | -c | -d } path
       vsdbutil -i

  -a path  let owners and permissions count on the volume that the path lies on
  -d path  let them not count
  -c path  tell whether they count
  -i       let them count on the volumes that are there and not known yet
)";
constexpr const char* kFolder = "/private/var/db";
constexpr const char* kFile = "/volinfo.database";

int Failure(const std::string& path, int error)
{
    return Complain(kName, path + ": " + std::strerror(error));
}

std::string DatabaseFile() { return HostStartupVolume() + kFolder + kFile; }

/// Reads the database, changes it and writes it, with nobody else doing so meanwhile.
int Change(const std::function<void(VolumeDatabase&)>& change)
{
    if (HostStartupVolumeIsSystems() && geteuid() != 0)
        return Complain(kName, "must be root");
    const std::string texts = std::string(kFolder) + kFile;
    Descriptor lock;
    VolumeDatabase database;
    int error = LockRecord(DatabaseFile(), lock);
    if (error == 0)
        error = database.read(DatabaseFile());
    if (error == 0) {
        change(database);
        error = database.write(DatabaseFile());
    }
    return error == 0 ? 0 : Failure(texts, error);
}

int SetPermissions(const std::string& path, bool count)
{
    const std::string key = VolumeKey(HostPath(path));
    if (key.empty())
        return Failure(path, errno);
    return Change([&](VolumeDatabase& database) {
        const uint32_t others = database.flags(key).value_or(0) & ~VolumeDatabase::kUsePermissions;
        database.setFlags(key, others | (count ? VolumeDatabase::kUsePermissions : 0));
    });
}

int CheckPermissions(const std::string& path)
{
    const std::string key = VolumeKey(HostPath(path));
    if (key.empty())
        return Failure(path, errno);
    VolumeDatabase database;
    if (const int error = database.read(DatabaseFile()); error != 0)
        return Failure(std::string(kFolder) + kFile, error);
    const std::optional<uint32_t> flags = database.flags(key);
    if (!flags)
        return Complain(kName, "no entry found for '" + path + "'.");
    const bool count = (*flags & VolumeDatabase::kUsePermissions) != 0;
    std::cout << "Permissions on '" << path << "' are " << (count ? "enabled" : "disabled") << ".\n";
    return 0;
}

int Initialize()
{
    std::vector<std::string> volumes { HostPath("/") };
    std::error_code ignored; // a start-up volume without the folder has met no others
    for (const fs::directory_entry& volume : fs::directory_iterator(HostPath("/Volumes"), ignored))
        volumes.push_back(volume.path());
    return Change([&](VolumeDatabase& database) {
        for (const std::string& volume : volumes) {
            const std::string key = VolumeKey(volume);
            if (!key.empty() && !database.flags(key))
                database.setFlags(key, VolumeDatabase::kUsePermissions);
        }
    });
}

}

int Vsdbutil(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    if (arguments == Arguments { "-i" })
        return Initialize();
    const std::string option = arguments.size() == 2 ? arguments[0] : "";
    if (option == "-a" || option == "-d")
        return SetPermissions(arguments[1], option == "-a");
    if (option == "-c")
        return CheckPermissions(arguments[1]);
    std::cerr << kUsage;
    return EX_USAGE;
}
