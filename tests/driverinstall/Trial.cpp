#include "tests/driverinstall/Trial.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

Child::Child(const Texts& command, fs::path errors)
    : fErrors(std::move(errors))
{
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    fProcess = fork();
    if (fProcess != 0)
        return;
    dup2(open(fErrors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644), STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
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

std::string ReadText(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
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
    setenv("ZEK_STARTUP_VOLUME", (root / "volume").c_str(), 1);
    source = root / "source";
    extensions = root / "volume/Library/Extensions";
    bundle = source / name;
    installed = extensions / name;
    installArguments = { "install", "drivername", name, "sourcedirectory", source.string() };
    fs::create_directories(extensions);
    makeBundle(bundle, "2");
}

Trial::~Trial()
{
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

Child Trial::start(const Texts& arguments, const Texts& prefix)
{
    Texts command = prefix;
    command.emplace_back(DRIVERINSTALL_TOOL);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return { command, root / ("errors" + std::to_string(fRuns++)) };
}

Texts Trial::entries() const
{
    Texts names;
    for (const fs::directory_entry& entry : fs::directory_iterator(extensions))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void Trial::makeBundle(const fs::path& folder, const std::string& version)
{
    WriteText(folder / "Contents/Info.plist",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
        "<key>CFBundleIdentifier</key><string>com.example.dock</string>"
        "<key>CFBundleExecutable</key><string>Dock</string>"
        "<key>CFBundlePackageType</key><string>KEXT</string>"
        "<key>CFBundleVersion</key><string>"
            + version + "</string></dict></plist>\n");
    WriteText(folder / "Contents/MacOS/Dock", "code " + version);
    fs::permissions(folder / "Contents/MacOS/Dock", fs::perms(0755));
    WriteText(folder / "Contents/Resources/a.txt", std::string(70'000, version.front()));
}

Texts Trial::snapshot(const fs::path& folder)
{
    Texts lines;
    const auto add = [&](const fs::path& path) {
        struct stat info { };
        EXPECT_EQ(lstat(path.c_str(), &info), 0);
        const std::string text = S_ISREG(info.st_mode) ? ReadText(path) : "";
        std::ostringstream line;
        line << path.lexically_relative(folder) << std::oct << ' ' << info.st_mode << ' ' << info.st_uid
             << ' ' << info.st_gid << ' ' << std::hash<std::string>()(text);
        lines.push_back(line.str());
    };
    std::error_code error;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, error))
        add(entry.path());
    if (!error)
        add(folder);
    std::sort(lines.begin(), lines.end());
    return lines;
}

Texts Trial::whole(const std::string& version)
{
    const fs::path model = root / ("model" + version);
    if (!fs::exists(model))
        makeBundle(model, version);
    return snapshot(model);
}
