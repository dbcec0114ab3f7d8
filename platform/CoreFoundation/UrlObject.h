#pragma once

#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/Runtime.h>
#include <CoreFoundation/StringObject.h>
#include <CoreFoundation/UrlText.h>

struct __CFURL : cf::Object {
    /// @param text a URL. @param baseURL may be null.
    __CFURL(std::string text, CFURLRef baseURL)
        : Object(cf::kURLType)
        , string(cf::MakeString(cf::Text(std::move(text))))
        , base(cf::Retained(baseURL))
    {
    }
    static CFTypeID typeID() { return cf::kURLType; }

    const std::string& text() const { return string->text.ascii(); }
    cf::UrlParts parts() const { return cf::SplitUrl(text()); }
    std::string absoluteText() const { return base ? cf::ResolveUrl(base->absoluteText(), text()) : text(); }

    bool isEqual(const Object& other) const override
    {
        const auto& url = static_cast<const __CFURL&>(other);
        const bool sameBase = base && url.base ? CFEqual(base.get(), url.base.get()) : base == url.base;
        return sameBase && text() == url.text();
    }
    CFHashCode hash() const override { return string->hash(); }
    CFStringRef copyDescription() const override
    {
        return base ? CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@ -- %@"), string.get(), base.get())
                    : cf::Retained(string.get());
    }

    cf::Owned<CFStringRef> string; ///< all ASCII
    cf::Owned<CFURLRef> base;
};
