#include "ui/framework/Accessibility.h"

#include "ui/framework/ClickableTextField.h"
#include "ui/framework/InvisibleButton.h"

#include <QAccessibleWidget>

namespace {

/// A link field while it has a URL, a label otherwise.
class AccessibleLinkField : public QAccessibleWidget {
public:
    explicit AccessibleLinkField(ClickableTextField& field)
        : QAccessibleWidget(&field)
        , fField(field)
    {
    }

    QAccessible::Role role() const override
    {
        return fField.url() != nullptr ? QAccessible::Link : QAccessible::StaticText;
    }
    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name)
            return fField.text();
        return kind == QAccessible::Description ? fField.toolTip() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.linked = fField.url() != nullptr;
        return state;
    }
    QStringList actionNames() const override
    {
        return fField.url() != nullptr ? QStringList { pressAction(), setFocusAction() } : QStringList();
    }
    void doAction(const QString& action) override
    {
        if (action == pressAction())
            fField.openURL();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    ClickableTextField& fField;
};

/// Not for people at all: what it does, visible controls do too.
class AccessibleInvisibleButton : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = true;
        return state;
    }
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object)
{
    if (auto* const field = qobject_cast<ClickableTextField*>(object))
        return new AccessibleLinkField(*field);
    if (auto* const button = qobject_cast<InvisibleButton*>(object))
        return new AccessibleInvisibleButton(button);
    return nullptr;
}

}

void InstallAccessibility() { QAccessible::installFactory(MakeInterface); }
