#pragma once

#include <functional>
#include <memory>

enum class HostColorScheme {
    unknown, ///< nobody has answered, or this is a Mac, where the toolkit follows the system itself
    noPreference,
    dark,
    light
};

/// The desktop's choice of light or dark, as its settings portal tells it on the user's session bus. Nothing
/// here waits: creating the object sends the question, and answers count whenever they come, however late.
/// Whoever has the main loop watches the descriptor:
///     HostAppearance appearance(changed);
///     on readable(appearance.descriptor()): appearance.process();
/// A portal that starts late, or again, is asked then. A last answer holds when the portal or the bus goes
/// away. To be used from one thread, and not across fork().
class HostAppearance {
public:
    /// Never blocks and never fails visibly: without a bus or a portal the scheme stays unknown. The bus is
    /// the one that the environment names, unless that takes looking up a name or starting a program. One
    /// that does not let the program in within 90 seconds counts as none.
    /// @param changed called from process() after each change of colorScheme(), the first answer included; it
    /// may call process(), as a nested main loop would, but not destroy this object. May be empty.
    explicit HostAppearance(std::function<void()> changed);
    ~HostAppearance();
    HostAppearance(const HostAppearance&) = delete;
    HostAppearance& operator=(const HostAppearance&) = delete;

    /// @return a descriptor that is readable while process() has something to do, the same and open as long
    /// as the object lives, which owns it; -1 when nothing will ever come.
    int descriptor() const;
    /// Handles what has come and sends what is due; never blocks.
    void process();
    /// @return the last answer; choices that this version does not know count as no preference.
    HostColorScheme colorScheme() const;

private:
    struct Portal;
    std::function<void()> fChanged;
    std::unique_ptr<Portal> fPortal; ///< null when nothing will ever come
};
