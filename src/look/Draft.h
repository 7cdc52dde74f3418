#pragma once

#include <QString>

namespace tavrine::look {

/// What a page or a part of it holds that the person changed and did not save. Who takes the page away asks first.
class Draft {
public:
    struct Question {
        QString message;
        QString information;
    };

    virtual ~Draft() = default;
    [[nodiscard]] virtual bool isUnsaved() const = 0;
    /// What the person is asked.
    [[nodiscard]] virtual Question question() const = 0;
    /// False when it cannot be saved as it is; then the page says why, and stays.
    [[nodiscard]] virtual bool saveDraft() = 0;
};

} // namespace tavrine::look
