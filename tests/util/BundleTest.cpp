#include "UtilityTest.h"

#include "util/Bundles.h"
#include "util/CFRef.h"

namespace {

class BundleFactsTest : public UtilityTest { };

}

TEST_F(BundleFactsTest, BundlesTellTheirProgramAndIdentifier)
{
    TestVolume::writeBundle(path("Thing.app"), "1.0", "1.0", "com.example.Thing");
    TestVolume::write(path("Thing.app/Contents/MacOS/Thing"), "");
    const std::string program = path("Thing.app/Contents/MacOS/Thing");
    std::string buffer(program.size() + 1, 'x'); // exactly enough, for the address sanitizer to see
    EXPECT_TRUE(
        CreateExecutablePathnameFromBundlePathname("/private/tmp/Thing.app", buffer.data(), buffer.size()));
    EXPECT_STREQ(buffer.data(), program.c_str());
    EXPECT_FALSE(CreateExecutablePathnameFromBundlePathname(
        "/private/tmp/Thing.app", buffer.data(), buffer.size() - 1));
    EXPECT_FALSE(CreateExecutablePathnameFromBundlePathname("/private/tmp/Thing.app", buffer.data(), 0));

    std::string identifier(sizeof "com.example.Thing", 'x');
    EXPECT_TRUE(
        CreateBundleID_FromBundlePathname("/private/tmp/Thing.app", identifier.data(), identifier.size()));
    EXPECT_STREQ(identifier.data(), "com.example.Thing");
    EXPECT_FALSE(CreateBundleID_FromBundlePathname(
        "/private/tmp/Thing.app", identifier.data(), identifier.size() - 1));
    TestVolume::writeBundle(path("Thing.app"), "1.0", "1.0", "com.example.Th\u00efng");
    EXPECT_FALSE(
        CreateBundleID_FromBundlePathname("/private/tmp/Thing.app", identifier.data(), identifier.size()));

    const CFRef<CFMutableDictionaryRef> info(CreateInfoPListDictionaryForBundle("/private/tmp/Thing.app"));
    EXPECT_TRUE(info && CFDictionaryContainsKey(info.get(), kCFBundleVersionKey));
    TestVolume::write(path("Thing.app/Contents/Info.plist"), "<plist><array/></plist>");
    for (const char* none : { "/private/tmp/Thing.app", "/private/tmp/None.app", "" }) {
        EXPECT_EQ(CreateInfoPListDictionaryForBundle(none), nullptr) << none;
        EXPECT_FALSE(CreateBundleID_FromBundlePathname(none, identifier.data(), identifier.size())) << none;
    }
    EXPECT_EQ(CreateInfoPListDictionaryForBundle(nullptr), nullptr);
    EXPECT_FALSE(CreateBundleID_FromBundlePathname(nullptr, identifier.data(), identifier.size()));
}

TEST(BundleNameTest, IsTheLastComponentWithoutItsSlash)
{
    char buffer[6] = {};
    EXPECT_TRUE(CreateExecutableBundleNameFromPathname("/a/B.app", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "B.app");
    EXPECT_TRUE(CreateExecutableBundleNameFromPathname("/a/Bapp/", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "Bapp");
    for (const char* refused : { "/a/BB.app", "B.app", "" })
        EXPECT_FALSE(CreateExecutableBundleNameFromPathname(refused, buffer, sizeof buffer)) << refused;
    EXPECT_FALSE(CreateExecutableBundleNameFromPathname(nullptr, buffer, sizeof buffer));
}
