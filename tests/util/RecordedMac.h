#pragma once

#include "tests/support/RegistryTest.h"
#include "util/RegistryProperties.h"

#include <IOKit/Recording.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

/// An entry of a Mac's registry, as ioreg shows it.
struct Level {
    std::string className;
    std::vector<std::string> properties; ///< "Size" = 12
    unsigned depth = 0; ///< 0 for one more than the entry before
};

/// For tests for which a Mac's registry is written down.
class MacRecorder {
protected:
    static std::string numbered(uint64_t number)
    {
        std::array<char, 24> digits {};
        std::snprintf(digits.data(), digits.size(), "0x%llx", static_cast<unsigned long long>(number));
        return digits.data();
    }

    /// Puts entries below each other. @return a reference to the last one, which the test releases with this object.
    static IORef record(const std::vector<Level>& levels)
    {
        std::string text = "+-o Root  <class IORegistryEntry, id 0x100, retain 5>\n";
        size_t depth = 0;
        uint64_t number = 0x100;
        for (const Level& level : levels) {
            depth = level.depth > 0 ? level.depth : depth + 1;
            const std::string bars(depth * 2, ' ');
            text.append(bars).append("+-o Entry  <class " + level.className + ", id " + numbered(++number));
            text.append(", registered, matched, active, busy 0, retain 5>\n").append(bars).append("    {\n");
            for (const std::string& property : level.properties)
                text.append(bars).append("      ").append(property).append("\n");
            text.append(bars).append("    }\n");
        }
        std::optional<iokit::Recording> recording = iokit::ReadRecording(text);
        if (!recording || recording->unreadable > 0) {
            ADD_FAILURE() << "cannot be read: " << text;
            return {};
        }
        iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(recording->registry)));
        return IORef(IOServiceGetMatchingService(kIOMasterPortDefault, IORegistryEntryIDMatching(number)));
    }
};

class RecordedMac : public RegistryTest, protected MacRecorder { };
