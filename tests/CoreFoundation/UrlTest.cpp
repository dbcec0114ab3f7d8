#include "Values.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

Held<CFURLRef> Url(const char* text, CFURLRef base = nullptr)
{
    return Hold(CFURLCreateWithString(nullptr, Text(text).get(), base));
}

Held<CFURLRef> File(std::string_view path, bool isDirectory = false, CFURLRef base = nullptr)
{
    return Hold(CFURLCreateFromFileSystemRepresentationRelativeToBase(nullptr,
        reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), isDirectory, base));
}

std::string TextOf(const Held<CFURLRef>& url) { return url ? Show(CFURLGetString(url.get())) : "(null)"; }
std::string Absolute(const Held<CFURLRef>& url) { return TextOf(Hold(CFURLCopyAbsoluteURL(url.get()))); }

/// The file system representation, by way of a buffer of `room` bytes; "(false)".
std::string Path(const Held<CFURLRef>& url, size_t room = 1024)
{
    std::vector<UInt8> buffer(room);
    if (!CFURLGetFileSystemRepresentation(url.get(), true, buffer.data(), static_cast<CFIndex>(room)))
        return "(false)";
    return reinterpret_cast<const char*>(buffer.data());
}

std::string Appended(const char* url, const char* component, bool isDirectory = false)
{
    return TextOf(Hold(
        CFURLCreateCopyAppendingPathComponent(nullptr, Url(url).get(), Text(component).get(), isDirectory)));
}

std::string Unescaped(const char* text, CFStringRef left = CFSTR(""))
{
    return Show(Hold(CFURLCreateStringByReplacingPercentEscapes(nullptr, Text(text).get(), left)));
}

}

TEST(Url, ResolvesTheExamplesOfTheRfc)
{
    const auto base = Url("http://a/b/c/d;p?q");
    const std::pair<const char*, const char*> examples[]
        = { { "g:h", "g:h" }, { "g", "http://a/b/c/g" }, { "./g", "http://a/b/c/g" },
              { "g/", "http://a/b/c/g/" }, { "/g", "http://a/g" }, { "//g", "http://g" },
              { "?y", "http://a/b/c/d;p?y" }, { "g?y", "http://a/b/c/g?y" }, { "#s", "http://a/b/c/d;p?q#s" },
              { "g#s", "http://a/b/c/g#s" }, { "g?y#s", "http://a/b/c/g?y#s" }, { ";x", "http://a/b/c/;x" },
              { "g;x?y#s", "http://a/b/c/g;x?y#s" }, { "", "http://a/b/c/d;p?q" }, { ".", "http://a/b/c/" },
              { "./", "http://a/b/c/" }, { "..", "http://a/b/" }, { "../", "http://a/b/" },
              { "../g", "http://a/b/g" }, { "../..", "http://a/" }, { "../../", "http://a/" },
              { "../../g", "http://a/g" }, { "../../../g", "http://a/g" }, { "../../../../g", "http://a/g" },
              { "/./g", "http://a/g" }, { "/../g", "http://a/g" }, { "g.", "http://a/b/c/g." },
              { ".g", "http://a/b/c/.g" }, { "g..", "http://a/b/c/g.." }, { "..g", "http://a/b/c/..g" },
              { "./../g", "http://a/b/g" }, { "./g/.", "http://a/b/c/g/" }, { "g/./h", "http://a/b/c/g/h" },
              { "g/../h", "http://a/b/c/h" }, { "g;x=1/./y", "http://a/b/c/g;x=1/y" },
              { "g;x=1/../y", "http://a/b/c/y" }, { "g?y/../x", "http://a/b/c/g?y/../x" },
              { "g#s/../x", "http://a/b/c/g#s/../x" }, { "http:g", "http:g" } };
    for (const auto& [reference, expected] : examples)
        EXPECT_EQ(Absolute(Url(reference, base.get())), expected) << reference;
}

