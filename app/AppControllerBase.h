#pragma once

#include "app/ZEK_AppController.h"

/// What is the same in every application of this product: its help book, and where the agent's files belong.
class AppControllerBase : public ZEK_AppController {
public:
    /// The shared controller; null before the first, and when it is of another kind.
    static AppControllerBase* appControllerPtr();

    std::string helpBookName() const override;
    bool rememberWindowPostions() const override; ///< no: the windows are always centred

    /// The agent's folder in the user's Application Support folder, relative to that folder. Neither of the
    /// two is created or looked for. Null when the user has no home folder.
    CFRef<CFURLRef> velmoraApplicationSupportDirectoryURL() const;

protected:
    using ZEK_AppController::ZEK_AppController;
};
