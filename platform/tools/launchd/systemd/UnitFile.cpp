#include "UnitFile.h"

#include "job/JobEnvironment.h"
#include "job/PropertyList.h"

#include <Host/HostPath.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <sys/wait.h>

namespace launchd {

namespace {
constexpr size_t maxUnitName = 255;
constexpr size_t maxLine = 1024UL * 1024 - 1;
constexpr const char* graphicalTarget = "graphical-session.target";

// Keys of our own, which systemd passes over because of how they begin. Their values are taken as they are.
constexpr std::string_view programKey = "X-Launchd-Program=";
constexpr std::string_view sessionKey = "X-Launchd-Session=";
constexpr std::string_view pathKey = "SourcePath=";

bool IsControl(char character) { return static_cast<unsigned char>(character) < ' ' || character == '\x7F'; }

/// Code points that are set aside for no character at all, which systemd takes for broken text.
bool HasNoncharacter(std::string_view utf8)
{
    for (size_t at = 1; at + 1 < utf8.size(); ++at) {
        const auto before = static_cast<unsigned char>(utf8[at - 1]);
        const auto middle = static_cast<unsigned char>(utf8[at]);
        const auto last = static_cast<unsigned char>(utf8[at + 1]);
        if ((before & 0x0F) == 0x0F && middle == 0xBF && last >= 0xBE)
            return true;
        if (before == 0xEF && middle == 0xB7 && last >= 0x90 && last <= 0xAF)
            return true;
    }
    return false;
}

bool IsText(const std::string& bytes) { return MakeText(bytes) && !HasNoncharacter(bytes); }

std::string DoublePercents(std::string_view text)
{
    std::string doubled;
    for (const char character : text)
        doubled.append(character == '%' ? 2 : 1, character);
    return doubled;
}

/// @return a word that systemd takes for the text, whatever characters it consists of.
std::string Quoted(const std::string& text)
{
    static constexpr const char* digits = "0123456789abcdef";
    std::string word = "\"";
    for (const char character : DoublePercents(text)) {
        if (IsControl(character)) {
            word += "\\x";
            word += digits[static_cast<unsigned char>(character) >> 4];
            word += digits[static_cast<unsigned char>(character) & 0x0F];
            continue;
        }
        if (character == '"' || character == '\\')
            word += '\\';
        word += character;
    }
    return word + '"';
}

/// A line of a unit file is the place of one value, and nothing in a value may look like the next line to whoever
/// reads or edits the file, with systemd or without.
bool HasLineBreak(const std::string& text) { return text.find_first_of("\n\r") != std::string::npos; }

bool IsVariableName(const std::string& name)
{
    static constexpr const char* allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    return name.find_first_not_of(allowed) == std::string::npos && (name.front() < '0' || name.front() > '9');
}

/// A path as systemd takes it: it refuses ".." in those that it does not execute.
std::string PlainHostPath(const std::string& macPath)
{
    const std::filesystem::path path = HostPath(macPath);
    if (std::find(path.begin(), path.end(), "..") == path.end())
        return path;
    std::error_code error;
    const std::filesystem::path plain = std::filesystem::weakly_canonical(path, error);
    return error ? path : plain;
}

/// The exit statuses and signals that bring a job back whose KeepAlive has conditions.
std::string RestartingEnds(const KeepAlive& keepAlive)
{
    std::string ends;
    for (int status = 0; status <= 255; ++status) {
        if (keepAlive.restartsAfter(W_EXITCODE(status, 0)))
            ends += ' ' + std::to_string(status);
    }
    for (int signal = 1; signal < NSIG; ++signal) {
        const char* const name = sigabbrev_np(signal);
        if (!keepAlive.restartsAfter(W_EXITCODE(0, signal)))
            continue;
        if (name)
            ends.append(" SIG").append(name);
        else if (signal >= SIGRTMIN && signal <= SIGRTMAX)
            ends += " SIGRTMIN+" + std::to_string(signal - SIGRTMIN);
    }
    return ends.empty() ? ends : ends.substr(1);
}

/// The text of one unit while it is being written, and what kept it from being so.
class Writer {
public:
    const std::string& problem() const { return fProblem; }
    std::string text() const { return fText.str(); }

    void section(const char* name) { fText << "\n[" << name << "]\n"; }

    /// @param value written as it is.
    void set(std::string_view key, const std::string& value)
    {
        if (key.size() + value.size() > maxLine)
            refuse(std::string(key.substr(0, key.size() - 1)) + " is too long for a unit file");
        fText << key << value << '\n';
    }

    /// For keys whose values systemd reads without quotes and escapes.
    /// @param source what the user knows the value as.
    void setPlain(std::string_view key, const char* source, const std::string& value)
    {
        if (std::any_of(value.begin(), value.end(), IsControl))
            refuse(std::string(source) + " contains control characters, which a unit file cannot carry");
        else if (!IsText(value))
            refuse(std::string(source) + " is not valid text");
        else if (value.starts_with(' ') || value.ends_with(' ') || value.ends_with('\\'))
            refuse(std::string(source)
                + " begins or ends with a blank or ends with a backslash, which a unit file cannot carry");
        set(key, value);
    }

