#include "AppleEvents.h"

#include "MacErrors.h"
#include "RestartRequest.h"
#include "SystemRestart.h"

#include <Host/HostPath.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <vector>

/// A descriptor's data. Those of an Apple event are an EventRecord.
struct OpaqueAEDataStorageType {
    std::vector<UInt8> bytes;
};

namespace {

struct EventRecord {
    AEEventClass eventClass;
    AEEventID eventID;
    DescType targetType;
    ProcessSerialNumber target; ///< zeroes for targets of other types
};

bool IsSystemProcess(const EventRecord& event)
{
    return event.targetType == typeProcessSerialNumber && event.target.highLongOfPSN == 0
        && event.target.lowLongOfPSN == 1;
}

/// The two lowest bits say whether and how a reply is awaited.
bool HasReply(AESendMode mode) { return (mode & 3) != kAENoReply; }

const std::vector<UInt8>& BytesOf(const AEDesc& desc)
{
    static const std::vector<UInt8> none;
    return desc.dataHandle != nullptr ? (*desc.dataHandle)->bytes : none;
}

} // namespace

OSErr AECreateDesc(DescType typeCode, const void* dataPtr, Size dataSize, AEDesc* result)
try {
    if (result == nullptr)
        return paramErr;
    *result = { typeNull, nullptr };
    if (dataSize < 0 || (dataPtr == nullptr && dataSize > 0))
        return paramErr;
    const auto* first = static_cast<const UInt8*>(dataPtr);
    auto storage = std::make_unique<OpaqueAEDataStorageType>();
    if (dataSize > 0)
        storage->bytes.assign(first, first + dataSize);
    auto handle = std::make_unique<AEDataStorageType>(nullptr);
    *handle = storage.release();
    *result = { typeCode, handle.release() };
    return noErr;
} catch (const std::exception&) { // a size beyond any memory is a length_error
    return memFullErr;
}

OSErr AEDisposeDesc(AEDesc* theAEDesc)
{
    if (theAEDesc == nullptr)
        return paramErr;
    if (theAEDesc->dataHandle != nullptr)
        delete *theAEDesc->dataHandle;
    delete theAEDesc->dataHandle;
    *theAEDesc = { typeNull, nullptr };
    return noErr;
}

OSErr AEGetDescData(const AEDesc* theAEDesc, void* dataPtr, Size maximumSize)
{
    if (theAEDesc == nullptr || dataPtr == nullptr || maximumSize < 0)
        return paramErr;
    const std::vector<UInt8>& bytes = BytesOf(*theAEDesc);
    const size_t size = std::min(bytes.size(), static_cast<size_t>(maximumSize));
    if (size > 0)
        std::memcpy(dataPtr, bytes.data(), size);
    return noErr;
}

Size AEGetDescDataSize(const AEDesc* theAEDesc)
{
    return theAEDesc != nullptr ? static_cast<Size>(BytesOf(*theAEDesc).size()) : 0;
}

OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc* target,
    AEReturnID, AETransactionID, AppleEvent* result)
{
    if (target == nullptr || result == nullptr)
        return paramErr;
    EventRecord record { theAEEventClass, theAEEventID, target->descriptorType, {} };
    if (target->descriptorType == typeProcessSerialNumber) {
        if (AEGetDescDataSize(target) != sizeof(record.target))
            return paramErr;
        AEGetDescData(target, &record.target, sizeof(record.target));
    }
    return AECreateDesc(typeAppleEvent, &record, sizeof(record), result);
}

OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode, long)
{
    if (event == nullptr || (reply == nullptr && HasReply(sendMode)))
        return paramErr;
    if (reply != nullptr)
        *reply = { typeNull, nullptr };
    EventRecord record {};
    if (event->descriptorType != typeAppleEvent || AEGetDescDataSize(event) != sizeof(record))
        return errAENotAppleEvent;
    AEGetDescData(event, &record, sizeof(record));
    if (!IsSystemProcess(record))
        return procNotFound;
    if (record.eventClass != kCoreEventClass || record.eventID != kAERestart)
        return errAEEventNotHandled;
    return HostStartupVolumeIsSystems() ? RestartSystem() : RecordRestartRequest();
}
