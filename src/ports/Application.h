#pragma once

namespace tavrine {

/// How the program stands among others: `regular` programs appear in the task bar and the pager with their windows, and
/// such panels as are described so; `accessory` ones do not.
enum class ActivationPolicy { regular = 0, accessory = 1 };

/// This program itself, towards the desktop. Lives on the main thread.
class Application {
public:
    virtual ~Application() = default;
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    [[nodiscard]] virtual ActivationPolicy activationPolicy() const = 0;
    /// Ends the main loop; the process ends once the present turn is done.
    virtual void terminate() = 0;
};

} // namespace tavrine
