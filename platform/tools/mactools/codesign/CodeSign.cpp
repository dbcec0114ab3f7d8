#include "codesign/CodeSign.h"

#include "codesign/Bundle.h"
#include "codesign/OpenBeneath.h"
#include "codesign/Seal.h"
#include "codesign/Verification.h"

#include <Host/HostPath.h>
#include <Host/TextReading.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <optional>
#include <sys/stat.h>

namespace {

constexpr int kWrongUse = 2;

constexpr const char* kUsage
    = R"(usage: codesign -v | --verify [-v | --verbose[=N]] [--deep] [--strict] path ...
       codesign -d | --display [-v | --verbose[=N]] path ...

  -v, --verify       check that the resources of the bundles are as they were sealed; -v alone means this,
                     beside another operation it means --verbose
  -d, --display      tell on standard error what is known of the bundles and their seals
  -v, --verbose[=N]  say more: which files are wrong, and that a bundle is valid
  --deep             check nested code in full, which is always done
  --strict           refuse links that lead out of the bundle, and files beside its contents

The exit status is 0 when all is well, 1 when a path is not valid and 2 for a wrong command line.
)";

enum class Operation { none, verify, display };

struct Request {
    Operation operation = Operation::none;
    int verbosity = 0;
    bool strict = false;
    std::vector<std::string> paths;
};

bool Choose(Operation operation, Request& request)
{
    const bool fits = request.operation == Operation::none || request.operation == operation;
    request.operation = operation;
    return fits;
}

bool ReadLevel(const std::string& digits, int& level)
{
    const int64_t number = NumberIn(digits).value_or(-1);
    level = static_cast<int>(std::clamp<int64_t>(number, 0, 9));
    return number >= 0;
}

bool ReadLongOption(const std::string& option, Request& request)
{
    static const std::string verboseLevel = "--verbose=";
    if (option == "--verify")
        return Choose(Operation::verify, request);
    if (option == "--display")
        return Choose(Operation::display, request);
    if (option.starts_with(verboseLevel))
        return ReadLevel(option.substr(verboseLevel.size()), request.verbosity);
    if (option == "--verbose")
        ++request.verbosity;
    else if (option == "--strict")
        request.strict = true;
    else
        return option == "--deep";
    return true;
}

/// @param verboseOrVerify counts the letters whose meaning depends on the other options.
bool ReadLetters(const std::string& option, Request& request, int& verboseOrVerify)
{
    return std::all_of(option.begin() + 1, option.end(), [&](char letter) {
        if (letter == 'v')
            return ++verboseOrVerify > 0;
        return letter == 'd' && Choose(Operation::display, request);
    });
}

std::optional<Request> ReadRequest(const Arguments& arguments)
{
    Request request;
    int verboseOrVerify = 0;
    auto argument = arguments.begin();
    for (; argument != arguments.end() && argument->size() > 1 && argument->front() == '-'; ++argument) {
        if (*argument == "--") {
            ++argument;
            break;
        }
        const bool isGood = argument->starts_with("--") ? ReadLongOption(*argument, request)
                                                        : ReadLetters(*argument, request, verboseOrVerify);
        if (!isGood)
            return {};
    }
    request.paths.assign(argument, arguments.end());
    if (request.operation == Operation::none && verboseOrVerify > 0) {
        request.operation = Operation::verify;
        --verboseOrVerify;
    }
    request.verbosity += verboseOrVerify;
    if (request.operation == Operation::none || request.paths.empty())
        return {};
    return request;
}

/// @return false, having said why.
bool Refuse(const std::string& path, const std::string& reason)
{
    std::cerr << path << ": " << reason << '\n';
    return false;
}

bool Verify(const codesign::Bundle& bundle, const std::string& path, const Request& request)
{
    const codesign::Finding finding = codesign::Verify(bundle, request.strict);
    if (finding.problem.empty())
        return request.verbosity == 0 || !Refuse(path, "valid on disk");
    Refuse(path, finding.problem);
    if (!finding.subcomponent.empty())
        std::cerr << "In subcomponent: " << finding.subcomponent << '\n';
    if (request.verbosity > 0) {
        for (const std::string& detail : finding.details)
            std::cerr << detail << '\n';
    }
    return false;
}

bool Display(const codesign::Bundle& bundle, const std::string& path)
{
    codesign::Seal seal;
    if (const std::string problem = codesign::ReadSeal(bundle, seal); !problem.empty())
        return Refuse(path, problem);
    if (codesign::OpenBeneath(bundle.contents.get(), bundle.executable, O_PATH))
        std::cerr << "Executable=" << bundle.pathOf(bundle.executable) << '\n';
    std::cerr << "Identifier=" << bundle.identifier << '\n'
              << "Format=" << (bundle.path.ends_with(".app") ? "app bundle" : "bundle") << '\n'
              << "Info.plist=not bound\n"
              << "Sealed Resources version=" << seal.version << " rules=" << seal.rules.count()
              << " files=" << seal.items.size() << '\n';
    return true;
}

bool LookAt(const std::string& path, const Request& request)
{
    struct stat info = {};
    if (stat(HostPath(path).c_str(), &info) != 0)
        return Refuse(path, std::strerror(errno));
    codesign::Bundle bundle;
    const int error
        = S_ISDIR(info.st_mode) ? codesign::OpenBundle(path, bundle) : codesign::OpenBundleOf(path, bundle);
    if (error != 0)
        return Refuse(path, error == ENOENT ? codesign::kUnsigned : std::strerror(error));
    return request.operation == Operation::verify ? Verify(bundle, path, request) : Display(bundle, path);
}

}

int CodeSign(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    const std::optional<Request> request = ReadRequest(arguments);
    if (!request) {
        std::cerr << kUsage;
        return kWrongUse;
    }
    bool allGood = true;
    for (const std::string& path : request->paths)
        allGood = LookAt(path, *request) && allGood;
    return allGood ? 0 : 1;
}
