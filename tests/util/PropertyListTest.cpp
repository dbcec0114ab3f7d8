#include "UtilityTest.h"

#include "util/CFRef.h"
#include "util/CFText.h"
#include "util/PropertyLists.h"

namespace {

class PropertyListFileTest : public UtilityTest { };

constexpr const char* kDictionary = "<plist version=\"1.0\"><dict><key>k</key><array/></dict></plist>";
constexpr const char* kArray = "<plist version=\"1.0\"><array><string>v</string></array></plist>";

}

TEST_F(PropertyListFileTest, DictionariesAndArraysGoThroughFilesAndStayMutable)
{
    TestVolume::write(path("dictionary"), kDictionary);
    TestVolume::write(path("array"), kArray);
    const CFRef<CFMutableDictionaryRef> dictionary(
        CreateCFDictionaryWithContentsOfFile("/private/tmp/dictionary"));
    const CFRef<CFMutableArrayRef> array(CreateCFArrayWithContentsOfFile("/private/tmp/array"));
    ASSERT_TRUE(dictionary && array);
    CFDictionarySetValue(dictionary.get(), CFSTR("more"), CFSTR("\u00e4"));
    CFArrayAppendValue(array.get(), dictionary.get());
    EXPECT_TRUE(SetContentsOfFileToCFDictionary("/private/tmp/out", dictionary.get()));
    EXPECT_TRUE(TestVolume::isPropertyList(path("out")));
    EXPECT_TRUE(SetContentsOfFileToCFArray("/private/tmp/out", array.get()));
    const CFRef<CFMutableArrayRef> again(CreateCFArrayWithContentsOfFile("/private/tmp/out"));
    EXPECT_TRUE(again && CFEqual(again.get(), array.get()));
    EXPECT_TRUE(TestVolume::read(path("out")).starts_with("<?xml"));
}

TEST_F(PropertyListFileTest, OtherObjectsDamageAndNullsAreRefused)
{
    TestVolume::write(path("array"), kArray);
    TestVolume::write(path("damaged"), "<plist><dict>");
    TestVolume::write(path("empty"), "");
    for (const char* file :
        { "/private/tmp/array", "/private/tmp/damaged", "/private/tmp/empty", "/private/tmp/none" })
        EXPECT_EQ(CreateCFDictionaryWithContentsOfFile(file), nullptr) << file;
    EXPECT_EQ(CreateCFArrayWithContentsOfBuffer(
                  kDictionary, static_cast<uint32_t>(std::string(kDictionary).size())),
        nullptr);
    EXPECT_EQ(CreateCFArrayWithContentsOfBuffer(nullptr, 3), nullptr);
    EXPECT_EQ(CreateCFDictionaryWithContentsOfBuffer("", 0), nullptr);

    // A null object has no form in a property list.
    const CFRef<CFMutableArrayRef> formless(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(formless.get(), kCFNull);
    void* buffer = nullptr;
    uint32_t length = 0;
    EXPECT_FALSE(CreateBufferFromCFArray(&buffer, &length, formless.get())
        || CreateBufferFromCFDictionary(&buffer, &length, nullptr));
    EXPECT_FALSE(SetContentsOfFileToCFArray("/private/tmp/array", formless.get()));
    EXPECT_EQ(TestVolume::read(path("array")), kArray);
    CFArrayRemoveAllValues(formless.get());
    EXPECT_FALSE(SetContentsOfFileToCFArray("/private/tmp/none/file", formless.get()));
    ASSERT_TRUE(CreateBufferFromCFArray(&buffer, &length, formless.get()));
    const CFRef<CFMutableArrayRef> read(CreateCFArrayWithContentsOfBuffer(buffer, length));
    EXPECT_TRUE(read && CFEqual(read.get(), formless.get()));
    free(buffer);
}
