#pragma once

#include <fcntl.h>
#include <unistd.h>

/// A pipe whose ends are closed with the object, and in every program that is executed meanwhile. For use inside util/ only.
class Pipe {
public:
    Pipe() = default;
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe()
    {
        closeReadEnd();
        closeWriteEnd();
    }

    /// @return false, with errno, when it could not be made.
    bool open()
    {
        return pipe(fEnds) == 0 && fcntl(fEnds[0], F_SETFD, FD_CLOEXEC) == 0
            && fcntl(fEnds[1], F_SETFD, FD_CLOEXEC) == 0;
    }
    int readEnd() const { return fEnds[0]; }
    int writeEnd() const { return fEnds[1]; }
    void closeReadEnd() { closeEnd(fEnds[0]); }
    void closeWriteEnd() { closeEnd(fEnds[1]); }

private:
    static void closeEnd(int& end)
    {
        if (end >= 0)
            close(end);
        end = -1;
    }

    int fEnds[2] = { -1, -1 };
};