TEST(Url, ResolvesThroughAChainOfBases)
{
    const auto base = Url("file:///Volumes/A/");
    const auto folder = Url("Library/x/", base.get());
    const auto file = Url("../y.plist", folder.get());
    EXPECT_EQ(Absolute(file), "file:///Volumes/A/Library/y.plist");
    EXPECT_EQ(CFURLGetBaseURL(file.get()), folder.get());
    EXPECT_EQ(Show(Hold(CFURLCopyScheme(file.get()))), "file");
    EXPECT_EQ(Absolute(Url("g", Url("http://host").get())), "http://host/g");
}

TEST(Url, ResolvesAgainstABaseThatIsRelativeItself)
{
    const auto base = Url("a/b");
    const std::pair<const char*, const char*> examples[] = { { "c", "a/c" }, { "../c", "c" },
        { "../../c", "../c" }, { "..", "./" }, { "../../..", "../../" }, { "./", "a/" }, { "/../c", "/c" } };
    for (const auto& [reference, expected] : examples)
        EXPECT_EQ(Absolute(Url(reference, base.get())), expected) << reference;
}

TEST(Url, RefusesTextThatNoUrlHolds)
{
    for (const char* text : { "http://a/b c", "http://a/%", "http://a/%4", "http://a/%zz", "http://a/é",
             "a\"b", "a<b", "a\\b", "a^b", "a{b}", "a#b#c", "/x[1]", "a\nb", "" })
        EXPECT_EQ(Url(text), nullptr) << text;
    EXPECT_NE(Url("http://[::1]:80/%e2%82%ac?a=b&c#d"), nullptr);
    EXPECT_EQ(CFURLCreateWithString(nullptr, nullptr, nullptr), nullptr);
    const UInt8 bytes[] = { 'a', '%', '2' };
    EXPECT_EQ(TextOf(Hold(CFURLCreateWithBytes(nullptr, bytes, 1, kCFStringEncodingUTF8, nullptr))), "a");
    EXPECT_EQ(CFURLCreateWithBytes(nullptr, bytes, 3, kCFStringEncodingUTF8, nullptr), nullptr);
}

TEST(Url, NamesItsParts)
{
    const auto url = Url("https://user:pw@ho%20st:8080/dir/file%20name.tar.gz?q#f");
    EXPECT_EQ(Show(Hold(CFURLCopyScheme(url.get()))), "https");
    EXPECT_EQ(Show(Hold(CFURLCopyHostName(url.get()))), "ho st");
    EXPECT_EQ(Show(Hold(CFURLCopyPath(url.get()))), "/dir/file%20name.tar.gz");
    EXPECT_EQ(Show(Hold(CFURLCopyLastPathComponent(url.get()))), "file name.tar.gz");
    EXPECT_EQ(Show(Hold(CFURLCopyPathExtension(url.get()))), "gz");
    EXPECT_EQ(Show(Hold(CFURLCopyHostName(Url("http://[fe80::1]:80/").get()))), "[fe80::1]");
    EXPECT_EQ(CFURLCopyPath(Url("mailto:a@b").get()), nullptr);
    EXPECT_EQ(CFURLCopyScheme(Url("a/b").get()), nullptr);
    for (const char* bare : { "file:///.hidden", "file:///a.", "file:///..", "file:///a.b/c" })
        EXPECT_EQ(CFURLCopyPathExtension(Url(bare).get()), nullptr) << bare;
}

TEST(Url, KnowsFolders)
{
    for (const char* folder : { "file:///", "file:///a/", "a/..", ".", "file:///a/./?q" })
        EXPECT_TRUE(CFURLHasDirectoryPath(Url(folder).get())) << folder;
    for (const char* file : { "file:///a", "a", "..a", "http://host", "file:///a?/" })
        EXPECT_FALSE(CFURLHasDirectoryPath(Url(file).get())) << file;
}

