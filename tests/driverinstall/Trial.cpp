#include "tests/driverinstall/Trial.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <iterator>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string ReadText(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

[[noreturn]] void Become(const std::vector<std::string>& command, const Child::Environment& added,
    const fs::path& errors, uid_t user)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    for (const auto& [key, value] : added)
        setenv(key.c_str(), value.c_str(), 1);
    const int file = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file < 0 || dup2(file, STDERR_FILENO) < 0 || (user != 0 && (setgid(user) != 0 || setuid(user) != 0)))
        _exit(126);
    execv(arguments[0], arguments.data());
    _exit(127);
}

}

Child::Child(const std::vector<std::string>& command, const Environment& added, fs::path errors, uid_t user)
    : fErrors(std::move(errors))
    , fProcess(fork())
{
    if (fProcess == 0)
        Become(command, added, fErrors, user);
}

bool Child::isRunning() const
{
    siginfo_t info {};
    return waitid(P_PID, static_cast<id_t>(fProcess), &info, WEXITED | WNOHANG | WNOWAIT) == 0
        && info.si_pid == 0;
}

std::string Child::errors() const { return ReadText(fErrors); }

Ended Child::wait() const
{
    int status = 0;
    if (waitpid(fProcess, &status, 0) != fProcess)
        return {};
    return { WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), errors() };
}

void WriteText(const fs::path& file, const std::string& text)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

Trial::Trial()
{
    umask(022);
    std::string pattern = (fs::temp_directory_path() / "driverinstall-XXXXXX").string();
    root = mkdtemp(pattern.data());
    fs::permissions(root, fs::perms(0755));
    source = root / "source";
    extensions = root / "volume/Library/Extensions";
    bundle = source / name;
    installed = extensions / name;
    fs::create_directories(extensions);
    makeBundle(bundle, "2");
}

Trial::~Trial()
{
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

Child Trial::start(
    const std::vector<std::string>& arguments, const std::vector<std::string>& prefix, uid_t user)
{
    std::vector<std::string> command = prefix;
    command.emplace_back(DRIVERINSTALL_TOOL);
    command.insert(command.end(), arguments.begin(), arguments.end());
    Child::Environment environment = { { "ZEK_STARTUP_VOLUME", (root / "volume").string() } };
    // The leak check needs to trace the process, which a tracer that is already there prevents.
    if (!prefix.empty())
        environment["ASAN_OPTIONS"] = "detect_leaks=0";
    return { command, environment, root / ("errors" + std::to_string(fRuns++)), user };
}

Ended Trial::run(
    const std::vector<std::string>& arguments, const std::vector<std::string>& prefix, uid_t user)
{
    return start(arguments, prefix, user).wait();
}

std::vector<std::string> Trial::installArguments() const
{
    return { "install", "drivername", name, "sourcedirectory", source.string() };
}

std::vector<std::string> Trial::entries() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(extensions))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void Trial::makeBundle(const fs::path& folder, const std::string& version)
{
    const fs::path contents = folder / "Contents";
    WriteText(contents / "Info.plist",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
        "<key>CFBundleIdentifier</key><string>com.example.dock</string>"
        "<key>CFBundleExecutable</key><string>Dock</string>"
        "<key>CFBundlePackageType</key><string>KEXT</string>"
        "<key>CFBundleVersion</key><string>"
            + version + "</string></dict></plist>\n");
    WriteText(contents / "MacOS/Dock", "code " + version);
    fs::permissions(contents / "MacOS/Dock", fs::perms(0755));
    WriteText(contents / "Resources/a.txt", std::string(200'000, version.front()));
}

std::vector<std::string> Trial::snapshot(const fs::path& folder)
{
    std::vector<std::string> lines;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, error)) {
        struct stat info { };
        EXPECT_EQ(lstat(entry.path().c_str(), &info), 0);
        const size_t hash = std::hash<std::string>()(entry.is_regular_file() ? ReadText(entry.path()) : "");
        lines.push_back(entry.path().lexically_relative(folder).string() + " " + std::to_string(info.st_mode)
            + " " + std::to_string(hash));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::vector<std::string> Trial::whole(const std::string& version)
{
    const fs::path model = root / ("model" + version);
    if (!fs::exists(model))
        makeBundle(model, version);
    return snapshot(model);
}
