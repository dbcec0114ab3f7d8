#include <IOKit/Recording.h>

#include <Host/Descriptor.h>
#include <Host/ReadWhole.h>
#include <IOKit/RecordedArchive.h>
#include <IOKit/RecordedLines.h>
#include <IOKit/RecordedText.h>

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace iokit {

namespace {

constexpr size_t kSizeLimit = size_t { 256 } << 20U;

bool StartsXML(std::string_view line)
{
    return line.starts_with("<?xml") || line.starts_with("<plist") || line.starts_with("<!DOCTYPE plist");
}

/// @return 0 or an errno.
int ReadFile(const std::string& path, std::string& bytes)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat facts { };
    if (!file || fstat(file.get(), &facts) != 0)
        return errno;
    if (!S_ISREG(facts.st_mode))
        return S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    if (facts.st_size > static_cast<off_t>(kSizeLimit))
        return EFBIG;
    return ReadWhole(file.get(), kSizeLimit, bytes);
}

}

std::optional<Recording> ReadRecording(std::string_view bytes)
{
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    RecordedLines lines(bytes);
    for (std::optional<RecordedLine> line = lines.next(); line; line = lines.next()) {
        const std::string_view content = line->content();
        const std::string_view rest = bytes.substr(static_cast<size_t>(content.data() - bytes.data()));
        if (StartsXML(content))
            return ReadRegistryArchive(rest);
        if (line->isHeading())
            return ReadRegistryText(bytes.substr(static_cast<size_t>(line->text.data() - bytes.data())));
        // Pages of a web begin their text in the line of a tag.
        if (const size_t tag = line->text.find(">+-o "); tag != std::string_view::npos)
            return ReadRegistryText(
                bytes.substr(static_cast<size_t>(line->text.data() - bytes.data()) + tag + 1));
    }
    return {};
}

std::optional<Recording> ReadRecordingFile(const std::string& path, std::string& problem)
{
    std::string bytes;
    if (const int error = ReadFile(path, bytes); error != 0) {
        problem = error == EINVAL ? "it is not a file" : std::strerror(error);
        return {};
    }
    std::optional<Recording> recording = ReadRecording(bytes);
    if (!recording)
        problem = "there is no registry in it";
    return recording;
}

}