TEST(FileUrl, CarriesEveryByteOfAPathThereAndBack)
{
    std::string all = "/";
    for (int byte = 1; byte < 256; byte++)
        all += static_cast<char>(byte);
    EXPECT_EQ(Path(File(all)), all);
    const auto base = File("/base/", true);
    EXPECT_EQ(Path(File(all.substr(1), false, base.get())), "/base/" + all.substr(1));
    EXPECT_EQ(CFURLCopyFileSystemPath(File("/\xff").get(), kCFURLPOSIXPathStyle), nullptr) << "not UTF-8";
    EXPECT_EQ(TextOf(File("/a b%é;?#[x]:y")), "file:///a%20b%25%C3%A9%3B%3F%23%5Bx%5D:y");
    EXPECT_EQ(Path(File("//double//slash")), "//double//slash");
}

TEST(FileUrl, FillsABufferOnlyWhenPathAndTerminatorFit)
{
    const auto url = File("/tmp/é");
    EXPECT_EQ(Path(url, 8), "/tmp/é");
    EXPECT_EQ(Path(url, 7), "(false)");
    EXPECT_EQ(Path(url, 0), "(false)");
    EXPECT_EQ(Path(File("/"), 2), "/");
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, nullptr, 100));
}

TEST(FileUrl, EndsWithASlashWhenItIsToBeAFolder)
{
    EXPECT_EQ(TextOf(File("/a", true)), "file:///a/");
    EXPECT_EQ(TextOf(File("/a//", true)), "file:///a/");
    EXPECT_EQ(TextOf(File("/a/", false)), "file:///a");
    EXPECT_EQ(TextOf(File("/", false)), "file:///");
    EXPECT_EQ(Path(File("/a", true)), "/a");
    EXPECT_EQ(File(""), nullptr);
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR(""), kCFURLPOSIXPathStyle, false), nullptr);
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, Units(u"/\xd800").get(), kCFURLPOSIXPathStyle, false),
        nullptr);
}

TEST(FileUrl, OfARelativePathMeansTheBaseOrTheWorkingFolder)
{
    const auto base = File("/Library", true);
    const auto url = Hold(CFURLCreateWithFileSystemPathRelativeToBase(
        nullptr, CFSTR("a:b/c"), kCFURLPOSIXPathStyle, false, base.get()));
    EXPECT_EQ(Path(url), "/Library/a:b/c");
    EXPECT_EQ(Show(Hold(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle))), "a:b/c");
    EXPECT_EQ(Path(File("/etc", false, base.get())), "/etc");
    EXPECT_EQ(Path(File("x")), (std::filesystem::current_path() / "x").string());
}

TEST(FileUrl, IsNoPathForOtherUrlsOrNullBytes)
{
    for (const char* text : { "http://host/etc/passwd", "mailto:a@b", "file:///a%00b", "file:relative" }) {
        EXPECT_EQ(Path(Url(text)), "(false)") << text;
        EXPECT_EQ(CFURLCopyFileSystemPath(Url(text).get(), kCFURLPOSIXPathStyle), nullptr) << text;
    }
    EXPECT_EQ(Path(Url("FILE://localhost/a%2Fb/")), "/a/b");
}

TEST(UrlChanges, AppendComponents)
{
    EXPECT_EQ(Appended("file:///a", "b c"), "file:///a/b%20c");
    EXPECT_EQ(Appended("file:///a/", "b", true), "file:///a/b/");
    EXPECT_EQ(Appended("file:///", "/b/c/"), "file:///b/c");
    EXPECT_EQ(Appended("http://host?q#f", "x"), "http://host/x?q#f");
    EXPECT_EQ(Appended("mailto:a", "x"), "(null)");
    const auto base = File("/base", true);
    const auto relative = Hold(
        CFURLCreateCopyAppendingPathComponent(nullptr, Url("sub", base.get()).get(), CFSTR("50%"), false));
    EXPECT_EQ(CFURLGetBaseURL(relative.get()), base.get());
    EXPECT_EQ(Path(relative), "/base/sub/50%");
    const auto ofBase = Hold(CFURLCreateCopyAppendingPathComponent(
        nullptr, Url("", File("/file").get()).get(), CFSTR("x"), false));
    EXPECT_EQ(Path(ofBase), "/file/x") << "a URL without a path means its base's";
}

