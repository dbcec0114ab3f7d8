#include "UserRecord.h"

#include <cctype>
#include <cerrno>
#include <pwd.h>
#include <vector>

namespace {

constexpr size_t kLargestRecord = size_t { 1 } << 20U;

std::string Capitalised(std::string name)
{
    if (!name.empty())
        name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    return name;
}

/// @param text null for none.
std::string Text(const char* text) { return text != nullptr ? text : ""; }

}

std::optional<UserRecord> RecordOfUser(uid_t user)
{
    std::vector<char> room(1024);
    passwd entry {};
    passwd* found = nullptr;
    while (
        getpwuid_r(user, &entry, room.data(), room.size(), &found) == ERANGE && room.size() < kLargestRecord)
        room.resize(room.size() * 2);
    if (found == nullptr)
        return {};
    const std::string name = Text(found->pw_name);
    return UserRecord { name, FullUserName(Text(found->pw_gecos), name), Text(found->pw_dir) };
}

std::string FullUserName(const std::string& remarks, const std::string& name)
{
    std::string fullName;
    for (const char character : remarks.substr(0, remarks.find(',')))
        fullName += character == '&' ? Capitalised(name) : std::string(1, character);
    const bool isBlank = fullName.find_first_not_of(" \t") == std::string::npos;
    return isBlank ? name : fullName;
}
