#pragma once

#include <CoreFoundation/CFDictionary.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace codesign {

/// Which of a bundle's files a seal covers, as the seal says itself: regular expressions over the path below the
/// contents folder. Of those that match the one with the most weight decides.
class SealRules {
public:
    enum class Answer { omitted, sealed, nestedCode };

    SealRules();
    SealRules(SealRules&&) noexcept;
    SealRules& operator=(SealRules&&) noexcept;
    ~SealRules();

    /// @param rules of the seal: pattern to true, a weight, or a dictionary with weight, omit and nested.
    /// @return whether all of them make sense.
    bool read(CFDictionaryRef rules);
    size_t count() const;

    /// @return nothing once a pattern has taken too long for a path.
    std::optional<Answer> answer(const std::string& path);

private:
    struct Rule;
    std::vector<Rule> fRules;
    bool fGaveUp = false;
};

}
