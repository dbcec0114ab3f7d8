#include "HostText.h"

#include "Descriptor.h"
#include "ReadWhole.h"

#include <fcntl.h>

std::optional<std::string> HostText(const std::string& file, size_t limit)
{
    // Opening a pipe would wait for its writer, were it not for O_NONBLOCK.
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor)
        return {};
    std::string text;
    if (ReadWhole(descriptor.get(), limit, text) != 0)
        return {};
    return text;
}
