#pragma once

/// From the first object on SIGINT and SIGTERM no longer end the program at once.
class Interruption {
public:
    Interruption();

    /// Becomes readable when one of the signals comes.
    int descriptor() const;

    /// Whether one has come since the object was made.
    bool hasCome() const;
};
