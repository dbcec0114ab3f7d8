#include "HostText.h"

#include "Descriptor.h"
#include "ReadWhole.h"

#include <algorithm>
#include <fcntl.h>

std::optional<std::string> HostText(const std::string& file, size_t limit)
{
    // Opening a pipe would wait for its writer, were it not for O_NONBLOCK.
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor)
        return {};
    std::string text(limit + 1, '\0');
    if (ReadWhole(descriptor.get(), text) != 0)
        return {};
    return text;
}

std::optional<std::string> HostLine(const std::string& file)
{
    std::optional<std::string> text = HostText(file);
    if (text) {
        text->resize(std::min(text->find_first_of(std::string("\n\0", 2)), text->size()));
        text->resize(text->find_last_not_of(" \t") + 1);
    }
    return text;
}
