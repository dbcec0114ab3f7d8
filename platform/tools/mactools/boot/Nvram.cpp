#include "boot/Nvram.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <iostream>

namespace {

constexpr const char* kName = "nvram";
constexpr const char* kUsage = R"(nvram [-x] [-p] [-d name] [-c] [name[=value] ...]
	-x         print all as an XML property list
	-p         print all variables
	-d         delete the variable of that name
	-c         delete all variables
	name=value set a variable
	name       print a variable
)";
constexpr const char* kHexadecimal = "0123456789abcdef";

int WrongUse()
{
    std::cerr << "usage: " << kUsage;
    return 1;
}

/// Works through the arguments of one command.
class Command {
public:
    Command(const Arguments& arguments, iokit::Nvram& nvram, std::ostream& out)
        : fNext(arguments.begin())
        , fEnd(arguments.end())
        , fNvram(nvram)
        , fOut(out)
    {
    }

    int run()
    {
        int status = 0;
        while (status == 0 && fNext != fEnd) {
            const std::string& argument = *fNext++;
            status = argument.starts_with('-') ? options(argument.substr(1)) : variable(argument);
        }
        return status;
    }

private:
    int options(const std::string& letters)
    {
        int status = letters.empty() ? WrongUse() : 0;
        for (size_t i = 0; status == 0 && i < letters.size(); ++i)
            status = option(letters[i]);
        return status;
    }

    int option(char letter)
    {
        switch (letter) {
        case 'x':
            fIsXML = true;
            return 0;
        case 'p':
            return printAll();
        case 'd':
            return fNext != fEnd ? remove(*fNext++) : WrongUse();
        case 'c':
            return told(fNvram.clear(), "Error deleting variables");
        default:
            return WrongUse();
        }
    }

    int variable(const std::string& argument)
    {
        const size_t equals = argument.find('=');
        if (equals == std::string::npos)
            return print(argument);
        const std::string name = argument.substr(0, equals);
        return told(fNvram.set(name, NvramValue(argument.substr(equals + 1))),
            "Error setting variable - '" + name + '\'');
    }

    int remove(const std::string& name)
    {
        return told(fNvram.remove(name), "Error deleting variable - '" + name + '\'');
    }

    int print(const std::string& name)
    {
        iokit::NvramVariables variables;
        int error = fNvram.read(variables);
        const auto found = variables.find(name);
        if (error == 0 && found == variables.end())
            error = ENOENT;
        if (error == 0)
            write(*found);
        return told(error, "Error getting variable - '" + name + '\'');
    }

    int printAll()
    {
        iokit::NvramVariables variables;
        if (const int error = fNvram.read(variables))
            return told(error, "Error getting variables");
        if (fIsXML)
            return WritePropertyList(kName, iokit::NvramProperties(variables).get(), fOut);
        for (const auto& variable : variables)
            write(variable);
        return 0;
    }

    void write(const iokit::NvramVariables::value_type& variable)
    {
        fOut << variable.first << '\t' << NvramText(variable.second) << '\n';
    }

    static int told(int error, const std::string& what)
    {
        return error == 0 ? 0 : Complain(kName, what + ": " + NvramErrorText(error));
    }

    Arguments::const_iterator fNext;
    Arguments::const_iterator fEnd;
    iokit::Nvram& fNvram;
    std::ostream& fOut;
    bool fIsXML = false;
};

}

int Nvram(const Arguments& arguments)
{
    return ChangeNvram(arguments, *iokit::StartupVolumesNvram(), std::cout);
}

int ChangeNvram(const Arguments& arguments, iokit::Nvram& nvram, std::ostream& out)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    return arguments.empty() ? WrongUse() : Command(arguments, nvram, out).run();
}

std::string NvramErrorText(int error)
{
    switch (error) {
    case ENOENT:
        return "(iokit/common) data was not found";
    case EBADMSG:
        return "the variables' file is damaged";
    case EINVAL:
        return "there can be no such variable, or it cannot have this value";
    default:
        return std::strerror(error);
    }
}

std::string NvramText(const std::string& value)
{
    std::string text;
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if (c >= ' ' && c <= '~' && c != '%')
            text += c;
        else
            text.append({ '%', kHexadecimal[byte / 16], kHexadecimal[byte % 16] });
    }
    return text;
}

std::string NvramValue(const std::string& text)
{
    std::string value;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            value += text[i];
            continue;
        }
        const char* const digits = text.c_str() + i + 1; // a null ends them
        unsigned char byte = 0;
        const char* const end = digits + std::min<size_t>(2, text.size() - i - 1);
        if (end - digits != 2 || std::from_chars(digits, end, byte, 16).ptr != end)
            return text;
        value += static_cast<char>(byte);
        i += 2;
    }
    return value;
}
