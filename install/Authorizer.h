#pragma once

#include "util/CFRef.h"
#include <CoreServices/CoreServices.h>
#include <Security/Authorization.h>
#include <memory>
#include <string>
#include <vector>

/// Gets administrator rights from the user and starts one helper tool with them. What the tool then does is
/// not seen: a status of noErr says only that it was started. Main thread only; asking for the rights blocks
/// while the system's dialog is up. The rights last as long as the object and are destroyed with it.
class Authorizer {
public:
    /// @return null when the system makes no authorization reference.
    static std::unique_ptr<Authorizer> init();
    virtual ~Authorizer();
    Authorizer(const Authorizer&) = delete;
    Authorizer& operator=(const Authorizer&) = delete;

    /// Names a tool that lies in the main bundle's Resources folder. The file itself is not looked at.
    /// @return noErr; fnfErr for a name that is empty or holds a zero, or where there is no such folder; then
    /// the tool stays the one before.
    OSStatus setToolName(const std::string& name);
    /// Names the tool by its full path; a path that is empty or holds a zero is ignored.
    void setToolPathname(const std::string& path);
    const std::string& toolPathname() const; ///< "" before a tool has been named

    /// Asks for the rights to run the tool, with a dialog where the system wants one.
    bool authorize();
    /// Asks for the rights and writes the form that another process can take them over by.
    /// @param form written only when the answer is true.
    bool getAuthorizationExternalForm(AuthorizationExternalForm* form);

    /// Asks for the rights anew and starts the tool with exactly these arguments, in UTF-8.
    /// @return noErr, the tool was started; paramErr, an argument is empty, not UTF-8 or holds a zero, nobody
    /// was asked; memFullErr; errAuthorizationCanceled for any refusal; else what the system said to starting
    /// it.
    OSStatus runToolWithArguments(const std::vector<std::string>& arguments);

protected:
    Authorizer() = default;
    /// The part of making an object that can fail.
    bool createAuthorization();

private:
    void setTool(const std::string& path);

    std::unique_ptr<AuthorizationItem> fAuthorizationItems; ///< one: the right to run fToolPathname
    AuthorizationRights fAuthorizationRights {};
    AuthorizationRef fAuthorizationRef = nullptr;
    std::string fToolPathname;
};
