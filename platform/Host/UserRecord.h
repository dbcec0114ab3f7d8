#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

/// A user as the user database has them, in bytes of whatever kind.
struct UserRecord {
    std::string name; ///< for logging in
    std::string fullName; ///< as people write it; the other name where there is none
    std::string home;
};

/// @return none where the database does not know the user or cannot be asked.
std::optional<UserRecord> RecordOfUser(uid_t user);

/// @param remarks of the database on a user: the full name up to the first comma. In it, "&" stands for the login name with
/// a capital. @return the login name where the remarks have none.
std::string FullUserName(const std::string& remarks, const std::string& name);
