#pragma once

namespace tavrine {

/// Starting with the person's session. Lives on the main thread. Both actions answer false when the desktop refused,
/// and then nothing has changed.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    [[nodiscard]] virtual bool isEnabled() const = 0;
    [[nodiscard]] virtual bool registerItem() = 0;
    [[nodiscard]] virtual bool unregisterItem() = 0;
};

} // namespace tavrine
