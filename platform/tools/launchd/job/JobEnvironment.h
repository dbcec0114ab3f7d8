#pragma once

#include "Job.h"

namespace launchd {

/// The environment of a job, whoever runs it: what the job asks for, a PATH, and the variables that lead it
/// to the start-up volume, the tools and the home of whoever loads it.
std::map<std::string, std::string> JobEnvironment(const Job& job);

} // namespace launchd
