#include "platform/tools/launchd/job/Job.h"

#include <cstdlib>

/// Any bytes give either a whole job or a reason, never both.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    std::string problem;
    const auto job = launchd::ParseJob({ reinterpret_cast<const char*>(data), size }, problem);
    const bool isWhole
        = job && !job->label.empty() && !job->arguments.empty() && job->program.starts_with('/');
    if (isWhole != problem.empty())
        std::abort();
    return 0;
}
