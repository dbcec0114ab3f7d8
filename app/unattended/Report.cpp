#include "app/unattended/Report.h"

#include "settings/NumVersion.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <Security/Authorization.h>
#include <algorithm>

namespace {

struct OutcomeTexts {
    const char* word;
    const char* sentence;
};

OutcomeTexts TextsOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::done:
        return { "done", "Done." };
    case Outcome::failed:
        return { "failed", "Failed." };
    case Outcome::usage:
        return { "usage", "The command line was not understood." };
    case Outcome::doneRestartNeeded:
        return { "restart-needed", "Done. The driver needs a restart." };
    case Outcome::licenseNotAccepted:
        return { "license-not-accepted",
            "The license agreement was not accepted; --accept-license does that." };
    case Outcome::authorizationRefused:
        return { "authorization-refused", "The administrator rights were refused." };
    case Outcome::nothingToDo:
        return { "nothing-to-do", "Nothing to do." };
    case Outcome::notSeenOnDisk:
        return { "not-seen-on-disk", "Carried out, but the result is not what is found on the disk." };
    }
    return { "failed", "Failed." };
}

/// What the back ends mean by an error number.
const char* ReasonOf(OSStatus status)
{
    switch (status) {
    case permErr:
        return "a folder could not be made, the agent could not be copied, or the Trash did not take it.";
    case fnfErr:
        return "the installer lacks something that it should carry, or there is no home folder.";
    case memFullErr:
        return "launchctl could not be started.";
    case errAuthorizationToolExecuteFailure:
        return "the driver tool cannot be run, or others could have changed it.";
    default:
        return "a step was refused.";
    }
}

const char* LaunchAgentWord(Installation::LaunchAgent state)
{
    switch (state) {
    case Installation::LaunchAgent::whole:
        return "whole";
    case Installation::LaunchAgent::damaged:
        return "damaged";
    case Installation::LaunchAgent::absent:
        break;
    }
    return "absent";
}

std::string Row(const char* name, const std::string& value, const std::string& path)
{
    std::string line = name;
    line.resize(14, ' ');
    line += value;
    if (!path.empty()) {
        line.resize(std::max<size_t>(line.size() + 2, 34), ' ');
        line += path;
    }
    return line + "\n";
}

std::string VersionOr(const char* missing, uint32_t version)
{
    return version == 0 ? missing : VersionText(version);
}

std::string JobText(const Installation& found)
{
    if (!found.jobLoaded)
        return "not loaded";
    return found.jobProcess == 0 ? "not running" : "process " + std::to_string(found.jobProcess);
}

QString Text(const std::string& utf8) { return QString::fromStdString(utf8); }

QJsonObject AgentObject(const Report& report)
{
    const Installation& found = report.installation;
    return {
        { "offeredVersion", Text(report.offeredAgentVersion) },
        { "installedVersion", Text(VersionText(found.agentVersion)) },
        { "path", Text(found.agentPath) },
        { "folderPresent", found.agentFolder },
        { "launchAgent", LaunchAgentWord(found.launchAgent) },
        { "launchAgentPath", Text(found.launchAgentPath) },
        { "loaded", found.jobLoaded },
        { "processID", static_cast<qint64>(found.jobProcess) },
    };
}

QJsonObject DriverObject(const Report& report)
{
    const Installation& found = report.installation;
    return {
        { "offeredVersion", Text(report.offeredDriverVersion) },
        { "installedVersion", Text(VersionText(found.driverVersion)) },
        { "path", Text(found.driverPath) },
        { "present", found.driverFolder },
        { "earlierGenerationPresent", found.oldDriver },
    };
}

}

std::string VersionText(uint32_t version)
{
    if (version == 0)
        return "";
    char text[16];
    ConvertNumVersionToString(version, text, sizeof text, true);
    return text;
}

std::string OutcomeSentence(Outcome outcome, OSStatus status)
{
    std::string sentence = TextsOf(outcome).sentence;
    if (status == noErr || outcome == Outcome::authorizationRefused)
        return sentence;
    return sentence + " Error " + std::to_string(status) + ": " + ReasonOf(status);
}

std::string ReportAsText(const Report& report)
{
    const Installation& found = report.installation;
    std::string text;
    text += Row(
        "Agent", VersionOr("not installed", found.agentVersion), found.agentFolder ? found.agentPath : "");
    text += Row("LaunchAgent", LaunchAgentWord(found.launchAgent),
        found.launchAgent == Installation::LaunchAgent::absent ? "" : found.launchAgentPath);
    text += Row("Job", JobText(found), "");
    text += Row("Driver", VersionOr("not installed", found.driverVersion),
        found.driverFolder ? found.driverPath : "");
    if (found.oldDriver)
        text += Row("Old driver", "installed", "");
    text
        += Row("Restart", found.restartRequest.empty() ? "not requested" : "requested", found.restartRequest);
    return text;
}

std::string ReportAsJSON(const Report& report)
{
    const QJsonObject object {
        { "result", TextsOf(report.outcome).word },
        { "exitStatus", static_cast<int>(report.outcome) },
        { "status", report.status },
        { "agent", AgentObject(report) },
        { "driver", DriverObject(report) },
        { "settingsStored", report.installation.settings },
        { "restartNeeded", report.restartNeeded },
        { "restartRequested", !report.installation.restartRequest.empty() },
    };
    return QJsonDocument(object).toJson().toStdString();
}
