#pragma once

#include <QString>

namespace tavrine {

/// A lock that one process holds until it ends; the kernel gives it back. A value of its own; one thread.
class InstanceLock {
public:
    enum class Holder {
        ours,
        another,
        nobody, ///< there is no place for a lock: a full disk, a folder that cannot be written
    };

    /// The lock of `name` in `folder`, which is made when it is missing.
    InstanceLock(const QString &folder, const QString &name);
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    /// Never waits.
    [[nodiscard]] Holder take();

private:
    QString m_folder;
    QString m_path;
    int m_descriptor = -1;
};

} // namespace tavrine
