#include "Polkit.h"

#include <CoreFoundation/CoreFoundation.h>
#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <sdbus-c++/sdbus-c++.h>
#include <sstream>
#include <unistd.h>

namespace {

constexpr const char* kPolicyFolder = "/usr/share/polkit-1/actions/";
constexpr const char* kGenericAction = "org.freedesktop.policykit.exec";
constexpr uint32_t kAllowUserInteraction = 1;
// Microseconds.
constexpr uint64_t kAsLongAsTheUserTakes = UINT64_MAX;
constexpr uint64_t kAsLongAsTheBusAllows = 0;

using Subject = sdbus::Struct<std::string, std::map<std::string, sdbus::Variant>>;
using Details = std::map<std::string, std::string>;
using Result = sdbus::Struct<bool, bool, Details>; ///< is authorized, is challenge, details

/// The main bundle's identifier, or "".
std::string BundleIdentifier()
{
    std::array<char, 256> text {};
    CFBundleRef const bundle = CFBundleGetMainBundle();
    CFStringRef const identifier = bundle != nullptr ? CFBundleGetIdentifier(bundle) : nullptr;
    if (identifier == nullptr
        || !CFStringGetCString(identifier, text.data(), text.size(), kCFStringEncodingUTF8))
        return {};
    return text.data();
}

/// When this process was started, in clock ticks since the host's start; 0 when the host does not tell.
uint64_t StartTime()
{
    std::ifstream file("/proc/self/stat");
    std::string text(std::istreambuf_iterator<char>(file), {});
    // The program's name, in parentheses, may itself hold blanks and parentheses. Nineteen fields follow first.
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string skipped;
    for (int i = 0; i < 19; ++i)
        fields >> skipped;
    uint64_t ticks = 0;
    fields >> ticks;
    return ticks;
}

/// This process; with its start time, since the number alone could be another's by the time of the answer.
Subject ThisProcess()
{
    return { "unix-process",
        { { "pid", sdbus::Variant(static_cast<uint32_t>(getpid())) },
            { "start-time", sdbus::Variant(StartTime()) },
            { "uid", sdbus::Variant(static_cast<int32_t>(getuid())) } } };
}

PolkitAnswer AnswerOf(const Result& result)
{
    if (result.get<0>())
        return PolkitAnswer::granted;
    if (result.get<2>().contains("polkit.dismissed"))
        return PolkitAnswer::dismissed;
    return result.get<1>() ? PolkitAnswer::noAgent : PolkitAnswer::denied;
}

}

std::string PolkitAction(const std::string& right)
{
    const std::string identifier = BundleIdentifier();
    const bool hasPolicy
        = !identifier.empty() && access((kPolicyFolder + identifier + ".policy").c_str(), F_OK) == 0;
    return hasPolicy ? identifier + '.' + right : kGenericAction;
}

PolkitAnswer AskPolkit(const std::string& action, bool mayInteract)
try {
    const auto bus = sdbus::createSystemBusConnection();
    const auto authority
        = sdbus::createProxy(*bus, "org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority");
    Result result;
    authority->callMethod("CheckAuthorization")
        .onInterface("org.freedesktop.PolicyKit1.Authority")
        .withTimeout(mayInteract ? kAsLongAsTheUserTakes : kAsLongAsTheBusAllows)
        .withArguments(
            ThisProcess(), action, Details(), mayInteract ? kAllowUserInteraction : 0, std::string())
        .storeResultsTo(result);
    return AnswerOf(result);
} catch (const sdbus::Error&) {
    return PolkitAnswer::unavailable;
}