TEST(UrlChanges, DeleteTheLastComponent)
{
    const auto parent = [](const char* url) {
        return TextOf(Hold(CFURLCreateCopyDeletingLastPathComponent(nullptr, Url(url).get())));
    };
    EXPECT_EQ(parent("file:///a/b%20c"), "file:///a/");
    EXPECT_EQ(parent("file:///a/b/"), "file:///a/");
    EXPECT_EQ(parent("file:///a"), "file:///");
    EXPECT_EQ(parent("file:///"), "file:///");
    EXPECT_EQ(parent("a"), "./");
    EXPECT_EQ(parent("a/.."), "a/../../");
    EXPECT_EQ(parent("http://h/a?q"), "http://h/?q");
}

TEST(UrlChanges, AppendAndDeleteExtensions)
{
    const auto with = [](const char* url, const char* extension) {
        return TextOf(
            Hold(CFURLCreateCopyAppendingPathExtension(nullptr, Url(url).get(), Text(extension).get())));
    };
    EXPECT_EQ(with("file:///a/b", "p l"), "file:///a/b.p%20l");
    EXPECT_EQ(with("file:///App/", "app"), "file:///App.app/");
    EXPECT_EQ(with("file:///", "x"), "(null)");
    EXPECT_EQ(with("file:///a", "x/y"), "(null)");
    const auto without = [](const char* url) {
        return TextOf(Hold(CFURLCreateCopyDeletingPathExtension(nullptr, Url(url).get())));
    };
    EXPECT_EQ(without("file:///a.b/c.tar.gz"), "file:///a.b/c.tar");
    EXPECT_EQ(without("file:///a.b/c"), "file:///a.b/c");
    EXPECT_EQ(without("file:///A.app/"), "file:///A/");
    EXPECT_EQ(without("file:///.hidden"), "file:///.hidden");
}

TEST(UrlEscapes, ComeOffCharacterByCharacter)
{
    EXPECT_EQ(Unescaped("a%20%C3%A9%25"), "a é%");
    EXPECT_EQ(Unescaped("%C3%A9%2F%20", CFSTR("/é")), "%C3%A9%2F ");
    EXPECT_EQ(Unescaped("%ff"), "(null)");
    EXPECT_EQ(Unescaped("%C3x"), "(null)");
    EXPECT_EQ(Unescaped("100%"), "(null)");
    EXPECT_EQ(Unescaped("%4"), "(null)");
    EXPECT_EQ(Unescaped("%g0"), "(null)");
    EXPECT_EQ(Unescaped("a%20", nullptr), "a%20");
}

TEST(UrlEscapes, GoOnWhatAUrlCannotHold)
{
    const auto escaped
        = [](const char* text, CFStringRef unescaped, CFStringRef escapedToo, CFStringEncoding encoding) {
              return Show(Hold(CFURLCreateStringByAddingPercentEscapes(
                  nullptr, Text(text).get(), unescaped, escapedToo, encoding)));
          };
    EXPECT_EQ(escaped("a b/é%#&", nullptr, nullptr, kCFStringEncodingUTF8), "a%20b/%C3%A9%25%23&");
    EXPECT_EQ(escaped("a b/é&", CFSTR(" "), CFSTR("&/"), kCFStringEncodingMacRoman), "a b%2F%8E%26");
    EXPECT_EQ(escaped("€", nullptr, nullptr, kCFStringEncodingASCII), "(null)");
}

TEST(Url, EqualityCountsTextAndBase)
{
    const auto base = File("/a", true);
    EXPECT_TRUE(CFEqual(Url("x", base.get()).get(), Url("x", File("/a", true).get()).get()));
    EXPECT_FALSE(CFEqual(Url("x", base.get()).get(), Url("x").get()));
    EXPECT_FALSE(CFEqual(Url("x").get(), Url("x", base.get()).get()));
    EXPECT_FALSE(CFEqual(Url("file:///a/x").get(), Url("x", base.get()).get()))
        << "though both mean one file";
}
