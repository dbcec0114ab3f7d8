#include "StoreTesting.h"

#include <vector>

namespace {

std::string UTF16(std::u16string_view text, bool isBigEndian, bool hasMark)
{
    std::string bytes;
    for (const char16_t unit : (hasMark ? u"\uFEFF" : u"") + std::u16string(text)) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

std::string InfoText(const std::string& pairs)
{
    return "<plist version=\"1.0\"><dict>" + pairs + "</dict></plist>";
}

std::string Pair(const std::string& key, const std::string& text)
{
    return "<key>" + key + "</key><string>" + text + "</string>";
}

/// A folder for bundles, a home folder without preferences, and an environment without a language.
class BundleTest : public testing::Test {
protected:
    Held<CFBundleRef> open(const std::string& name) const
    {
        const std::string path = folder.path(name);
        const Held<CFURLRef> url = Hold(CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
        return Hold(CFBundleCreate(nullptr, url.get()));
    }

    /// @return the text for the key, "(none)" where there is none.
    static std::string localized(CFBundleRef bundle, const char* key, const char* table = nullptr)
    {
        return Taken(CFBundleCopyLocalizedString(
            bundle, Text(key).get(), CFSTR("(none)"), table ? Text(table).get() : nullptr));
    }

    /// Opens the bundle anew and shows the text for "greeting" in a language of the host.
    std::string greeting(const char* language) const
    {
        const Environment chosen("LANG", language);
        return localized(open("App.app").get(), "greeting");
    }

    void writeGreeting(const std::string& localization) const
    {
        folder.write("App.app/Contents/Resources/" + localization + ".lproj/Localizable.strings",
            "greeting = \"" + localization + "\";");
    }

    /// @return the text for "key" of a table with these bytes.
    std::string inTable(std::string_view bytes, const char* key = "key") const
    {
        folder.write("Table.app/Contents/Resources/Localizable.strings", bytes);
        return localized(open("Table.app").get(), key);
    }

    TemporaryFolder folder;
    TemporaryFolder home;
    Environment homeVariable { "CFFIXED_USER_HOME", home.path().c_str() };
    Environment all { "LC_ALL", nullptr };
    Environment messages { "LC_MESSAGES", nullptr };
    Environment lang { "LANG", nullptr };
};

} // namespace

TEST_F(BundleTest, ReadsWhatTheInformationFileSays)
{
    const std::string info = InfoText(Pair("CFBundleIdentifier", "org.example.App")
        + Pair("CFBundleExecutable", "Run") + "<key>N</key><integer>4</integer>");
    folder.write("Modern.app/Contents/Info.plist", info);
    folder.write("Modern.app/Contents/MacOS/Run", "");
    folder.write("Flat.kext/Info.plist", info);
    folder.write("Flat.kext/Run", "");
    for (const char* name : { "Modern.app", "Flat.kext" }) {
        const Held<CFBundleRef> bundle = open(name);
        ASSERT_TRUE(bundle);
        EXPECT_EQ(Show(CFBundleGetIdentifier(bundle.get())), "org.example.App");
        EXPECT_TRUE(
            CFEqual(CFBundleGetValueForInfoDictionaryKey(bundle.get(), CFSTR("N")), Integer(4).get()));
        EXPECT_FALSE(CFBundleGetValueForInfoDictionaryKey(bundle.get(), CFSTR("Missing")));
        EXPECT_EQ(CFDictionaryGetCount(CFBundleGetInfoDictionary(bundle.get())), 3);
        EXPECT_EQ(TakenPath(CFBundleCopyBundleURL(bundle.get())), folder.path(name));
    }
    EXPECT_EQ(TakenPath(CFBundleCopyExecutableURL(open("Modern.app").get())),
        folder.path("Modern.app/Contents/MacOS/Run"));
    EXPECT_EQ(TakenPath(CFBundleCopyExecutableURL(open("Flat.kext").get())), folder.path("Flat.kext/Run"));
}

TEST_F(BundleTest, AnUnusableInformationFileCountsAsEmpty)
{
    folder.write(
        "Truncated.app/Contents/Info.plist", InfoText(Pair("CFBundleIdentifier", "x")).substr(0, 60));
    folder.write("List.app/Contents/Info.plist", "<plist><array/></plist>");
    folder.write("Folder.app/Contents/Info.plist/file", "");
    folder.write("None.app/Contents/file", "");
    folder.write("Nothing.app/file", "");
    folder.write("WrongTypes.app/Contents/Info.plist",
        InfoText("<key>CFBundleIdentifier</key><true/><key>CFBundleExecutable</key><array/>"
                 "<key>CFBundleLocalizations</key><string>en</string><key>CFBundleDevelopmentRegion</"
                 "key><false/>"));
    for (const char* name :
        { "Truncated.app", "List.app", "Folder.app", "None.app", "Nothing.app", "WrongTypes.app" }) {
        const Held<CFBundleRef> bundle = open(name);
        ASSERT_TRUE(bundle) << name;
        EXPECT_FALSE(CFBundleGetIdentifier(bundle.get())) << name;
        EXPECT_FALSE(Hold(CFBundleCopyExecutableURL(bundle.get()))) << name;
        EXPECT_EQ(localized(bundle.get(), "key"), "(none)");
    }
    EXPECT_EQ(CFDictionaryGetCount(CFBundleGetInfoDictionary(open("Truncated.app").get())), 0);
    EXPECT_FALSE(open("Missing.app"));
    EXPECT_FALSE(open("Nothing.app/file"));
}

TEST_F(BundleTest, TheMainBundleFollowsTheProcessPath)
{
    folder.write("One.app/Contents/Info.plist", InfoText(Pair("CFBundleIdentifier", "one")));
    folder.write("Two.app/Contents/Info.plist", InfoText(Pair("CFBundleIdentifier", "two")));
    folder.write("tool", "");
    const Environment one("CFProcessPath", folder.path("One.app/Contents/MacOS/One").c_str());
    CFBundleRef first = CFBundleGetMainBundle();
    {
        const Environment two("CFProcessPath", folder.path("Two.app/Contents/MacOS/Two").c_str());
        EXPECT_EQ(Show(CFBundleGetIdentifier(CFBundleGetMainBundle())), "two");
        EXPECT_EQ(Show(CFBundleGetIdentifier(first)), "one");
    }
    EXPECT_EQ(CFBundleGetMainBundle(), first);
    {
        const Environment tool("CFProcessPath", folder.path("tool").c_str());
        EXPECT_EQ(TakenPath(CFBundleCopyBundleURL(CFBundleGetMainBundle())), folder.path());
        EXPECT_EQ(TakenPath(CFBundleCopyExecutableURL(CFBundleGetMainBundle())), folder.path("tool"));
    }
    const Environment none("CFProcessPath", nullptr);
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(TakenPath(CFBundleCopyExecutableURL(CFBundleGetMainBundle())), self);
}

TEST_F(BundleTest, FindsResourcesWithAndWithoutLanguages)
{
    for (const char* name : { "App.app/Contents/Resources/plain.txt",
             "App.app/Contents/Resources/Help/plain.txt", "App.app/Contents/Resources/Agent.app/Info.plist",
             "App.app/Contents/Resources/de.lproj/local.txt", "App.app/Contents/Resources/en.lproj/local.txt",
             "App.app/Contents/Resources/en.lproj/Help/page.html", "Flat.kext/Info.plist",
             "Flat.kext/beside.txt", "Bare.kext/Resources/inside.txt" })
        folder.write(name, "");
    const std::string resources = folder.path("App.app/Contents/Resources");
    const auto find
        = [](CFBundleRef bundle, const char* name, const char* type, const char* subfolder = nullptr) {
              return TakenPath(CFBundleCopyResourceURL(bundle, name ? Text(name).get() : nullptr,
                  type ? Text(type).get() : nullptr, subfolder ? Text(subfolder).get() : nullptr));
          };
    const Held<CFBundleRef> app = open("App.app");
    EXPECT_EQ(find(app.get(), "plain", "txt"), resources + "/plain.txt");
    EXPECT_EQ(find(app.get(), "plain", ".txt"), resources + "/plain.txt");
    EXPECT_EQ(find(app.get(), "plain.txt", nullptr), resources + "/plain.txt");
    EXPECT_EQ(find(app.get(), "plain.txt", "", "Help"), resources + "/Help/plain.txt");
    EXPECT_EQ(find(app.get(), "page", "html", "Help"), resources + "/en.lproj/Help/page.html");
    EXPECT_EQ(find(app.get(), "local", "txt"), resources + "/en.lproj/local.txt");
    EXPECT_EQ(find(app.get(), "absent", "txt"), "(null)");
    EXPECT_EQ(find(app.get(), nullptr, "txt"), "(null)");
    EXPECT_EQ(find(app.get(), "", "txt"), "(null)");
    const Environment german("LANG", "de_DE.UTF-8");
    EXPECT_EQ(find(app.get(), "local", "txt"), resources + "/de.lproj/local.txt");
    EXPECT_EQ(find(open("Flat.kext").get(), "beside", "txt"), folder.path("Flat.kext/beside.txt"));
    EXPECT_EQ(find(open("Bare.kext").get(), "inside", "txt"), folder.path("Bare.kext/Resources/inside.txt"));

    const Held<CFURLRef> agent
        = Hold(CFBundleCopyResourceURL(app.get(), CFSTR("Agent"), CFSTR(".app"), nullptr));
    EXPECT_TRUE(agent && CFURLHasDirectoryPath(agent.get()));
    EXPECT_EQ(TakenPath(CFBundleCopyResourcesDirectoryURL(app.get())), resources);
}

TEST_F(BundleTest, TheHostsLanguageChoosesTheText)
{
    for (const char* name : { "en", "de", "pt-BR", "zh-Hans", "zh_TW", "French" })
        writeGreeting(name);
    const std::vector<std::pair<const char*, const char*>> choices
        = { { "de_DE.UTF-8", "de" }, { "de_AT@euro", "de" }, { "fr_CA.UTF-8", "French" },
              { "pt_PT", "pt-BR" }, { "zh_CN.UTF-8", "zh-Hans" }, { "zh_SG", "zh-Hans" },
              { "zh_TW.UTF-8", "zh_TW" }, { "zh_HK", "zh_TW" }, { "ja_JP.UTF-8", "en" }, { "C", "en" },
              { "C.UTF-8", "en" }, { "POSIX", "en" }, { "", "en" } };
    for (const auto& [language, expected] : choices)
        EXPECT_EQ(greeting(language), expected) << language;
    writeGreeting("de-AT");
    EXPECT_EQ(greeting("de_AT.UTF-8"), "de-AT");
    EXPECT_EQ(greeting("de_CH.UTF-8"), "de");
    const Environment stronger("LC_ALL", "zh_CN.UTF-8");
    EXPECT_EQ(greeting("de_DE"), "zh-Hans");
}

TEST_F(BundleTest, WithoutAFittingLanguageTheDevelopmentRegionSpeaks)
{
    writeGreeting("de");
    writeGreeting("es");
    EXPECT_EQ(greeting("ja_JP"), "de");
    folder.write("App.app/Contents/Info.plist", InfoText(Pair("CFBundleDevelopmentRegion", "es")));
    EXPECT_EQ(greeting("ja_JP"), "es");
    EXPECT_EQ(greeting("C"), "es");
    folder.write("App.app/Contents/Resources/fr.lproj/Other.strings", "");
    EXPECT_EQ(greeting("fr_FR"), "es");
}

TEST_F(BundleTest, ThePreferredLanguagesOverruleTheHost)
{
    writeGreeting("en");
    writeGreeting("de");
    writeGreeting("fr");
    home.write("Library/Preferences/.GlobalPreferences.plist",
        InfoText(
            "<key>AppleLanguages</key><array><string>ja-JP</string><integer>1</integer><string>fr-CH</string>"
            "<string>de</string></array>"));
    EXPECT_EQ(greeting("de_DE.UTF-8"), "fr");
}

TEST_F(BundleTest, ListsItsLocalizations)
{
    for (const char* name : { "fr.lproj/a", "de.lproj/a", "Base.lproj/a", "notes.txt", ".lproj/a" })
        folder.write(std::string("App.app/Contents/Resources/") + name, "");
    folder.write("App.app/Contents/Info.plist",
        InfoText(
            "<key>CFBundleLocalizations</key><array><string>ja</string><string>de</string><true/></array>"));
    EXPECT_EQ(List(Hold(CFBundleCopyBundleLocalizations(open("App.app").get()))), "de,fr,ja,");
    const Environment french("LANG", "fr_FR");
    const Held<CFMutableArrayRef> names = Array();
    for (const char* name : { "en", "de", "fr" })
        CFArrayAppendValue(names.get(), Text(name).get());
    EXPECT_EQ(List(Hold(CFBundleCopyPreferredLocalizationsFromArray(names.get()))), "fr,");
    const Environment japanese("LC_ALL", "ja_JP");
    EXPECT_EQ(List(Hold(CFBundleCopyPreferredLocalizationsFromArray(names.get()))), "en,");
}

TEST_F(BundleTest, AMissingTextShowsTheValueOrTheKey)
{
    folder.write(
        "App.app/Contents/Resources/en.lproj/Localizable.strings", "known = \"Text\"; empty = \"\";");
    folder.write("App.app/Contents/Resources/en.lproj/Other.strings", "known = \"Other\";");
    const Held<CFBundleRef> app = open("App.app");
    const auto copy = [&](CFStringRef key, CFStringRef value, CFStringRef table = nullptr) {
        return Taken(CFBundleCopyLocalizedString(app.get(), key, value, table));
    };
    EXPECT_EQ(copy(CFSTR("known"), CFSTR("value")), "Text");
    EXPECT_EQ(copy(CFSTR("known"), nullptr, CFSTR("Other")), "Other");
    EXPECT_EQ(copy(CFSTR("known"), nullptr, CFSTR("Absent")), "known");
    EXPECT_EQ(copy(CFSTR("unknown"), CFSTR("value")), "value");
    EXPECT_EQ(copy(CFSTR("unknown"), CFSTR("")), "unknown");
    EXPECT_EQ(copy(CFSTR("unknown"), nullptr, CFSTR("")), "unknown");
    EXPECT_EQ(copy(CFSTR("empty"), CFSTR("value")), "");
    EXPECT_EQ(copy(nullptr, nullptr), "(null)");
}

TEST_F(BundleTest, TablesAreReadInEveryEncoding)
{
    const std::u16string_view text = u"/* \u00E9 */ \"key\" = \"Gr\u00FC\u00DFe \u65E5 \U0001F600\";";
    const std::string expected = "Gr\u00FC\u00DFe \u65E5 \U0001F600";
    for (const bool isBigEndian : { false, true }) {
        for (const bool hasMark : { false, true })
            EXPECT_EQ(inTable(UTF16(text, isBigEndian, hasMark)), expected);
    }
    EXPECT_EQ(inTable("\"key\" = \"" + expected + "\";"), expected);
    EXPECT_EQ(inTable("\xEF\xBB\xBF\"key\" = \"" + expected + "\";"), expected);
    EXPECT_EQ(inTable(InfoText(Pair("key", expected) + "<key>n</key><integer>1</integer>")), expected);
    EXPECT_EQ(inTable(InfoText("<key>key</key><integer>1</integer>")), "(none)");
    const Held<CFMutableDictionaryRef> pairs = Dictionary();
    CFDictionarySetValue(pairs.get(), CFSTR("key"), Text(expected).get());
    const Held<CFDataRef> binary
        = Hold(CFPropertyListCreateData(nullptr, pairs.get(), kCFPropertyListBinaryFormat_v1_0, 0, nullptr));
    EXPECT_EQ(inTable(Bytes(binary.get())), expected);
}

TEST_F(BundleTest, TablesKnowCommentsEscapesAndBareWords)
{
    EXPECT_EQ(inTable("// c\n/* \"key\" = \"no\"; **/ \"key\" /* in */ = // out\n 'it\\'s' ;"), "it's");
    EXPECT_EQ(inTable(R"("key" = "a\nb\tc\"d\\e\qf\r";)"), "a\nb\tc\"d\\eqf\r");
    EXPECT_EQ(
        inTable(R"("key" = "\U00fc\u65E5\Ud83d\Ude00\U41 \101\60x\Ug";)"), "\u00FC\u65E5\U0001F600A A0xUg");
    EXPECT_EQ(inTable("key=a.b-c/d_e:$1;"), "a.b-c/d_e:$1");
    EXPECT_EQ(inTable("key;"), "key");
    EXPECT_EQ(inTable("key = 1; key = 2;"), "2");
    EXPECT_EQ(inTable("\"two\nlines\" = \"multi\nline\";", "two\nlines"), "multi\nline");
}

TEST_F(BundleTest, AMalformedTableKeepsThePairsBeforeTheFault)
{
    for (const char* fault :
        { "\"open", "\"other\" = ", "\"other\" = \"x\"", "\"other\" = \"x\\", "/* open", "= x;", "{",
            "\"other\" \"x\";", "other = \"\xFF\";", "other = { a = b; };", "\"other\" = \"x\" \"y\";" }) {
        EXPECT_EQ(inTable(std::string("key = \"kept\";\n") + fault), "kept") << fault;
        EXPECT_EQ(localized(open("Table.app").get(), "other"), "(none)") << fault;
    }
    EXPECT_EQ(inTable(""), "(none)");
    EXPECT_EQ(inTable("\xFF\xFE"), "(none)");
    EXPECT_EQ(inTable(UTF16(u"key = kept; rest", false, true) + "x"), "kept");
}

TEST_F(BundleTest, InformationMayBeLocalized)
{
    folder.write("App.app/Contents/Info.plist", InfoText(Pair("CFBundleName", "App")));
    folder.write("App.app/Contents/Resources/de.lproj/InfoPlist.strings", "CFBundleName = \"Programm\";");
    const Environment german("LANG", "de_DE");
    const Held<CFBundleRef> app = open("App.app");
    EXPECT_EQ(
        Show(static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(app.get(), kCFBundleNameKey))),
        "Programm");
}
