#include "Protocol.h"

#include "job/KeyReader.h"
#include "job/PropertyList.h"

#include <climits>

namespace launchd {

namespace {
struct VerbName {
    Verb verb;
    const char* name;
};
constexpr VerbName verbNames[]
    = { { Verb::load, "load" }, { Verb::unload, "unload" }, { Verb::list, "list" } };

std::optional<std::string> Frame(CFDictionaryRef dictionary)
{
    const std::optional<std::string> body = WriteDictionary(dictionary, kCFPropertyListBinaryFormat_v1_0);
    if (!body || body->size() > maxReplySize)
        return std::nullopt;
    std::string frame;
    for (const unsigned shift : { 24U, 16U, 8U, 0U })
        frame.push_back(static_cast<char>((body->size() >> shift) & 0xFF));
    return frame + *body;
}

CFOwned<CFMutableDictionaryRef> Dictionary(const JobState& job)
{
    CFOwned<CFMutableDictionaryRef> dictionary = MakeDictionary();
    SetText(dictionary.get(), "Label", job.label);
    SetText(dictionary.get(), "Program", job.program);
    SetText(dictionary.get(), "Session", job.session);
    SetInteger(dictionary.get(), "LastExitStatus", job.lastExitStatus);
    if (job.pid != 0)
        SetInteger(dictionary.get(), "PID", job.pid);
    return dictionary;
}

JobState ReadJobState(CFDictionaryRef dictionary)
{
    KeyReader keys(dictionary);
    JobState job;
    job.label = keys.text("Label");
    job.program = keys.text("Program");
    job.session = keys.text("Session");
    job.pid = static_cast<pid_t>(keys.integer("PID", 0, 0, INT_MAX));
    job.lastExitStatus = static_cast<int>(keys.integer("LastExitStatus", 0, -INT_MAX, INT_MAX));
    return job;
}

/// @return false when the array holds anything else than dictionaries.
bool ReadJobStates(CFArrayRef array, std::vector<JobState>& jobs)
{
    for (CFIndex index = 0; index < CFArrayGetCount(array); ++index) {
        const CFTypeRef entry = CFArrayGetValueAtIndex(array, index);
        if (CFGetTypeID(entry) != CFDictionaryGetTypeID())
            return false;
        jobs.push_back(ReadJobState(static_cast<CFDictionaryRef>(entry)));
    }
    return true;
}

bool IsComplete(const Request& request)
{
    switch (request.verb) {
    case Verb::load:
        return !request.path.empty() && !request.session.empty() && !request.job.empty();
    case Verb::unload:
        return !request.path.empty();
    case Verb::list:
        return true;
    }
    return false;
}
}

std::optional<std::string> Encode(const Request& request)
{
    const CFOwned<CFMutableDictionaryRef> dictionary = MakeDictionary();
    for (const auto& [verb, name] : verbNames) {
        if (verb == request.verb)
            SetText(dictionary.get(), "Verb", name);
    }
    const bool isText = SetText(dictionary.get(), "Path", request.path)
        && SetText(dictionary.get(), "Label", request.label)
        && SetText(dictionary.get(), "Session", request.session);
    SetBytes(dictionary.get(), "Job", request.job);
    return isText ? Frame(dictionary.get()) : std::nullopt;
}

std::optional<std::string> Encode(const Reply& reply)
{
    const CFOwned<CFMutableDictionaryRef> dictionary = MakeDictionary();
    SetInteger(dictionary.get(), "Status", reply.answer.status);
    if (!SetText(dictionary.get(), "Message", reply.answer.message))
        return std::nullopt;

    const CFOwned<CFMutableArrayRef> jobs(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const JobState& job : reply.jobs)
        CFArrayAppendValue(jobs.get(), Dictionary(job).get());
    const CFOwned<CFStringRef> key = MakeText("Jobs");
    CFDictionarySetValue(dictionary.get(), key.get(), jobs.get());
    return Frame(dictionary.get());
}

std::optional<Request> DecodeRequest(std::string_view body)
{
    std::string problem;
    const CFOwned<CFMutableDictionaryRef> dictionary = ReadDictionary(body, problem);
    if (!dictionary)
        return std::nullopt;

    KeyReader keys(dictionary.get());
    Request request;
    const std::string verb = keys.text("Verb");
    request.path = keys.text("Path");
    request.label = keys.text("Label");
    request.session = keys.text("Session");
    request.job = keys.bytes("Job");
    if (!keys.problem().empty() || request.path.size() > maxRequestPath)
        return std::nullopt;
    for (const auto& [known, name] : verbNames) {
        request.verb = known;
        if (verb == name)
            return IsComplete(request) ? std::optional(std::move(request)) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<Reply> DecodeReply(std::string_view body)
{
    std::string problem;
    const CFOwned<CFMutableDictionaryRef> dictionary = ReadDictionary(body, problem);
    if (!dictionary)
        return std::nullopt;

    KeyReader keys(dictionary.get());
    Reply reply;
    reply.answer.status = static_cast<int>(keys.integer("Status", ExitStatus::failed, 0, 255));
    reply.answer.message = keys.text("Message");
    const CFTypeRef jobs = keys.value("Jobs");
    const bool isGood = keys.problem().empty() && jobs && CFGetTypeID(jobs) == CFArrayGetTypeID()
        && ReadJobStates(static_cast<CFArrayRef>(jobs), reply.jobs);
    return isGood ? std::optional(std::move(reply)) : std::nullopt;
}

size_t BodySize(std::string_view frame)
{
    size_t size = 0;
    for (size_t index = 0; index < frameHeaderSize; ++index)
        size = size << 8 | static_cast<unsigned char>(frame[index]);
    return size;
}

} // namespace launchd
