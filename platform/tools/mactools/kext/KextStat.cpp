#include "kext/KextStat.h"

#include "kext/Extensions.h"

#include <Host/HostPath.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <optional>
#include <sysexits.h>

namespace {

constexpr const char* kName = "kextstat";
constexpr const char* kUsage = R"(usage: kextstat [-k] [-l] [-b bundle_identifier]...

  -b, --bundle-id identifier    tell only of this extension; may be given several times
  -k, --no-kernel-components    leave out what stands for parts of the kernel
  -l, --list-only               leave out the line of headings
  -h, --help                    print this text

Shows the kernel extensions of the start-up volume: their numbers, how many others link against them, and the numbers
of those that they link against.
)";
constexpr const char* kHeadings
    = "Index Refs Address            Size       Wired      Name (Version) UUID <Linked Against>";

struct Request {
    std::vector<std::string> identifiers; ///< empty for all
    bool withKernel = true;
    bool withHeadings = true;
};

std::optional<Request> ReadRequest(const Arguments& arguments)
{
    Request request;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "-k" || *argument == "--no-kernel-components")
            request.withKernel = false;
        else if (*argument == "-l" || *argument == "--list-only")
            request.withHeadings = false;
        else if ((*argument == "-b" || *argument == "--bundle-id") && ++argument != arguments.end())
            request.identifiers.push_back(*argument);
        else
            return {};
    }
    return request;
}

bool Contains(const std::vector<std::string>& texts, const std::string& text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

bool IsWanted(const kext::Extension& extension, const Request& request)
{
    return (request.withKernel || !extension.isPartOfKernel)
        && (request.identifiers.empty() || Contains(request.identifiers, extension.identifier));
}

/// " <1 3>", or nothing where an extension links against none of the others.
std::string LinkedAgainst(const kext::Extension& extension, const std::vector<kext::Extension>& all)
{
    std::string numbers;
    for (size_t i = 0; i < all.size(); ++i) {
        if (Contains(extension.libraries, all[i].identifier))
            numbers += (numbers.empty() ? "" : " ") + std::to_string(i + 1);
    }
    return numbers.empty() ? numbers : " <" + numbers + ">";
}

void Print(size_t index, const std::vector<kext::Extension>& all)
{
    const kext::Extension& extension = all[index];
    const auto references = std::count_if(all.begin(), all.end(),
        [&](const kext::Extension& other) { return Contains(other.libraries, extension.identifier); });
    std::cout << std::setw(5) << index + 1 << ' ' << std::setw(4) << references << ' ' << std::left
              << std::setw(18) << 0 << ' ' << std::setw(10) << 0 << ' ' << std::setw(10) << 0 << ' '
              << std::right << extension.identifier << " (" << extension.version << ")"
              << LinkedAgainst(extension, all) << '\n';
}

}

int KextStat(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    const std::optional<Request> request = ReadRequest(arguments);
    if (!request) {
        std::cerr << kUsage;
        return EX_USAGE;
    }
    if (request->withHeadings)
        std::cout << kHeadings << '\n';
    const std::vector<kext::Extension> all = kext::ReadExtensions(HostStartupVolume(), kName).all;
    for (size_t i = 0; i < all.size(); ++i) {
        if (IsWanted(all[i], *request))
            Print(i, all);
    }
    return 0;
}
