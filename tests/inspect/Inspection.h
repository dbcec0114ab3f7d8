#pragma once

#include "tests/support/TestVolume.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Runs velmora-inspect on a start-up volume of its own.
class InspectTest : public testing::Test {
protected:
    struct Run {
        int status; ///< of its exit; -1 when it ended otherwise
        std::string out;
        std::string error;
    };

    Run run(const std::vector<std::string>& arguments) const;
    /// What the program prints when it succeeds; "failed" else.
    std::string inspect(const std::vector<std::string>& arguments) const;
    /// The output read as JSON by somebody else, and a question about it answered.
    std::string ask(const std::vector<std::string>& arguments, const std::string& question) const;

    TestVolume fVolume {};
};
