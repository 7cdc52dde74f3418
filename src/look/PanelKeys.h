#pragma once

#include <QObject>

#include <functional>

class QKeyEvent;
class QLineEdit;
class QWidget;

namespace tavrine::look {

/// Sees every key that goes to the window of a view before any widget there does, while it is on, and decides whose it
/// is: the field's, the panel's, or that of the control that has the focus. Owned by the view.
///
///  1. Ctrl and Super are both Command. Where a field gives a chord with Ctrl a meaning of its own, only Super is:
///     Ctrl+Backspace deletes a word, Ctrl+Left and Ctrl+Right move by words while there is text.
///  2. Shift+Delete is Command-Delete, unless it would cut text that is selected in the field.
///  3. What the panel does not take, and would write or erase, goes to the field, which gets the focus for it.
class PanelKeys : public QObject {
    Q_OBJECT
public:
    /// A key as the panels' models are told of it. True swallows it.
    using Handler = std::function<bool(const QString &windowTitle, int keyCode, bool isCommandHeld)>;

    PanelKeys(QWidget *view, QLineEdit *field, Handler handler);
    void setOn(bool isOn);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    [[nodiscard]] bool isFieldsChord(const QKeyEvent &key) const;
    [[nodiscard]] bool isTakenByPanel(const QKeyEvent &key) const;
    bool typeIntoField(QKeyEvent &key);

    QWidget *m_view;
    QLineEdit *m_field;
    Handler m_handler;
    bool m_isOn = false;
};

/// The position on an ANSI keyboard; -1 for none. Keys that are called the same on every keyboard are known by their
/// name, wherever a person has put them; all others by their place, whatever is printed on them.
[[nodiscard]] int virtualKeyOf(const QKeyEvent &event);

} // namespace tavrine::look
