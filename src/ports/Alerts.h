#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tavrine {

/// A question that the person answers before anything else goes on.
struct Alert {
    QString message;
    QString information;
    QStringList buttons; ///< from the first, which Return takes, to the last, which Escape takes
    bool operator==(const Alert &) const = default;
};

/// Modal questions. Lives on the main thread; a call ends when the person has answered, with the main loop running in
/// between.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// True when the person took the first button.
    virtual bool runModal(const Alert &alert) = 0;

    /// The same with an area for plain text of `width` by `height` points. The text when the person took the first
    /// button, else none. An empty text is a text.
    virtual std::optional<QString> runModalForText(const Alert &alert, int width, int height) = 0;
};

} // namespace tavrine
