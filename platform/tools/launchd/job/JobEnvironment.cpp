#include "JobEnvironment.h"

#include <cstdlib>

namespace launchd {

namespace {
constexpr const char* volumeVariables[] = { "CFFIXED_USER_HOME", "ZEK_STARTUP_VOLUME", "HOST_TOOLS_FOLDER" };
}

std::map<std::string, std::string> JobEnvironment(const Job& job)
{
    std::map<std::string, std::string> environment = job.environment;
    // emplace() keeps what the job asks for.
    environment.emplace("PATH", "/usr/bin:/bin:/usr/sbin:/sbin");
    for (const char* name : volumeVariables) {
        if (const char* value = std::getenv(name))
            environment.emplace(name, value);
    }
    return environment;
}

} // namespace launchd
