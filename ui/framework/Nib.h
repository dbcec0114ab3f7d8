#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <string>

class QWidget;
class ZEK_Window;

/// A view that has something to do once its nib is loaded.
class NibView {
public:
    virtual ~NibView() = default;
    virtual void awakeFromNib() = 0;

protected:
    NibView() = default;
    NibView(const NibView&) = default;
    NibView& operator=(const NibView&) = default;
};

/// Lets nibs hold views of a class beyond the toolkit's and the framework's own.
/// @param className as the nib names it. @param make makes one, owned by the parent it is given.
void RegisterNibClass(const QString& className, std::function<QWidget*(QWidget* parent)> make);

/// A window with its controls as Qt Designer draws it, "<name>.ui" in the main bundle's resources: absolute geometry in
/// points, a ZEK_Window with a "contentView" in it. Outlets are found by their object names.
///
/// Properties that any control may have there:
///   "fontScale"  a number, the size of its text relative to the user's
///   "imageName"  on a QLabel, the file of the main bundle's resources that it shows
class Nib {
public:
    /// Loads the nib and wakes its views. Failing, it has no window, and error() tells why.
    explicit Nib(const std::string& name);
    ~Nib();
    Nib(const Nib&) = delete;
    Nib& operator=(const Nib&) = delete;

    bool isLoaded() const { return fWindow != nullptr; }
    /// One line for the user; "" while all went well.
    const std::string& error() const { return fError; }

    /// Points the outlet at the control that has its name. A control that is missing or of another class is an error, and
    /// the outlet stays null.
    template <class View> void connectOutlet(const char* name, View*& outlet)
    {
        outlet = dynamic_cast<View*>(find(name));
        if (outlet == nullptr)
            reportOutlet(name);
    }
    /// The same for a control that a nib may do without.
    template <class View> void connectOptionalOutlet(const char* name, View*& outlet)
    {
        outlet = dynamic_cast<View*>(find(name));
    }

    /// Hands the window to the caller, who owns it then.
    ZEK_Window* releaseWindow();

private:
    QWidget* find(const char* name) const;
    void reportOutlet(const char* name);

    std::string fName;
    std::string fError;
    std::unique_ptr<ZEK_Window> fWindow;
};
