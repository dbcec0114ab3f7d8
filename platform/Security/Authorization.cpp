#include <Security/Authorization.h>

#include "RightDecision.h"
#include "TextAgent.h"
#include "ToolCheck.h"
#include "ToolLaunch.h"

#include <Host/HostPath.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <sys/random.h>
#include <vector>

namespace {

constexpr AuthorizationFlags kRightsFlags = kAuthorizationFlagInteractionAllowed
    | kAuthorizationFlagExtendRights | kAuthorizationFlagPartialRights | kAuthorizationFlagPreAuthorize;

using FormBytes = std::array<char, kAuthorizationExternalFormLength>;

/// What references share that were made from each other's external form.
struct Session {
    std::set<std::string> rights {};
    std::optional<FormBytes> form {};
};

/// The references in use. A reference is a number that is never given out again, dressed as a pointer: a
/// stale or foreign one is simply not found.
class References {
public:
    AuthorizationRef add(const std::shared_ptr<Session>& session)
    {
        const std::lock_guard lock(fMutex);
        const auto* const ref = std::bit_cast<AuthorizationRef>(fNext);
        fSessions.emplace(ref, session);
        ++fNext;
        return ref;
    }

    /// @return the session, or null.
    std::shared_ptr<Session> find(AuthorizationRef ref)
    {
        const std::lock_guard lock(fMutex);
        const auto found = fSessions.find(ref);
        return found == fSessions.end() ? nullptr : found->second;
    }

    bool holds(const Session& session, const std::string& right)
    {
        const std::lock_guard lock(fMutex);
        return session.rights.contains(right);
    }

    void grant(Session& session, const std::vector<std::string>& rights)
    {
        const std::lock_guard lock(fMutex);
        session.rights.insert(rights.begin(), rights.end());
    }

    /// @return whether there was such a reference.
    bool remove(AuthorizationRef ref, bool destroyRights)
    {
        const std::lock_guard lock(fMutex);
        const auto found = fSessions.find(ref);
        if (found == fSessions.end())
            return false;
        if (destroyRights)
            found->second->rights.clear();
        fSessions.erase(found);
        return true;
    }

    /// @return nothing when the host has no random bytes.
    std::optional<FormBytes> formOf(Session& session)
    {
        const std::lock_guard lock(fMutex);
        FormBytes bytes {};
        if (!session.form && getrandom(bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()))
            session.form = bytes;
        return session.form;
    }

    std::shared_ptr<Session> findByForm(const FormBytes& form)
    {
        const std::lock_guard lock(fMutex);
        const auto found = std::find_if(fSessions.begin(), fSessions.end(),
            [&form](const auto& entry) { return entry.second->form == form; });
        return found == fSessions.end() ? nullptr : found->second;
    }

private:
    std::mutex fMutex {}; ///< guards the sessions' contents as well
    std::map<AuthorizationRef, std::shared_ptr<Session>> fSessions {};
    uintptr_t fNext = 1;
};

References& AllReferences()
{
    // Never destroyed: other static objects may still free theirs.
    static auto* const references = new References;
    return *references;
}

bool IsWellFormed(const AuthorizationItemSet* set)
{
    if (set == nullptr || set->count == 0)
        return true;
    return set->items != nullptr
        && std::all_of(set->items, set->items + set->count,
            [](const AuthorizationItem& item) { return item.name != nullptr && *item.name != '\0'; });
}

AuthorizationItemSet* MakeItemSet(const std::vector<std::string>& names)
{
    auto items = std::make_unique<AuthorizationItem[]>(names.size());
    auto set = std::make_unique<AuthorizationItemSet>();
    std::vector<std::unique_ptr<char[]>> copies;
    for (const std::string& name : names) {
        copies.push_back(std::make_unique<char[]>(name.size() + 1));
        std::memcpy(copies.back().get(), name.c_str(), name.size() + 1);
    }
    for (size_t i = 0; i < names.size(); ++i)
        items[i].name = copies[i].release();
    set->count = static_cast<UInt32>(names.size());
    set->items = items.release();
    return set.release();
}

OSStatus GetRight(const Session& session, const std::string& right, AuthorizationFlags flags)
{
    if (AllReferences().holds(session, right))
        return errAuthorizationSuccess;
    if ((flags & kAuthorizationFlagExtendRights) == 0)
        return errAuthorizationDenied;
    return DecideRight(right, (flags & kAuthorizationFlagInteractionAllowed) != 0);
}

/// @param rights, @param environment may be null. @param granted receives the names granted.
OSStatus GetRights(Session& session, const AuthorizationRights* rights,
    const AuthorizationEnvironment* environment, AuthorizationFlags flags, std::vector<std::string>& granted)
{
    if ((flags & ~kRightsFlags) != 0)
        return errAuthorizationInvalidFlags;
    if (!IsWellFormed(rights) || !IsWellFormed(environment))
        return errAuthorizationInvalidSet;
    OSStatus refusal = errAuthorizationSuccess;
    for (UInt32 i = 0; rights != nullptr && i < rights->count; ++i) {
        const OSStatus status = GetRight(session, rights->items[i].name, flags);
        if (status == errAuthorizationSuccess)
            granted.emplace_back(rights->items[i].name);
        else if ((flags & kAuthorizationFlagPartialRights) == 0)
            return status;
        else
            refusal = status;
    }
    AllReferences().grant(session, granted);
    return granted.empty() ? refusal : static_cast<OSStatus>(errAuthorizationSuccess);
}

OSStatus Execute(Session& session, const char* pathToTool, char* const* arguments, FILE** communicationsPipe)
{
    AuthorizationItem item { kAuthorizationRightExecute, 0, nullptr, 0 };
    const AuthorizationRights rights { 1, &item };
    std::vector<std::string> granted;
    const OSStatus status = GetRights(session, &rights, kAuthorizationEmptyEnvironment,
        kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed, granted);
    if (status != errAuthorizationSuccess)
        return status;
    const Authority authority = AuthorityOverVolume();
    const Descriptor tool = OpenTrustedTool(HostPath(pathToTool), authority == Authority::owner);
    if (!tool)
        return errAuthorizationToolExecuteFailure;
    if (authority != Authority::system)
        return StartTool(tool, pathToTool, arguments, communicationsPipe);
    const TextAgent agent(true);
    return StartToolAsRoot(tool, arguments, communicationsPipe);
}

/// Exceptions, which only a host that is short of memory or threads causes, end here.
template <typename Function> OSStatus Guarded(Function function)
{
    try {
        return function();
    } catch (const std::exception&) {
        return errAuthorizationInternal;
    }
}

} // namespace

OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
    AuthorizationFlags flags, AuthorizationRef* authorization)
{
    return Guarded([=] {
        const auto session = std::make_shared<Session>();
        std::vector<std::string> granted;
        const OSStatus status = GetRights(*session, rights, environment, flags, granted);
        if (status == errAuthorizationSuccess && authorization != nullptr)
            *authorization = AllReferences().add(session);
        return status;
    });
}

OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
    const AuthorizationEnvironment* environment, AuthorizationFlags flags,
    AuthorizationRights** authorizedRights)
{
    return Guarded([=]() -> OSStatus {
        const auto session = AllReferences().find(authorization);
        if (!session)
            return errAuthorizationInvalidRef;
        if (rights == nullptr)
            return errAuthorizationInvalidSet;
        std::vector<std::string> granted;
        const OSStatus status = GetRights(*session, rights, environment, flags, granted);
        if (status == errAuthorizationSuccess && authorizedRights != nullptr)
            *authorizedRights = MakeItemSet(granted);
        return status;
    });
}

OSStatus AuthorizationFreeItemSet(AuthorizationItemSet* set)
{
    if (set == nullptr)
        return errAuthorizationInvalidSet;
    for (UInt32 i = 0; i < set->count; ++i)
        delete[] set->items[i].name;
    delete[] set->items;
    delete set;
    return errAuthorizationSuccess;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags)
{
    if (flags != kAuthorizationFlagDefaults && flags != kAuthorizationFlagDestroyRights)
        return errAuthorizationInvalidFlags;
    const bool wasThere = AllReferences().remove(authorization, flags == kAuthorizationFlagDestroyRights);
    return wasThere ? errAuthorizationSuccess : errAuthorizationInvalidRef;
}

OSStatus AuthorizationMakeExternalForm(AuthorizationRef authorization, AuthorizationExternalForm* extForm)
{
    const auto session = AllReferences().find(authorization);
    if (!session)
        return errAuthorizationInvalidRef;
    if (extForm == nullptr)
        return errAuthorizationInvalidPointer;
    const std::optional<FormBytes> bytes = AllReferences().formOf(*session);
    if (!bytes)
        return errAuthorizationExternalizeNotAllowed;
    std::memcpy(extForm->bytes, bytes->data(), bytes->size());
    return errAuthorizationSuccess;
}

OSStatus AuthorizationCreateFromExternalForm(
    const AuthorizationExternalForm* extForm, AuthorizationRef* authorization)
{
    if (extForm == nullptr || authorization == nullptr)
        return errAuthorizationInvalidPointer;
    return Guarded([=]() -> OSStatus {
        FormBytes bytes {};
        std::memcpy(bytes.data(), extForm->bytes, bytes.size());
        const auto session = AllReferences().findByForm(bytes);
        if (!session)
            return errAuthorizationInternalizeNotAllowed;
        *authorization = AllReferences().add(session);
        return errAuthorizationSuccess;
    });
}

OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization, const char* pathToTool,
    AuthorizationFlags options, char* const* arguments, FILE** communicationsPipe)
{
    if (options != kAuthorizationFlagDefaults)
        return errAuthorizationInvalidFlags;
    return Guarded([=]() -> OSStatus {
        const auto session = AllReferences().find(authorization);
        if (!session)
            return errAuthorizationInvalidRef;
        if (pathToTool == nullptr)
            return errAuthorizationInvalidPointer;
        return Execute(*session, pathToTool, arguments, communicationsPipe);
    });
}
