#pragma once

#include "look/Look.h"
#include "shell/ShellTest.h"

#include <functional>

namespace tavrine {

/// Every view of a whole program on a desktop of fakes, one after the other.
class ProgramViews : public ShellTest {
protected:
    /// `name` is for a person who reads a failure.
    using Visit = std::function<void(QWidget &view, const QString &name)>;

    void start(ColorScheme scheme);
    void visitSettings(const Visit &visit);
    void visitMenu(const Visit &visit);
    void visitPanels(const Visit &visit);
    void visitEditor(const Visit &visit);
    void visitWelcome(const Visit &visit);
    void visitCards(const Visit &visit);
    void visitCapture(const Visit &visit);
    void visitRecording(const Visit &visit);
    void settle();

private:
    /// The contents of what was opened by `open`, shown as large as they want to be.
    void visitOpened(const QString &name, const Visit &visit, const std::function<void()> &open);

    look::Look m_look{time, &desktop.appearance()};
};

} // namespace tavrine
