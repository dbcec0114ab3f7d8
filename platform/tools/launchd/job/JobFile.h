#pragma once

#include "Answer.h"
#include "Job.h"

#include <string>
#include <vector>

namespace launchd {

/// A LaunchAgent property list as it lies on disk, found good.
struct JobFile {
    std::string path; ///< see JobPathOf()
    std::string bytes; ///< the file as it is
    Job job;
};

/// One name for a job's file, however its caller spells it and whether it still exists: the host path with
/// the links of its folder resolved. A link in the last place is kept: it is the link that the user manages.
std::string JobPathOf(const std::string& given);

/// The property lists that a path given to launchctl means: the path itself or, where it is a folder, every
/// file in it whose name ends in ".plist" and does not begin with a dot, in the order of their names.
/// @param files gets the paths to add. @return a refusal when the folder cannot be read.
Answer FindJobFiles(const std::string& given, std::vector<std::string>& files);

/// Reads and checks the file. What others than its user or root could have written is refused: whoever can
/// write it decides what runs in the user's name.
/// @param given path as the user wrote it, which the messages show. @param file set only when the answer is
/// ok.
Answer ReadJobFile(const std::string& given, JobFile& file);

/// Writes the file anew with its Disabled key true, or without the key. Other keys stay; the file becomes
/// XML.
Answer WriteDisabled(const std::string& given, const JobFile& file, bool disabled);

} // namespace launchd
