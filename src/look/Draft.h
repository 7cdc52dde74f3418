#pragma once

namespace tavrine::look {

/// What a part of a page holds that the person changed and did not save. Who takes the page away asks first.
class Draft {
public:
    virtual ~Draft() = default;
    [[nodiscard]] virtual bool isUnsaved() const = 0;
    virtual void saveDraft() = 0;
};

} // namespace tavrine::look
