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
        const std::string path = name.starts_with('/') ? name : folder.path(name);
        const Held<CFURLRef> url = Hold(CFURLCreateFromFileSystemRepresentation(
            nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
        return Hold(CFBundleCreate(nullptr, url.get()));
    }

    /// @return the text for the key, "(none)" where there is none.
    static std::string localized(CFBundleRef bundle, const char* key)
    {
        return Taken(CFBundleCopyLocalizedString(bundle, Text(key).get(), CFSTR("(none)"), nullptr));
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
    for (const char* name :
        { "App.app/Contents/Resources/plain.txt", "App.app/Contents/Resources/Help/plain.txt",
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
    EXPECT_EQ(find(app.get(), "plain.txt", "", "Help"), resources + "/Help/plain.txt");
    EXPECT_EQ(find(app.get(), "page", "html", "Help"), resources + "/en.lproj/Help/page.html");
    EXPECT_EQ(find(app.get(), "local", "txt"), resources + "/en.lproj/local.txt");
    EXPECT_EQ(find(app.get(), "absent", "txt"), "(null)");
    EXPECT_EQ(find(app.get(), nullptr, "txt"), "(null)");
    const Environment german("LANG", "de_DE.UTF-8");
    EXPECT_EQ(find(app.get(), "local", "txt"), resources + "/de.lproj/local.txt");
    EXPECT_EQ(find(open("Flat.kext").get(), "beside", "txt"), folder.path("Flat.kext/beside.txt"));
    EXPECT_EQ(find(open("Bare.kext").get(), "inside", "txt"), folder.path("Bare.kext/Resources/inside.txt"));
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

TEST_F(BundleTest, ReadsWhatTheInformationFileSays)
{
    const std::string info = InfoText(Pair("CFBundleIdentifier", "org.example.App")
        + Pair("CFBundleExecutable", "Run") + Pair("CFBundleName", "App"));
    folder.write("Modern.app/Contents/Info.plist", info);
    folder.write("Modern.app/Contents/MacOS/Run", "");
    folder.write("Modern.app/Contents/Resources/de.lproj/InfoPlist.strings", "CFBundleName = Programm;");
    folder.write("Flat.kext/Info.plist", info);
    folder.write("Flat.kext/Run", "");
    const Environment german("LANG", "de_DE");
    const std::tuple<const char*, const char*, const char*> bundles[]
        = { { "Modern.app", "Contents/MacOS/Run", "Programm" }, { "Flat.kext", "Run", "App" } };
    for (const auto& [path, executable, name] : bundles) {
        const auto bundle = open(path);
        ASSERT_TRUE(bundle);
        EXPECT_EQ(Show(CFBundleGetIdentifier(bundle.get())), "org.example.App");
        EXPECT_EQ(Show(static_cast<CFStringRef>(
                      CFBundleGetValueForInfoDictionaryKey(bundle.get(), kCFBundleNameKey))),
            name);
        EXPECT_EQ(CFDictionaryGetCount(CFBundleGetInfoDictionary(bundle.get())), 3);
        EXPECT_EQ(TakenPath(CFBundleCopyBundleURL(bundle.get())), folder.path(path));
        EXPECT_EQ(TakenPath(CFBundleCopyExecutableURL(bundle.get())), folder.path(path) + '/' + executable);
    }
}

TEST_F(BundleTest, AnUnusableInformationFileCountsAsEmpty)
{
    const std::pair<const char*, std::string> files[]
        = { { "Info.plist", InfoText(Pair("CFBundleIdentifier", "x")).substr(0, 60) },
              { "Info.plist", "<plist><array/></plist>" }, { "Info.plist/file", "" }, { "file", "" },
              { "Info.plist",
                  InfoText("<key>CFBundleIdentifier</key><true/><key>CFBundleExecutable</key><array/>"
                           "<key>CFBundleLocalizations</key><string>en</"
                           "string><key>CFBundleDevelopmentRegion</key><false/>") } };
    for (const auto& [name, bytes] : files) {
        const TemporaryFolder contents;
        contents.write(std::string("App.app/Contents/") + name, bytes);
        const auto bundle = open(contents.path("App.app"));
        ASSERT_TRUE(bundle) << bytes;
        EXPECT_FALSE(CFBundleGetIdentifier(bundle.get())) << bytes;
        EXPECT_FALSE(Hold(CFBundleCopyExecutableURL(bundle.get()))) << bytes;
        EXPECT_EQ(localized(bundle.get(), "key"), "(none)");
    }
    folder.write("file", "");
    EXPECT_FALSE(open("Missing.app"));
    EXPECT_FALSE(open("file"));
}

TEST_F(BundleTest, WithoutAFittingLanguageTheDevelopmentRegionSpeaksUnlessOthersArePreferred)
{
    writeGreeting("de");
    writeGreeting("es");
    EXPECT_EQ(greeting("ja_JP"), "de");
    folder.write("App.app/Contents/Info.plist",
        InfoText(Pair("CFBundleDevelopmentRegion", "es")
            + "<key>CFBundleLocalizations</key><array><string>nl</string><string>de</string><true/></"
              "array>"));
    EXPECT_EQ(greeting("ja_JP"), "es");
    EXPECT_EQ(greeting("C"), "es");
    folder.write("App.app/Contents/Resources/fr.lproj/Other.strings", "");
    folder.write("App.app/Contents/Resources/.lproj/file", "");
    EXPECT_EQ(greeting("fr_FR"), "es") << "French has another table only";
    EXPECT_EQ(List(Hold(CFBundleCopyBundleLocalizations(open("App.app").get())).get()), "de,es,fr,nl,");
    const TemporaryFolder other; // the preferences of the first home are known already
    const Environment otherHome("CFFIXED_USER_HOME", other.path().c_str());
    other.write("Library/Preferences/.GlobalPreferences.plist",
        InfoText("<key>AppleLanguages</key><array><string>ja-JP</string><integer>1</integer>"
                 "<string>de-CH</string><string>es</string></array>"));
    EXPECT_EQ(greeting("es_ES.UTF-8"), "de");
    EXPECT_EQ(
        List(Hold(CFBundleCopyPreferredLocalizationsFromArray(Array({ "en", "de" }).get())).get()), "de,");
    EXPECT_EQ(
        List(Hold(CFBundleCopyPreferredLocalizationsFromArray(Array({ "en", "fr" }).get())).get()), "en,");
}

TEST_F(BundleTest, AMissingTextShowsTheValueOrTheKey)
{
    folder.write("App.app/Contents/Resources/en.lproj/Localizable.strings", "known = Text; empty = \"\";");
    folder.write("App.app/Contents/Resources/en.lproj/Other.strings", "known = Other;");
    const auto app = open("App.app");
    const struct {
        CFStringRef key, value, table;
        const char* text;
    } cases[] = { { CFSTR("known"), CFSTR("value"), nullptr, "Text" },
        { CFSTR("known"), nullptr, CFSTR("Other"), "Other" },
        { CFSTR("known"), nullptr, CFSTR("Absent"), "known" },
        { CFSTR("unknown"), CFSTR("value"), nullptr, "value" },
        { CFSTR("unknown"), CFSTR(""), CFSTR(""), "unknown" },
        { CFSTR("empty"), CFSTR("value"), nullptr, "" }, { nullptr, nullptr, nullptr, "(null)" } };
    for (const auto& [key, value, table, text] : cases)
        EXPECT_EQ(Taken(CFBundleCopyLocalizedString(app.get(), key, value, table)), text) << Show(key);
}
