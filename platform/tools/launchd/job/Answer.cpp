#include "Answer.h"

namespace launchd {

Answer AlreadyLoaded(const std::string& path, const std::string& label, const std::string& holder)
{
    const std::string message = path + ": " + label + " is already loaded";
    return { ExitStatus::alreadyLoaded, holder == path ? message : message + " from " + holder };
}

Answer LoadedBut(const std::string& path, const std::string& label, const std::string& problem)
{
    return { ExitStatus::failed, path + ": " + label + " is loaded, but " + problem };
}

Answer NotFound(const std::string& path)
{
    return { ExitStatus::notFound, path + ": Could not find specified service" };
}

} // namespace launchd
