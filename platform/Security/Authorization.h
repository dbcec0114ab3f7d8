#pragma once

#include <CoreFoundation/MacTypes.h>
#include <Security/AuthorizationTags.h>

#include <cstddef>
#include <cstdio>

// Asking for rights and running a tool with them. A reference stands for what a program was allowed to do;
// rights are asked for by name, and a refusal is never remembered: the next try asks again. All functions may be
// called from any thread, and wait for the user where they may ask.
//
// The effective user 0 holds every right. For others there is kAuthorizationRightExecute: on the system's start-up
// volume polkit decides, by the rules and the password of an administrator; on a volume that is the caller's own
// folder, where the tools can do nothing that the caller could not, the user only has to confirm it. Everybody else
// is refused.

/// Opaque; only ever compared with the references that were handed out, so a stale one does no harm.
using AuthorizationRef = const struct AuthorizationOpaqueRef*;

using AuthorizationString = const char*;
using AuthorizationFlags = UInt32;

/// A right, or a piece of the environment, by name. Everything it points at stays its maker's.
struct AuthorizationItem {
    AuthorizationString name; ///< required
    size_t valueLength; ///< bytes at `value`
    void* value;
    UInt32 flags; ///< 0
};

struct AuthorizationItemSet {
    UInt32 count;
    AuthorizationItem* items; ///< null only if `count` is 0
};

using AuthorizationRights = AuthorizationItemSet;
using AuthorizationEnvironment = AuthorizationItemSet;
#define kAuthorizationEmptyEnvironment nullptr

enum : AuthorizationFlags {
    kAuthorizationFlagDefaults = 0,
    kAuthorizationFlagInteractionAllowed = 1 << 0, ///< the user may be asked
    kAuthorizationFlagExtendRights = 1 << 1, ///< grant rights that the reference does not hold yet
    kAuthorizationFlagPartialRights = 1 << 2, ///< grant those that can be granted, not all or none
    kAuthorizationFlagDestroyRights = 1 << 3, ///< with AuthorizationFree: for whoever shares them as well
    kAuthorizationFlagPreAuthorize = 1
        << 4 ///< ask the user now so that nobody is asked when the right is used
};

enum : OSStatus {
    errAuthorizationSuccess = 0,
    errAuthorizationInvalidSet = -60001, ///< null items, or an item without a name
    errAuthorizationInvalidRef = -60002, ///< no reference that is in use
    errAuthorizationInvalidTag = -60003,
    errAuthorizationInvalidPointer = -60004, ///< a null where there may be none
    errAuthorizationDenied = -60005,
    errAuthorizationCanceled = -60006, ///< by the user
    errAuthorizationInteractionNotAllowed = -60007, ///< somebody has to be asked, and may not or cannot be
    errAuthorizationInternal = -60008, ///< memory or another means of the host is short
    errAuthorizationExternalizeNotAllowed = -60009,
    errAuthorizationInternalizeNotAllowed = -60010,
    errAuthorizationInvalidFlags = -60011,
    errAuthorizationToolExecuteFailure = -60031, ///< the tool may not or cannot be started
    errAuthorizationToolEnvironmentError = -60032,
    errAuthorizationBadAddress = -60033
};

enum { kAuthorizationExternalFormLength = 32 };

/// Stands for a reference in a message. Whoever knows the bytes shares its rights; they cannot be guessed.
struct AuthorizationExternalForm {
    char bytes[kAuthorizationExternalFormLength];
};

extern "C" {

/// Makes a reference that the caller frees with AuthorizationFree().
/// @param rights wanted at once, as with AuthorizationCopyRights(); null for none.
/// @param environment may be null; checked, otherwise unused. @param flags as for AuthorizationCopyRights().
/// @param authorization receives the reference on success; null to learn only whether the rights can be had.
OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
    AuthorizationFlags flags, AuthorizationRef* authorization);

/// Asks for rights, which the reference then holds until it is freed.
/// @param rights not null. @param environment may be null; checked, otherwise unused.
/// @param flags any but kAuthorizationFlagDestroyRights. Without kAuthorizationFlagExtendRights only rights
/// held already are granted; with kAuthorizationFlagPartialRights one granted right suffices for success.
/// @param authorizedRights receives the names granted, to be freed with AuthorizationFreeItemSet(); may be
/// null.
OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
    const AuthorizationEnvironment* environment, AuthorizationFlags flags,
    AuthorizationRights** authorizedRights);

/// @param set from AuthorizationCopyRights(). @return errAuthorizationInvalidSet for null.
OSStatus AuthorizationFreeItemSet(AuthorizationItemSet* set);

/// @param flags kAuthorizationFlagDefaults: references made from this one's external form keep the rights; or
/// kAuthorizationFlagDestroyRights: they lose them.
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);

/// @param extForm receives the same bytes each time; good in this process while a reference that shares the
/// rights lives.
OSStatus AuthorizationMakeExternalForm(AuthorizationRef authorization, AuthorizationExternalForm* extForm);

/// @param authorization receives a new reference sharing the rights, which the caller frees.
/// @return errAuthorizationInternalizeNotAllowed for bytes that stand for nothing here.
OSStatus AuthorizationCreateFromExternalForm(
    const AuthorizationExternalForm* extForm, AuthorizationRef* authorization);

/// Starts a tool as root, or on a volume of one's own as its owner, and does not wait for it; how it ends cannot be
/// learnt, and it leaves no zombie. Asks for kAuthorizationRightExecute if not held yet.
///
/// The tool must be an executable binary that, like every folder above it, belongs to root (or to the caller,
/// on a start-up volume that is the caller's) and that nobody else can write or replace, but for the caller's
/// private group there; links in the path are resolved first. It runs in a session of its own, with
/// descriptors 0 to 2 only: input empty, output and errors the caller's. Of the environment it gets the locale
/// and, unless that would let a caller with fewer rights choose them, the folders that Mac paths are mapped to.
///
/// @param pathToTool Mac path; the tool's argv[0], with links resolved where pkexec starts it.
/// @param options kAuthorizationFlagDefaults.
/// @param arguments argv from 1 on, ended by null; null for none.
/// @param communicationsPipe receives a stream connected to the tool's input and output, which the caller
/// closes; null for none.
OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization, const char* pathToTool,
    AuthorizationFlags options, char* const* arguments, FILE** communicationsPipe);

} // extern "C"