    void refuse(const std::string& problem)
    {
        if (fProblem.empty())
            fProblem = problem;
    }

private:
    std::ostringstream fText;
    std::string fProblem;
};

bool IsGraphical(const Job& job)
{
    return !job.sessions.empty()
        && std::all_of(
            job.sessions.begin(), job.sessions.end(), [](const auto& session) { return session == "Aqua"; });
}

void WriteAbout(Writer& unit, const JobFile& file, const std::string& session)
{
    const Job& job = file.job;
    unit.section("Unit");
    unit.set("Description=", job.label);
    unit.setPlain(pathKey, "The path", DoublePercents(file.path));
    unit.setPlain(programKey, "Program", job.program);
    unit.setPlain(sessionKey, "The session type", session);
    // However often it ends, it is started again; the pause between two starts keeps the machine free.
    unit.set("StartLimitIntervalSec=", "0");
    if (IsGraphical(job)) {
        unit.set("PartOf=", graphicalTarget);
        unit.set("After=", graphicalTarget);
    }
}

void WriteCommand(Writer& unit, const Job& job)
{
    const std::string program = HostPath(job.program);
    if (program.find_first_of("\"'\\") != std::string::npos
        || std::any_of(program.begin(), program.end(), IsControl))
        unit.refuse("Program contains quotes, backslashes or control characters, which systemd executes no "
                    "program with");
    // ':' keeps '$' as it is, '@' makes the first argument the program's own name for itself.
    std::string command = Quoted(":@" + program);
    for (const std::string& argument : job.arguments) {
        if (HasLineBreak(argument))
            unit.refuse("ProgramArguments contains a line break, which a unit file cannot carry");
        command += ' ' + Quoted(argument);
    }
    if (!IsText(command))
        unit.refuse("Program or ProgramArguments is not valid text");
    unit.set("ExecStart=", command);
}

void WriteSurroundings(Writer& unit, const Job& job)
{
    for (const auto& [name, value] : JobEnvironment(job)) {
        if (!IsVariableName(name))
            unit.refuse("EnvironmentVariables has a name of other characters than letters, digits and "
                        "underscores");
        else if (!IsText(value))
            unit.refuse("The environment variable " + name + " is not valid text");
        else if (HasLineBreak(value))
            unit.refuse("The environment variable " + name
                + " contains a line break, which a unit file cannot carry");
        unit.set("Environment=", Quoted(std::string(name).append("=").append(value)));
    }
    const auto output = [&unit](const std::string& key, const char* source, const std::string& path) {
        if (path.empty())
            unit.set(key, "null");
        else
            unit.setPlain(key, source, "append:" + DoublePercents(PlainHostPath(path)));
    };
    output("StandardOutput=", "StandardOutPath", job.standardOutPath);
    output("StandardError=", "StandardErrorPath", job.standardErrorPath);
    const std::string folder = job.workingDirectory.empty() ? "/" : PlainHostPath(job.workingDirectory);
    unit.setPlain("WorkingDirectory=", "WorkingDirectory", DoublePercents(folder));
    unit.set("UMask=", "0022");
}

void WriteLife(Writer& unit, const Job& job)
{
    unit.set("Restart=", job.keepAlive.always ? "always" : "no");
    if (!job.keepAlive.always && job.keepAlive.isConditional())
        unit.set("RestartForceExitStatus=", RestartingEnds(job.keepAlive));
    unit.set("RestartSec=", std::to_string(job.throttleInterval.count()));
    const auto timeOut = job.exitTimeOut.count();
    unit.set("TimeoutStopSec=", timeOut == 0 ? "infinity" : std::to_string(timeOut));
    // SIGTERM to the process alone, and when it has ended, SIGKILL to everything that it leaves behind.
    unit.set("KillMode=", "mixed");
}

/// @return the rest of the line that begins with the key, or nothing where there is no such line.
std::optional<std::string> ValueOf(std::string_view text, std::string_view key)
{
    const std::string begin = '\n' + std::string(key);
    const size_t at = text.find(begin);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::string_view rest = text.substr(at + begin.size());
    return std::string(rest.substr(0, rest.find('\n')));
}
}

std::string UnitName(const std::string& label) { return label + ".service"; }

std::optional<std::string> UnitText(const JobFile& file, const std::string& session, std::string& problem)
{
    const Job& job = file.job;
    Writer unit;
    if (UnitName(job.label).size() > maxUnitName)
        unit.refuse("Label is too long for the name of a unit file");
    if (job.label.front() == '.')
        unit.refuse("Label begins with a dot, and systemd starts no hidden units with a session");
    WriteAbout(unit, file, session);
    unit.section("Service");
    // Not started before the program has taken the place of systemd's own process: that can fail.
    unit.set("Type=", "exec");
    WriteCommand(unit, job);
    WriteSurroundings(unit, job);
    WriteLife(unit, job);
    if (job.startsAtLoad()) {
        unit.section("Install");
        unit.set("WantedBy=", IsGraphical(job) ? graphicalTarget : "default.target");
    }
    problem = unit.problem();
    if (!problem.empty())
        return std::nullopt;
    return "# Written by launchctl, which takes it away with: launchctl unload\n" + unit.text();
}

std::optional<UnitNotes> ReadUnit(std::string_view text)
{
    const std::optional<std::string> path = ValueOf(text, pathKey);
    const std::optional<std::string> program = ValueOf(text, programKey);
    const std::optional<std::string> session = ValueOf(text, sessionKey);
    if (!path || !program || !session)
        return std::nullopt;
    UnitNotes notes { .path = {}, .program = *program, .session = *session };
    for (size_t at = 0; at < path->size(); ++at) {
        notes.path += (*path)[at];
        at += path->compare(at, 2, "%%") == 0 ? 1 : 0;
    }
    return notes;
}

} // namespace launchd
