#include "RecordedRegistry.h"

#if __APPLE__

std::string HostUseRecordedRegistry(const std::string& /*path*/, size_t* /*unreadable*/)
{
    return "the device registry of this system cannot be replaced by a recorded one";
}

#else

#include <IOKit/CurrentRegistry.h>
#include <IOKit/Recording.h>

std::string HostUseRecordedRegistry(const std::string& path, size_t* unreadable)
{
    std::string problem;
    std::optional<iokit::Recording> recording = iokit::ReadRecordingFile(path, problem);
    if (!recording)
        return problem;
    *unreadable = recording->unreadable;
    iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(recording->registry)));
    return "";
}

#endif
