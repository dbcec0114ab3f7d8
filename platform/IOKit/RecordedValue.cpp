#include <IOKit/RecordedValue.h>

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/PropertyListCheck.h>

#include <unicode/utf8.h>
#include <utility>

namespace iokit {

namespace {

/// Together with the entry's own dictionary it can still be written as a property list.
constexpr size_t kDeepest = kPropertyListDepthLimit - 1;

}

std::string Repaired(std::string_view bytes, bool (*isFit)(int32_t character))
{
    constexpr const char* replacement = "\xEF\xBF\xBD";
    const auto* const units = reinterpret_cast<const uint8_t*>(bytes.data());
    std::string repaired;
    size_t done = 0;
    for (size_t i = 0; i < bytes.size();) {
        const size_t start = i;
        UChar32 character = 0;
        U8_NEXT(units, i, bytes.size(), character);
        if (character >= 0 && isFit(character))
            continue;
        repaired.append(bytes, done, start - done);
        repaired += replacement;
        done = i;
    }
    return repaired.append(bytes, done);
}

cf::Owned<CFStringRef> RecordedString(std::string_view bytes)
{
    cf::Owned<CFStringRef> text(cf::MakeString(bytes));
    if (!text)
        text.reset(cf::MakeString(Repaired(bytes, [](int32_t) { return true; })));
    return text;
}

cf::Owned<CFTypeRef> RecordedNumber(uint64_t bits)
{
    return cf::Owned<CFTypeRef>(CFNumberCreate(nullptr, kCFNumberSInt64Type, &bits));
}

cf::Owned<CFTypeRef> RecordedData(std::string_view bytes)
{
    const auto* const start = reinterpret_cast<const UInt8*>(bytes.data());
    return cf::Owned<CFTypeRef>(CFDataCreate(nullptr, start, static_cast<CFIndex>(bytes.size())));
}

CFStringRef Keys::key(std::string_view bytes)
{
    const auto known = fKeys.find(bytes);
    if (known != fKeys.end())
        return known->second.get();
    return fKeys.emplace(bytes, RecordedString(bytes)).first->second.get();
}

bool ValueMaker::hasPlace() const
{
    return fLevels.empty() || fLevels.back().kind == Kind::Array || fLevels.back().key != nullptr;
}

void ValueMaker::addKey()
{
    if (!fLevels.empty() && fLevels.back().kind == Kind::Dictionary)
        fMaker.addKey(cf::Retained(std::exchange(fLevels.back().key, nullptr)));
}

bool ValueMaker::add(cf::Owned<CFTypeRef> value)
{
    if (!isKept())
        return true; // was lost as a whole
    if (!value || !hasPlace()) {
        if (!fLevels.empty())
            fLevels.back().key = nullptr;
        return false;
    }
    addKey();
    fMaker.add(value.release());
    return true;
}

bool ValueMaker::begin(Kind kind)
{
    const bool wasKept = isKept();
    const bool keeps = wasKept && hasPlace() && depth() < kDeepest;
    fLevels.push_back({ kind, keeps, nullptr, fMaker.start() });
    return keeps || !wasKept;
}

void ValueMaker::end()
{
    const Level ended = fLevels.back();
    fLevels.pop_back();
    if (ended.isKept && ended.kind == Kind::Array)
        fMaker.finishArray(ended.start);
    else if (ended.isKept)
        fMaker.finishDictionary(ended.start);
    if (ended.isKept)
        addKey();
    else if (!fLevels.empty())
        fLevels.back().key = nullptr;
}

cf::Owned<CFTypeRef> ValueMaker::take()
{
    while (!fLevels.empty())
        end();
    return cf::Owned<CFTypeRef>(fMaker.start().value > 0 ? fMaker.take() : nullptr);
}

}
