#include "tests/CoreFoundation/StoreTesting.h"

#include <algorithm>
#include <array>
#include <map>
#include <regex>
#include <set>

namespace {

struct Language {
    const char *folder, *locale;
    bool hasSpaces; ///< between sentences
};

constexpr std::array<Language, 6> kLanguages = { { { "en", "en_US.UTF-8", true },
    { "de", "de_DE.UTF-8", true }, { "fr", "fr_FR.UTF-8", true }, { "es", "es_ES.UTF-8", true },
    { "ja", "ja_JP.UTF-8", false }, { "zh-Hans", "zh_CN.UTF-8", false } } };
constexpr const Language& kEnglish = kLanguages.front();

const std::string kProject = PROJECT_SOURCES "/";

std::string Contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

/// @return the first group of every match, in the order of the text.
std::vector<std::string> Matches(const std::string& text, const std::string& pattern)
{
    const std::regex regex(pattern);
    return { std::sregex_token_iterator(text.begin(), text.end(), regex, 1), {} };
}

/// The keys as they stand in the file: what is read through a bundle does not show that one is there twice.
std::vector<std::string> KeysInFile(const Language& language)
{
    return Matches(Contents(kProject + "resources/" + language.folder + ".lproj/Localizable.strings"),
        R"!((?:^|\n)\s*"([^"\n]*)"\s*=)!");
}

/// All that shows windows and menus: the program's code without the unattended mode, and the layouts.
std::string Sources()
{
    std::string text;
    const std::regex isSource(R"((?!.*/unattended/).*\.(cpp|h|ui))");
    for (const char* folder : { "app", "ui", "resources" }) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(kProject + folder)) {
            if (std::regex_match(entry.path().string(), isSource))
                text += Contents(entry.path());
        }
    }
    return text;
}

/// The strings tables as the installer sees them on a host that speaks a language.
class StringsTest : public testing::Test {
protected:
    /// @return the texts for the keys of the English table; "(none)" where there is none.
    static std::map<std::string, std::string> textsIn(const Language& language)
    {
        const Environment lang("LANG", language.locale);
        const auto url = Hold(CFURLCreateWithFileSystemPath(
            nullptr, Text(kProject + "resources").get(), kCFURLPOSIXPathStyle, true));
        const auto bundle = Hold(CFBundleCreate(nullptr, url.get()));
        std::map<std::string, std::string> texts;
        for (const std::string& key : KeysInFile(kEnglish))
            texts[key]
                = Taken(CFBundleCopyLocalizedString(bundle.get(), Text(key).get(), CFSTR("(none)"), nullptr));
        return texts;
    }

    TemporaryFolder home;
    Environment homeVariable { "CFFIXED_USER_HOME", home.path().c_str() };
    Environment all { "LC_ALL", nullptr };
    Environment messages { "LC_MESSAGES", nullptr };
};

} // namespace

TEST_F(StringsTest, EveryLanguageHasEachKeyOnceAndInTheSameOrder)
{
    const std::vector<std::string> english = KeysInFile(kEnglish);
    EXPECT_EQ(std::set<std::string>(english.begin(), english.end()).size(), english.size());
    for (const Language& language : kLanguages)
        EXPECT_EQ(KeysInFile(language), english) << language.folder;
}

TEST_F(StringsTest, EveryHostShowsATextOfItsLanguageForEveryKey)
{
    std::set<std::string> quitItems;
    for (const Language& language : kLanguages) {
        const auto texts = textsIn(language);
        for (const auto& [key, text] : texts)
            EXPECT_FALSE(text.empty() || text == "(none)") << language.folder << ' ' << key;
        quitItems.insert(texts.at("kQuitMenuItem"));
    }
    EXPECT_EQ(quitItems.size(), kLanguages.size());
}

TEST_F(StringsTest, TextsFitWhatTheProgramDoesWithThem)
{
    const auto english = textsIn(kEnglish);
    for (const Language& language : kLanguages) {
        for (const auto& [key, text] : textsIn(language)) {
            EXPECT_EQ(Matches(text, "(%.?)"), Matches(english.at(key), "(%.?)")) << language.folder << key;
            EXPECT_EQ(!Matches(text, "^(https://[!-~]+)$").empty(), key.ends_with("URL")) << text;
            // Only what is appended to a prompt, as it is, brings its own space.
            const bool isAppended = key.starts_with("kInstallWindowRestartAfter");
            EXPECT_EQ(text.starts_with(' '), isAppended && language.hasSpaces) << language.folder << key;
        }
    }
}

TEST_F(StringsTest, EveryKeyIsUsedAndEveryKeyThatIsLookedUpExists)
{
    const std::string sources = Sources();
    const std::vector<std::string> keys = KeysInFile(kEnglish);
    const auto has = [&](const std::string& text) { return sources.find(text) != std::string::npos; };
    for (const std::string& key : keys)
        EXPECT_TRUE(has('"' + key + '"') || has('>' + key + '<')) << key << " is not used";
    for (const char* lookUp : { R"!([">](k[A-Z]\w*)["<])!", R"!(LocalizedString\(CFSTR\("([^"]*)"\)\))!" }) {
        for (const std::string& key : Matches(sources, lookUp))
            EXPECT_NE(std::find(keys.begin(), keys.end(), key), keys.end()) << key << " has no text";
    }
}
