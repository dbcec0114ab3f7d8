#pragma once

#include "job/ServiceManager.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace launchd {

// How launchctl and a supervisor talk, over a Unix stream socket. Each connection carries one request and one
// reply, both framed alike: the size in bytes as 4 bytes, most significant first, then a binary property list
// of that size whose root is a dictionary:
//
//   request  "Verb"    string   "load", "unload" or "list"
//            "Path"    string   load, unload: JobPathOf() the job's file
//            "Label"   string   unload: the job's label where the file could still be read
//            "Session" string   load: session type that the job is loaded into
//            "Job"     data     load: the file's bytes, an XML or binary property list
//   reply    "Status"  integer  see ExitStatus
//            "Message" string   one sentence where the status is not 0
//            "Jobs"    array    list: a dictionary with "Label", "Program" and "Session" (strings),
//                               "LastExitStatus" (integer) and, while it runs and is not being
//                               ended, "PID" (integer)
//
// The reply to a load comes when the job's program runs or could not be run; that to an unload when the job
// is gone. A connection that ends without a reply means that the supervisor ended: the request may be put to
// the next one.

constexpr size_t frameHeaderSize = 4;
constexpr size_t maxRequestPath = 64UL * 1024;
constexpr size_t maxRequestSize = 1024UL * 1024 + maxRequestPath + 4096;
constexpr size_t maxReplySize = 64UL * 1024 * 1024;

enum class Verb { load, unload, list };

struct Request {
    Verb verb = Verb::list;
    std::string path;
    std::string label;
    std::string session;
    std::string job;
};

struct Reply {
    Answer answer;
    std::vector<JobState> jobs;
};

/// @return a whole frame, or nothing for text that is not UTF-8, as a path can be.
std::optional<std::string> Encode(const Request& request);
std::optional<std::string> Encode(const Reply& reply);

/// @param body a frame without its header. @return nothing for anything that Encode() would not have made.
std::optional<Request> DecodeRequest(std::string_view body);
std::optional<Reply> DecodeReply(std::string_view body);

/// @param frame at least frameHeaderSize bytes. @return the size of the body that its header announces.
size_t BodySize(std::string_view frame);

} // namespace launchd
