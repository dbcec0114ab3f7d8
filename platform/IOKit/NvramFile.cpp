#include <IOKit/NvramFile.h>

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/FileBytes.h>
#include <Host/AtomicFile.h>
#include <Host/RecordLock.h>

#include <cerrno>
#include <sys/stat.h>

namespace iokit {

namespace {

/// What a file has, as far as it has been taken from there.
struct Taking {
    NvramVariables& variables;
    bool isDamaged = false;
};

std::optional<std::string> BytesOf(CFTypeRef value)
{
    if (CFGetTypeID(value) == CFStringGetTypeID())
        return cf::TextOf(value);
    if (CFGetTypeID(value) != CFDataGetTypeID())
        return {};
    const auto* const data = static_cast<CFDataRef>(value);
    return std::string(
        reinterpret_cast<const char*>(CFDataGetBytePtr(data)), static_cast<size_t>(CFDataGetLength(data)));
}

void Take(const void* key, const void* value, void* context)
{
    auto& taking = *static_cast<Taking*>(context);
    const std::string name = cf::TextOf(key);
    std::optional<std::string> bytes = BytesOf(value);
    if (IsNvramName(name) && bytes)
        taking.variables[name] = std::move(*bytes);
    else
        taking.isDamaged = true;
}

}

std::string NvramFile::version() const
{
    struct stat file { };
    if (stat(fPath.c_str(), &file) != 0)
        return {};
    return std::to_string(file.st_ino) + '.' + std::to_string(file.st_size) + '.'
        + std::to_string(file.st_mtim.tv_sec) + '.' + std::to_string(file.st_mtim.tv_nsec);
}

int NvramFile::read(NvramVariables& variables) const
{
    variables.clear();
    cf::Owned<CFDictionaryRef> values;
    if (const int error = ReadDictionaryFile(fPath, values))
        return error == ENOENT ? 0 : error;
    Taking taking { variables };
    if (values)
        CFDictionaryApplyFunction(values.get(), Take, &taking);
    if (values && !taking.isDamaged)
        return 0;
    variables.clear();
    return EBADMSG;
}

int NvramFile::clear()
{
    return update([](NvramVariables& variables) {
        variables.clear();
        return 0;
    });
}

int NvramFile::change(const std::string& name, const std::optional<std::string>& value)
{
    return update([&](NvramVariables& variables) {
        if (value)
            variables[name] = *value;
        else if (variables.erase(name) == 0)
            return ENOENT;
        return 0;
    });
}

int NvramFile::update(const std::function<int(NvramVariables&)>& edit)
{
    Descriptor lock;
    NvramVariables variables;
    int error = LockRecord(fPath, lock);
    if (error == 0)
        error = read(variables);
    if (error == 0)
        error = edit(variables);
    return error == 0 ? write(variables) : error;
}

int NvramFile::write(const NvramVariables& variables) const
{
    const cf::Owned<CFDataRef> data(CFPropertyListCreateData(
        nullptr, NvramProperties(variables).get(), kCFPropertyListXMLFormat_v1_0, 0, nullptr));
    if (!data)
        return ENOMEM;
    if (CFDataGetLength(data.get()) > kFileSizeLimit)
        return ENOSPC; // it could not be read again
    return WriteFileAtomically(
        fPath, CFDataGetBytePtr(data.get()), static_cast<size_t>(CFDataGetLength(data.get())));
}

}
