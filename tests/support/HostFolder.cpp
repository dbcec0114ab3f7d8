#include "tests/support/HostFolder.h"

namespace fs = std::filesystem;

HostFolder& HostFolder::add(
    const std::string& folder, std::initializer_list<std::pair<std::string, std::string>> files)
{
    for (const auto& [name, text] : files) {
        const fs::path path = fRoot / (folder + name);
        fs::create_directories(path.parent_path());
        if (text.starts_with("-> "))
            fs::create_symlink(fRoot / text.substr(3), path);
        else
            WriteText(path, text);
    }
    return *this;
}

HostFolder& HostFolder::disk(
    const std::string& place, const std::string& name, const Texts& attributes, const Texts& udev)
{
    const std::string device = "sys/devices/" + place;
    fDisk = device + "/block/" + name;
    add("", { { fDisk + "/device", "-> " + device }, { "sys/block/" + name, "-> " + fDisk } });
    describe(fDisk, attributes, udev);
    return *this;
}

HostFolder& HostFolder::partition(unsigned number, const Texts& attributes, const Texts& udev)
{
    const std::string name = fs::path(fDisk).filename();
    const bool endsInDigit = name.find_last_of("0123456789") == name.size() - 1;
    const std::string folder = fDisk + '/' + name + (endsInDigit ? "p" : "") + std::to_string(number);
    add(folder, { { "/partition", std::to_string(number) } });
    describe(folder, attributes, udev);
    return *this;
}

void HostFolder::describe(const std::string& folder, const Texts& attributes, const Texts& udev)
{
    for (const auto& [name, text] : attributes)
        add(folder, { { '/' + name, text + '\n' } });
    std::string record = "S:disk/by-test\nI:1234\n";
    for (const auto& [name, text] : udev)
        record.append("E:").append(name).append("=").append(text).append("\n");
    if (!udev.empty())
        add("run/udev/data/b", { { attributes.at("dev"), record } });
}
