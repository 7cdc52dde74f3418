#include "look/Accessibility.h"

#include "look/Control.h"
#include "look/WrappedText.h"

#include <QAccessibleWidget>
#include <QVariant>

namespace tavrine::look {
namespace {

constexpr auto roleProperty = "accessibleRole";

/// A widget that paints what it is.
class PaintedInterface : public QAccessibleWidget {
public:
    explicit PaintedInterface(QWidget *widget) : QAccessibleWidget(widget) {}

    [[nodiscard]] QAccessible::Role role() const override {
        return QAccessible::Role(widget()->property(roleProperty).toInt());
    }
};

/// Something to press. The toolkit's own interface of a button changes its state and presses nothing; this one does
/// what a hand does.
class ControlInterface final : public QAccessibleWidget {
public:
    explicit ControlInterface(Control *control) : QAccessibleWidget(control) {}

    [[nodiscard]] QAccessible::Role role() const override {
        const QVariant chosen = widget()->property(roleProperty);
        return chosen.isValid() ? QAccessible::Role(chosen.toInt()) : control()->accessibleRole();
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        const bool isNamedByText = kind == QAccessible::Name && control()->accessibleName().isEmpty();
        return isNamedByText ? control()->text() : QAccessibleWidget::text(kind);
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = control()->isCheckable();
        state.checked = control()->isChecked();
        state.pressed = control()->isDown();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override {
        QStringList names;
        if (control()->isEnabled() && role() != QAccessible::Separator)
            names = control()->actionNames();
        return names + QAccessibleWidget::actionNames();
    }
    /// In a later turn: the screen reader waits for the answer, and what is pressed may ask the person something.
    void doAction(const QString &name) override {
        if (!control()->actionNames().contains(name)) {
            QAccessibleWidget::doAction(name);
            return;
        }
        QMetaObject::invokeMethod(
            control(),
            [control = control(), name] {
                if (control->isEnabled())
                    control->act(name);
            },
            Qt::QueuedConnection);
    }

private:
    [[nodiscard]] Control *control() const { return static_cast<Control *>(widget()); }
};

/// Words, of which some are a link.
class WordsInterface final : public QAccessibleWidget {
public:
    explicit WordsInterface(WrappedText *words) : QAccessibleWidget(words) {}

    [[nodiscard]] QAccessible::Role role() const override {
        return words()->isLink() ? QAccessible::Link : QAccessible::StaticText;
    }
    [[nodiscard]] QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (words()->isLink())
            names.prepend(pressAction());
        return names;
    }
    void doAction(const QString &name) override {
        if (name == pressAction() && words()->isLink())
            QMetaObject::invokeMethod(words(), &WrappedText::pressed, Qt::QueuedConnection);
        else
            QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] WrappedText *words() const { return static_cast<WrappedText *>(widget()); }
};

QAccessibleInterface *makeInterface(const QString &, QObject *object) {
    if (auto *control = qobject_cast<Control *>(object))
        return new ControlInterface(control);
    if (auto *words = qobject_cast<WrappedText *>(object))
        return new WordsInterface(words);
    if (object->isWidgetType() && object->property(roleProperty).isValid())
        return new PaintedInterface(static_cast<QWidget *>(object));
    return nullptr;
}

} // namespace

void setRole(QWidget &widget, QAccessible::Role role) {
    installAccessibility();
    widget.setProperty(roleProperty, int(role));
}

void installAccessibility() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

} // namespace tavrine::look
