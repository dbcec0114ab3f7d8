#pragma once

#include "app/FrontEnd.h"

#include <map>
#include <string>
#include <vector>

/// Writes down what the controller asks for, and answers alerts as told.
class RecordingFrontEnd : public FrontEnd {
public:
    std::vector<std::string> events; ///< in order; "alert 7" and the like
    std::map<int32_t, int32_t> alertAnswers; ///< by alert number; 1 for all others
    std::map<int32_t, std::string> menuTitles;
    std::vector<uint32_t> states;
    bool isDark = false;

    void showLicenseWindow() override { events.emplace_back("license"); }
    void showInstallWindow() override { events.emplace_back("install window"); }
    void showAboutWindow() override { events.emplace_back("about"); }
    int32_t runAlertPanel(int32_t number) override
    {
        events.push_back("alert " + std::to_string(number));
        const auto answer = alertAnswers.find(number);
        return answer != alertAnswers.end() ? answer->second : 1;
    }
    void setMenuTitle(int32_t tag, const std::string& title) override { menuTitles[tag] = title; }
    void showHelp(const std::string& book, const std::optional<std::string>& anchor) override
    {
        events.push_back("help " + book + " " + anchor.value_or("(start)"));
    }
    bool appearanceIsDark() const override { return isDark; }
    void stateEntered(uint32_t state) override { states.push_back(state); }
    void restart() override { events.emplace_back("restart"); }
    void terminate() override { events.emplace_back("terminate"); }
};
