#pragma once

#include "ports/PackageUpdates.h"

namespace tavrine {

/// The system's packages by PackageKit, over the system bus. Main thread; it keeps nothing between two questions, and
/// no bus is opened before the first.
class PackageKitUpdates final : public PackageUpdates {
public:
    /// `package` is this program's name among packages.
    explicit PackageKitUpdates(QString package) : m_package(std::move(package)) {}

    [[nodiscard]] std::unique_ptr<Question> ask(Start start, std::function<void(const Answer &)> answered) override;

private:
    QString m_package;
};

} // namespace tavrine
