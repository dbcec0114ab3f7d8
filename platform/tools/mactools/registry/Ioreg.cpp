#include "registry/Ioreg.h"

#include "registry/RegistryArchive.h"
#include "registry/RegistryText.h"

#include <Host/ProgramStart.h>
#include <Host/TextReading.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/Relatives.h>

#include <iostream>
#include <optional>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr const char* kUsage
    = "usage: ioreg [-abilrx] [-c class] [-d depth] [-k key] [-n name] [-p plane] [-w width]\n"
      "where options are:\n"
      "\t-a archive output\n"
      "\t-b show object name in bold\n"
      "\t-c list properties of objects with the given class\n"
      "\t-d limit tree to the given depth\n"
      "\t-i show object inheritance\n"
      "\t-k list properties of objects with the given key\n"
      "\t-l list properties of all objects\n"
      "\t-n list properties of objects with the given name\n"
      "\t-p traverse registry over the given plane (IOService is default)\n"
      "\t-r show subtrees rooted by the given criteria\n"
      "\t-w clip output to the given line width (0 is unlimited)\n"
      "\t-x show numeric data as hexadecimal\n";

constexpr size_t kUsualWidth = 80;

struct Options {
    RegistryView view;
    std::string plane = "IOService";
    bool archive = false;
};

size_t TerminalWidth()
{
    winsize size {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

bool Read(const char* digits, size_t& number)
{
    const int64_t read = NumberIn(digits).value_or(-1);
    number = static_cast<size_t>(read);
    return read >= 0;
}

/// @return false for an option that there is not, or a value that does not fit.
bool Apply(int option, const char* value, Options& options)
{
    RegistryView& view = options.view;
    switch (option) {
    case 'a':
        return options.archive = true;
    case 'b':
        return view.boldNames = true;
    case 'i':
        return view.inheritance = true;
    case 'l':
        return view.allProperties = true;
    case 'r':
        return view.onlySubtrees = true;
    case 'x':
        return view.hexadecimal = true;
    case 'c':
        view.className = value;
        return true;
    case 'k':
        view.key = value;
        return true;
    case 'n':
        view.name = value;
        return true;
    case 'p':
        options.plane = value;
        return true;
    case 'd':
        return Read(value, view.depth);
    case 'w':
        return Read(value, view.width);
    default:
        return false;
    }
}

/// @return none where they cannot be understood.
std::optional<Options> Parse(const Arguments& arguments)
{
    Options options;
    options.view.width = TerminalWidth();
    std::vector<std::string> texts { "ioreg" };
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers = PointersTo(texts);
    const int count = static_cast<int>(texts.size());
    opterr = 0;
    optind = 0; // starts anew
    for (int option = 0; (option = getopt(count, pointers.data(), "+abilrxc:d:k:n:p:w:")) != -1;) {
        if (!Apply(option, optarg, options))
            return {};
    }
    return optind == count ? std::optional(options) : std::nullopt;
}

}

int Ioreg(const Arguments& arguments)
{
    std::optional<Options> options = Parse(arguments);
    if (!options) {
        std::cerr << kUsage;
        return 1;
    }
    const iokit::Plane* const plane = iokit::PlaneNamed(options->plane.c_str());
    if (plane == nullptr)
        return Complain("ioreg", "there is no plane \"" + options->plane + '"');
    options->view.plane = *plane;
    const auto registry = iokit::CurrentRegistry();
    if (!options->archive) {
        PrintRegistry(std::cout, *registry, options->view);
        return 0;
    }
    return PrintRegistryArchive(std::cout, *registry, options->view)
        ? 0
        : Complain("ioreg", "not enough memory for an entry");
}
