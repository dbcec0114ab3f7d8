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
    const auto relative = Url("a/b");
    const std::pair<const char*, const char*> relatives[] = { { "c", "a/c" }, { "../c", "c" },
        { "../../c", "../c" }, { "..", "./" }, { "../../..", "../../" }, { "./", "a/" }, { "/../c", "/c" } };
    for (const auto& [reference, expected] : relatives)
        EXPECT_EQ(Absolute(Url(reference, relative.get())), expected) << reference;
    const auto volume = Url("file:///Volumes/A/"), folder = Url("Library/x/", volume.get());
    EXPECT_EQ(Absolute(Url("../y.plist", folder.get())), "file:///Volumes/A/Library/y.plist");
    EXPECT_EQ(Absolute(Url("g", Url("http://host").get())), "http://host/g");
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
    EXPECT_EQ(Taken(CFURLCopyScheme(url.get())), "https");
    EXPECT_EQ(Taken(CFURLCopyHostName(url.get())), "ho st");
    EXPECT_EQ(Taken(CFURLCopyPath(url.get())), "/dir/file%20name.tar.gz");
    EXPECT_EQ(Taken(CFURLCopyLastPathComponent(url.get())), "file name.tar.gz");
    EXPECT_EQ(Taken(CFURLCopyPathExtension(url.get())), "gz");
    EXPECT_EQ(Taken(CFURLCopyHostName(Url("http://[fe80::1]:80/").get())), "[fe80::1]");
    EXPECT_EQ(CFURLCopyPath(Url("mailto:a@b").get()), nullptr);
    EXPECT_EQ(CFURLCopyScheme(Url("a/b").get()), nullptr);
    for (const char* bare : { "file:///.hidden", "file:///a.", "file:///..", "file:///a.b/c" })
        EXPECT_EQ(CFURLCopyPathExtension(Url(bare).get()), nullptr) << bare;
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
    EXPECT_EQ(Path(File("/tmp/é"), 8), "/tmp/é");
    EXPECT_EQ(Path(File("/tmp/é"), 7), "(false)");
    EXPECT_EQ(Path(File("/"), 0), "(false)");
}

TEST(FileUrl, OfARelativePathMeansTheBaseOrTheWorkingFolder)
{
    const auto base = File("/Library", true);
    const auto url = Hold(CFURLCreateWithFileSystemPathRelativeToBase(
        nullptr, CFSTR("a:b/c"), kCFURLPOSIXPathStyle, false, base.get()));
    EXPECT_EQ(Path(url), "/Library/a:b/c");
    EXPECT_EQ(Taken(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle)), "a:b/c");
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

TEST(FileUrl, EndsWithASlashWhenItIsToBeAFolder)
{
    EXPECT_EQ(TextOf(File("/a//", true)), "file:///a/");
    EXPECT_EQ(TextOf(File("/a/", false)), "file:///a");
    EXPECT_EQ(TextOf(File("/", false)), "file:///");
    EXPECT_EQ(File(""), nullptr);
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, Units(u"/\xd800").get(), kCFURLPOSIXPathStyle, false),
        nullptr);
    for (const char* folder : { "file:///", "file:///a/", "a/..", ".", "file:///a/./?q" })
        EXPECT_TRUE(CFURLHasDirectoryPath(Url(folder).get())) << folder;
    for (const char* file : { "file:///a", "a", "..a", "http://host", "file:///a?/" })
        EXPECT_FALSE(CFURLHasDirectoryPath(Url(file).get())) << file;
}

TEST(UrlChanges, AppendComponents)
{
    const auto appended = [](const Held<CFURLRef>& url, CFStringRef component, bool isFolder = false) {
        return Hold(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), component, isFolder));
    };
    EXPECT_EQ(TextOf(appended(Url("file:///a"), CFSTR("b c"))), "file:///a/b%20c");
    EXPECT_EQ(TextOf(appended(Url("file:///a/"), CFSTR("b"), true)), "file:///a/b/");
    EXPECT_EQ(TextOf(appended(Url("file:///"), CFSTR("/b/c/"))), "file:///b/c");
    EXPECT_EQ(TextOf(appended(Url("http://host?q#f"), CFSTR("x"))), "http://host/x?q#f");
    EXPECT_EQ(TextOf(appended(Url("mailto:a"), CFSTR("x"))), "(null)");
    const auto base = File("/base", true);
    EXPECT_EQ(Path(appended(Url("sub", base.get()), CFSTR("50%"))), "/base/sub/50%");
    EXPECT_EQ(Path(appended(Url("", File("/file").get()), CFSTR("x"))), "/file/x")
        << "without a path: its base's";
}

TEST(UrlChanges, DeleteComponentsAndAppendAndDeleteExtensions)
{
    const std::pair<const char*, const char*> parents[] = { { "file:///a/b%20c", "file:///a/" },
        { "file:///a/b/", "file:///a/" }, { "file:///a", "file:///" }, { "file:///", "file:///" },
        { "a", "./" }, { "a/..", "a/../../" }, { "http://h/a?q", "http://h/?q" } };
    for (const auto& [url, parent] : parents)
        EXPECT_EQ(TextOf(Hold(CFURLCreateCopyDeletingLastPathComponent(nullptr, Url(url).get()))), parent);
    const std::pair<const char*, const char*> bare[]
        = { { "file:///a.b/c.tar.gz", "file:///a.b/c.tar" }, { "file:///a.b/c", "file:///a.b/c" },
              { "file:///A.app/", "file:///A/" }, { "file:///.hidden", "file:///.hidden" } };
    for (const auto& [url, without] : bare)
        EXPECT_EQ(TextOf(Hold(CFURLCreateCopyDeletingPathExtension(nullptr, Url(url).get()))), without);
    const auto with = [](const char* url, CFStringRef extension) {
        return TextOf(Hold(CFURLCreateCopyAppendingPathExtension(nullptr, Url(url).get(), extension)));
    };
    EXPECT_EQ(with("file:///a/b", CFSTR("p l")), "file:///a/b.p%20l");
    EXPECT_EQ(with("file:///App/", CFSTR("app")), "file:///App.app/");
    EXPECT_EQ(with("file:///", CFSTR("x")), "(null)");
    EXPECT_EQ(with("file:///a", CFSTR("x/y")), "(null)");
}

TEST(UrlEscapes, ComeOffCharacterByCharacterAndGoOnWhatAUrlCannotHold)
{
    const auto unescaped = [](const char* text, CFStringRef left = CFSTR("")) {
        return Taken(CFURLCreateStringByReplacingPercentEscapes(nullptr, Text(text).get(), left));
    };
    EXPECT_EQ(unescaped("a%20%C3%A9%25"), "a é%");
    EXPECT_EQ(unescaped("%C3%A9%2F%20", CFSTR("/é")), "%C3%A9%2F ");
    for (const char* invalid : { "%ff", "%C3x", "100%", "%4", "%g0" })
        EXPECT_EQ(unescaped(invalid), "(null)") << invalid;
    EXPECT_EQ(unescaped("a%20", nullptr), "a%20");
    const auto escaped = [](const char* text, CFStringRef left, CFStringRef escapedToo,
                             CFStringEncoding encoding) {
        return Taken(
            CFURLCreateStringByAddingPercentEscapes(nullptr, Text(text).get(), left, escapedToo, encoding));
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
    EXPECT_FALSE(CFEqual(Url("file:///a/x").get(), Url("x", base.get()).get()))
        << "though both mean one file";
}
