#pragma once

#include "PropertyList.h"

#include <map>
#include <string>
#include <vector>

namespace launchd {

/// Reads typed values out of a dictionary and remembers the first that is not as asked for. An absent key is
/// no problem and gives the fallback; so does a wrong one, which lets a caller read everything and look once
/// at the end.
class KeyReader {
public:
    /// Does not retain the dictionary.
    explicit KeyReader(CFDictionaryRef dictionary)
        : fDictionary(dictionary)
    {
    }

    /// One sentence that names the key, or "" while every value was good.
    const std::string& problem() const { return fProblem; }
    /// Reports a problem of the caller's own, unless there is one already.
    void refuse(const std::string& problem);

    /// @return the value, not retained, or null.
    CFTypeRef value(const char* key) const;
    bool has(const char* key) const { return value(key) != nullptr; }

    bool boolean(const char* key, bool fallback);
    /// Integers outside of the range are refused, as are fractions.
    long long integer(const char* key, long long fallback, long long least, long long most);
    std::string text(const char* key);
    std::vector<std::string> texts(const char* key);
    std::map<std::string, std::string> textMap(const char* key);
    std::string bytes(const char* key);

private:
    /// @return the value if it has the type, else null with a problem noted if there is a value at all.
    CFTypeRef valueOfType(const char* key, CFTypeID type, const char* typeName);

    CFDictionaryRef fDictionary;
    std::string fProblem;
};

} // namespace launchd
