#pragma once

#include "util/CFRef.h"
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class FrontEnd;

/// The reusable base of an application's controller: the one shared controller, the application's version and
/// name, its help, and two policies that the window framework asks for. Main thread only.
class ZEK_AppController {
public:
    /// The last controller made, or null before the first.
    static ZEK_AppController* appControllerPtr();
    virtual ~ZEK_AppController();
    ZEK_AppController(const ZEK_AppController&) = delete;
    ZEK_AppController& operator=(const ZEK_AppController&) = delete;

    /// The main bundle's "CFBundleShortVersionString"; nothing when it has none.
    const std::optional<std::string>& versionAsString() const;
    /// The same as a whole to compare; 0 when there is none or it is not a version.
    uint32_t versionAsNumVersionVariant() const;
    virtual std::string productNamePtr() const; ///< "" unless overridden

    /// Whether the user's appearance is the dark one; never before system version 10.14, which introduced it.
    bool isDarkMode() const;

    /// Opens the page of the help book that the hint stands for, or the start page when it stands for none.
    void openHelpPageWithHelpHint(int32_t hint) const;
    virtual std::string helpBookName() const; ///< "" unless overridden
    virtual std::optional<std::string> helpAnchorStringFromHelpHint(
        int32_t hint) const; ///< none unless overridden
    int32_t defaultHelpHint() const;
    void setDefaultHelpHint(int32_t hint);

    /// Whether windows come back where the user left them.
    virtual bool rememberWindowPostions() const;
    /// Whether the user asked not to see the dialog with this key again. The base forgets; an application
    /// that wants the answer to last overrides both.
    virtual bool suppressDialogWithKey(const std::string& key) const;
    virtual void setSuppressDialogWithKey(const std::string& key);

protected:
    /// Sets the process's file-creation mask to 022, so that what is installed can be read by all and written
    /// by its owner, and reads the version. @param frontEnd has to live as long as the controller is used.
    explicit ZEK_AppController(FrontEnd& frontEnd);
    /// Makes a controller the shared one, which replaces the one before it.
    static void registerShared(std::unique_ptr<ZEK_AppController> controller);

    FrontEnd& frontEnd() const { return fFrontEnd; }

private:
    FrontEnd& fFrontEnd;
    std::optional<std::string> fVersionStringPtr;
    NumVersionVariant fVersion {};
    int32_t fDefaultHelpHint = 0;
};
