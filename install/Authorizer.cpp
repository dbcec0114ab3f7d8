#include "install/Authorizer.h"

#include "util/Bundle.h"
#include "util/CFText.h"

#include <new>

namespace {

/// Whether the text can be handed on as a C string and says something.
bool IsCText(const std::string& text) { return !text.empty() && text.find('\0') == std::string::npos; }

}

std::unique_ptr<Authorizer> Authorizer::init()
{
    std::unique_ptr<Authorizer> authorizer(new Authorizer);
    return authorizer->createAuthorization() ? std::move(authorizer) : nullptr;
}

bool Authorizer::createAuthorization()
{
    fAuthorizationItems = std::make_unique<AuthorizationItem>();
    fAuthorizationItems->name = kAuthorizationRightExecute;
    fAuthorizationRights.count = 1;
    fAuthorizationRights.items = fAuthorizationItems.get();
    return AuthorizationCreate(
               nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &fAuthorizationRef)
        == errAuthorizationSuccess;
}

Authorizer::~Authorizer()
{
    if (fAuthorizationRef != nullptr)
        AuthorizationFree(fAuthorizationRef, kAuthorizationFlagDestroyRights);
}

OSStatus Authorizer::setToolName(const std::string& name)
{
    const std::string folder = MainBundleResources();
    if (!IsCText(name) || folder.empty())
        return fnfErr;
    setTool(folder + "/" + name);
    return noErr;
}

void Authorizer::setToolPathname(const std::string& path)
{
    if (IsCText(path))
        setTool(path);
}

void Authorizer::setTool(const std::string& path)
{
    fToolPathname = path;
    fAuthorizationItems->value = fToolPathname.data();
    fAuthorizationItems->valueLength = fToolPathname.size();
}

const std::string& Authorizer::toolPathname() const { return fToolPathname; }

bool Authorizer::authorize()
{
    constexpr AuthorizationFlags kFlags = kAuthorizationFlagInteractionAllowed
        | kAuthorizationFlagExtendRights | kAuthorizationFlagPreAuthorize;
    return AuthorizationCopyRights(
               fAuthorizationRef, &fAuthorizationRights, kAuthorizationEmptyEnvironment, kFlags, nullptr)
        == errAuthorizationSuccess;
}

bool Authorizer::getAuthorizationExternalForm(AuthorizationExternalForm* form)
{
    return authorize() && AuthorizationMakeExternalForm(fAuthorizationRef, form) == errAuthorizationSuccess;
}

OSStatus Authorizer::runToolWithArguments(const std::vector<std::string>& arguments)
{
    const std::unique_ptr<char*[]> list(new (std::nothrow) char*[arguments.size() + 1]());
    if (!list)
        return memFullErr;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (!IsCText(arguments[i]) || !CFText(arguments[i]))
            return paramErr;
        list[i] = const_cast<char*>(arguments[i].c_str());
    }
    if (!authorize())
        return errAuthorizationCanceled;
    return AuthorizationExecuteWithPrivileges(
        fAuthorizationRef, fToolPathname.c_str(), kAuthorizationFlagDefaults, list.get(), nullptr);
}
