#pragma once

#include <QProcess>
#include <string>

/// The program in an environment of its own: English, and no display, no answer and no home, but for
/// one variable. No terminal controls it. Ended with the object.
class Agent : public QProcess {
public:
    explicit Agent(const char* variable = "LC_ALL", const std::string& value = "en_US.UTF-8");
    ~Agent() override;

    void startFor(const char* name);
    /// Waits for the end. @return -1 when the program was killed, or goes on for ten seconds.
    int exitStatus();
    std::string errors() { return readAllStandardError().toStdString(); }
};

/// A pseudo-terminal with the program on it, whose standard streams lead elsewhere.
class Terminal {
public:
    explicit Terminal(const char* variable = "LC_ALL", const std::string& value = "en_US.UTF-8");
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Types once so many questions have been asked.
    void type(const std::string& keys, size_t questions = 0);
    const std::string& seen(); ///< to the program's end
    size_t questions() const;

    Agent agent;

private:
    /// Waits for output. @return false when there will be no more, or none for ten seconds.
    bool read();

    int fUser = -1; ///< the user's end
    int fProgram = -1; ///< the program's
    std::string fSeen;
};

/// An X server without a window manager.
class Screen {
public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    const std::string& display() const { return fDisplay; }
    /// Has xdotool do something, for at most twenty seconds. @return whether it succeeded.
    bool xdotool(const QString& what) const;

private:
    QProcess fServer;
    std::string fDisplay;
};
