#pragma once

#include "app/unattended/Installation.h"
#include <CoreServices/CoreServices.h>
#include <string>

/// How a run ended; the numbers are the process's exit statuses and part of its interface.
enum class Outcome {
    done = 0,
    failed = 1,
    usage = 2,
    doneRestartNeeded = 3,
    licenseNotAccepted = 4,
    authorizationRefused = 5,
    nothingToDo = 6,
    notSeenOnDisk = 7,
};

/// What a run tells at its end.
struct Report {
    Outcome outcome = Outcome::done;
    OSStatus status = noErr; ///< of the last back-end step
    std::string offeredAgentVersion; ///< the installer's own
    std::string offeredDriverVersion; ///< of the driver that the installer carries
    bool restartNeeded = false; ///< this run changed the driver
    Installation installation;
};

/// The outcome for people, with the reason where a back-end step failed.
std::string OutcomeSentence(Outcome outcome, OSStatus status);

/// A few lines for people; each ends with a newline.
std::string ReportAsText(const Report& report);
/// One JSON object, ended with a newline.
std::string ReportAsJSON(const Report& report);

/// A version as people write it; "" for 0.
std::string VersionText(uint32_t version);
