#include "tests/support/TestVolume.h"

#include "util/CFText.h"

#include <Host/HostPath.h>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kUser = "tester";

fs::path MakeTemporaryFolder()
{
    std::string name = fs::temp_directory_path() / "zek-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    fs::permissions(name, fs::perms(0755)); // tests become other users, who have to get in
    return name;
}

CFRef<CFDictionaryRef> ReadDictionary(const fs::path& file)
{
    const std::string bytes = TestVolume::read(file);
    const CFRef<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
    CFRef<CFTypeRef> list(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    if (!list || CFGetTypeID(list.get()) != CFDictionaryGetTypeID())
        return {};
    return CFRef<CFDictionaryRef>(static_cast<CFDictionaryRef>(list.release()));
}

std::string InWords(CFTypeRef value)
{
    if (const auto text = CFDynamicCast<CFStringRef>(value, CFStringGetTypeID()))
        return StdString(text);
    if (const auto boolean = CFDynamicCast<CFBooleanRef>(value, CFBooleanGetTypeID()))
        return CFBooleanGetValue(boolean) ? "true" : "false";
    const auto number = CFDynamicCast<CFNumberRef>(value, CFNumberGetTypeID());
    if (number == nullptr)
        return "(other)";
    double real = 0;
    CFNumberGetValue(number, kCFNumberDoubleType, &real);
    return CFNumberIsFloatType(number) ? std::to_string(real) : std::to_string(static_cast<long>(real));
}

}

TestVolume::TestVolume()
    : fFolder(MakeTemporaryFolder())
{
    const std::string command = std::string(MAKE_STARTUP_VOLUME) + " '" + root().string() + "' " + kUser;
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("no start-up volume");
    setenv("ZEK_STARTUP_VOLUME", root().c_str(), 1);
    setenv("CFFIXED_USER_HOME", home().c_str(), 1);
    setenv("CFProcessPath", (installer() / "Contents/MacOS/zek-velmora-installer").c_str(), 1);
    HostEnterHome();
    fs::create_directories(resources());
}

TestVolume::~TestVolume()
{
    std::error_code ignored;
    fs::remove_all(fFolder, ignored);
}

fs::path TestVolume::root() const { return fFolder / "volume"; }
fs::path TestVolume::home() const { return root() / "Users" / kUser; }
fs::path TestVolume::installer() const { return fFolder / "Installer.app"; }
fs::path TestVolume::resources() const { return installer() / "Contents/Resources"; }
fs::path TestVolume::support() const { return home() / "Library/Application Support/ZEK Velmora"; }
fs::path TestVolume::agent() const { return support() / "ZEK Velmora.app"; }
fs::path TestVolume::launchAgent() const { return home() / "Library/LaunchAgents/com.zek.Velmora.plist"; }
fs::path TestVolume::extensions() const { return root() / "Library/Extensions"; }
fs::path TestVolume::trash() const { return home() / ".local/share/Trash/files"; }
fs::path TestVolume::preferencesFile() const { return home() / "Library/Preferences/com.zek.Velmora.plist"; }

TestVolume& TestVolume::makeInstaller(const std::string& version)
{
    writeBundle(installer(), version, version);
    const fs::path carried = resources() / "ZEK Velmora.app";
    writeBundle(carried, version, version);
    const fs::path program = carried / "Contents/MacOS/ZEK Velmora";
    write(program, "#!/bin/sh\nexec sleep 1000\n");
    fs::permissions(program, fs::perms(0755));
    return *this;
}

TestVolume& TestVolume::carryDriver(const std::string& version)
{
    writeBundle(
        resources() / "ZEKDockChargingSupport.kext", "", version, "com.zek.driver.ZEKDockChargingSupport");
    return *this;
}

TestVolume& TestVolume::installAgent(const std::string& version)
{
    writeBundle(agent(), version, version);
    return *this;
}

TestVolume& TestVolume::installDriver(const std::string& version, const std::string& name)
{
    writeBundle(extensions() / name, "", version, "com.zek.driver." + name);
    return *this;
}

TestVolume& TestVolume::breakTrash()
{
    // A file where the folder should be stops root too, which permissions would not.
    fs::remove_all(home() / ".local/share/Trash");
    write(home() / ".local/share/Trash", "not a folder");
    return *this;
}

TestVolume& TestVolume::recordTool(const std::string& macPath)
{
    const fs::path tool = root() / macPath.substr(1);
    fs::create_directories(tool.parent_path());
    fs::copy_file(ARGUMENT_RECORDER, tool, fs::copy_options::overwrite_existing);
    return *this;
}

TestVolume& TestVolume::recordDriverTool()
{
    fs::copy_file(ARGUMENT_RECORDER, resources() / "driverinstall", fs::copy_options::overwrite_existing);
    return *this;
}

std::string TestVolume::calls() const { return read(root() / "calls"); }

std::string TestVolume::callsOnce(const std::string& expected) const
{
    Eventually([&] { return calls().size() >= expected.size(); });
    return calls();
}

std::map<std::string, std::string> TestVolume::preferences() const
{
    std::map<std::string, std::string> words;
    if (const CFRef<CFDictionaryRef> stored = ReadDictionary(preferencesFile())) {
        CFDictionaryApplyFunction(
            stored.get(),
            [](const void* key, const void* value, void* context) {
                auto& into = *static_cast<std::map<std::string, std::string>*>(context);
                into[StdString(static_cast<CFStringRef>(key))] = InWords(value);
            },
            &words);
    }
    return words;
}

bool TestVolume::isPropertyList(const fs::path& file) { return static_cast<bool>(ReadDictionary(file)); }

void TestVolume::write(const fs::path& file, const std::string& text)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

std::string TestVolume::read(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

void TestVolume::writeBundle(const fs::path& bundle, const std::string& shortVersion,
    const std::string& bundleVersion, const std::string& identifier)
{
    const auto entry = [](const char* key, const std::string& value) {
        return value.empty() ? "" : "<key>" + std::string(key) + "</key><string>" + value + "</string>";
    };
    write(bundle / "Contents/Info.plist",
        R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
            + entry("CFBundleIdentifier", identifier) + entry("CFBundleShortVersionString", shortVersion)
            + entry("CFBundleVersion", bundleVersion) + "</dict></plist>");
}

int AsStranger(const std::function<int()>& body)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(setgid(65534) == 0 && setuid(65534) == 0 ? body() : 255);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Eventually(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}
