#pragma once

#include <CoreFoundation/MacTypes.h>

// Messages between processes. The one process that answers here is the system, and what it can be asked is to
// restart.

using DescType = FourCharCode;
using AEEventClass = FourCharCode;
using AEEventID = FourCharCode;
using AEReturnID = SInt16;
using AETransactionID = SInt32;
using AESendMode = SInt32;

enum : DescType {
    typeNull = 0x6E756C6C, // null
    typeAppleEvent = 0x61657674, // aevt
    typeProcessSerialNumber = 0x70736E20 // psn, space
};

enum : AEEventClass { kCoreEventClass = 0x61657674 }; // aevt
enum : AEEventID { kAERestart = 0x72657374 }; // rest

enum : AEReturnID { kAutoGenerateReturnID = -1 };
enum : AETransactionID { kAnyTransactionID = 0 };

enum : AESendMode {
    kAENoReply = 0x00000001,
    kAECanSwitchLayer = 0x00000040 ///< the receiver may come to the front
};
enum { kAEDefaultTimeout = -1 };

using AEDataStorageType = struct OpaqueAEDataStorageType*;
using AEDataStorage = AEDataStorageType*;

#pragma pack(push, 2)
/// A value with its type. All zeroes is a value without data, and so is typeNull; both may be disposed of.
struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle; ///< the descriptor's own
};
#pragma pack(pop)

using AEAddressDesc = AEDesc; ///< whom an event is for
using AppleEvent = AEDesc;

extern "C" {

/// @param dataPtr copied; may be null when `dataSize` is 0. @param dataSize in bytes.
/// @param result overwritten, not disposed of; on failure a null descriptor.
/// @return noErr; paramErr, a null or negative argument where there may be none; memFullErr.
OSErr AECreateDesc(DescType typeCode, const void* dataPtr, Size dataSize, AEDesc* result);

/// Frees the data and leaves a null descriptor; disposing of that again is harmless.
/// @return noErr; paramErr for null.
OSErr AEDisposeDesc(AEDesc* theAEDesc);

/// @param dataPtr receives at most `maximumSize` bytes. @return noErr; paramErr, null or negative.
OSErr AEGetDescData(const AEDesc* theAEDesc, void* dataPtr, Size maximumSize);
/// @return in bytes; 0 for null.
Size AEGetDescDataSize(const AEDesc* theAEDesc);

/// @param target copied. @param result as for AECreateDesc. @return noErr; paramErr, null or a serial number
/// of the wrong size; memFullErr.
OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc* target,
    AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);

/// Sends an event to the process it names as its target, by serial number.
///
/// kAERestart to the system restarts the computer where the start-up volume is the system's: the host's login manager
/// is asked, which may ask the user, and this returns when that is decided. Any other volume is only a folder, which
/// cannot restart. That one is wanted is recorded in the property list HostRestartRequestPath(): Requested, a date;
/// ProcessID, an integer; Program, the sending program's path. A request that is there already is replaced.
/// @param reply overwritten with a null descriptor: no event is replied to. May be null with kAENoReply.
/// @param sendMode kAENoReply, kAECanSwitchLayer. @param timeOutInTicks of no meaning without a reply.
/// @return noErr, also for a restart that is yet to come; paramErr, null; errAENotAppleEvent; procNotFound,
/// the target is not the system, or nobody restarts it; errAEEventNotHandled, the system knows no such event;
/// permErr, ioErr: the restart was refused, or the request could not be recorded; memFullErr.
OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode, long timeOutInTicks);

} // extern "C"
