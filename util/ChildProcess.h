#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// How the library has work done in child processes: a fork, most often an execution of a tool with an exact argument list, a
// wait. For use inside util/ only.

/// What the library asks of a tool.
struct ToolCall {
    const char* tool; ///< Mac path
    std::vector<std::string> arguments; ///< from argument zero on
    /// In the child, before the tool is executed: redirections, another user. It allocates nothing.
    std::function<void()> prepare {};
    /// In the parent, before it waits: reading what the child writes. Whatever the child could wait for has to be over
    /// when this returns.
    std::function<void()> attend {};
    /// With what status a child ends that cannot execute the tool. With none it comes back from RunTool as a copy of the
    /// caller, and the caller decides what to answer there.
    std::optional<int> statusWithoutTool = 0;
    /// Whether a caller that cannot be forked ends, with status 1.
    bool endsWithoutChild = false;
};

/// What came of a child.
struct ChildEnd {
    bool wasForked = false; ///< there was a child, whatever became of it
    pid_t process = -1; ///< what waitpid answered: the child, or -1 when there is none to be waited for
    int status = 0; ///< as waitpid() gives it
    bool isChild = false; ///< this is the child, which could not execute the tool

    bool isKnown() const { return process > 0; }
    /// Ended by itself with another status than 0.
    bool failedByItself() const;
    /// Ended by itself with status 0, core dumps aside.
    bool succeeded() const { return isKnown() && (status & 0xff7f) == 0; }
};

/// Runs a tool to its end, however long that takes. A failed fork leaves everything as it is in ChildEnd.
ChildEnd RunTool(const ToolCall& call);

/// The same with a reader for what the tool writes to its standard output.
/// @param read is called with the end of a pipe, before the wait. What it leaves unread has no reader any more: a tool that
/// has more to say is ended by that, as a rule, instead of waiting for one. Without a pipe nothing is run.
ChildEnd RunToolReading(const ToolCall& call, const std::function<void(int output)>& read);

// For RunToolReading: what is read from the pipe.

/// One piece of what there is. @param limit in bytes. @return "" at the end, and when it cannot be read.
std::string ReadPiece(int output, size_t limit);
/// Everything to the end, to be forgotten, so that the tool can come to its own.
void ReadAndDiscard(int output);
/// One piece, and what comes after it to be forgotten.
std::string ReadPieceAndDiscardRest(int output, size_t limit);

/// For ToolCall::prepare: what the descriptor leads to becomes the tool's standard output, also where the caller has none
/// and the descriptor has taken its number.
void MakeStandardOutput(int descriptor);

/// Calls `work` in a child, which then ends with status 0, and waits for it.
ChildEnd RunInChild(const std::function<void()>& work);
