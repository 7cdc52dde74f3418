#pragma once

#include <QString>

#include <chrono>
#include <memory>

namespace tavrine {

/// Asks the file system what is at a path, which takes microseconds, or for ever where a network's file system has
/// gone: a thread asks and is waited for briefly. While one waits for its answer nobody asks again. Main thread; the
/// threads may outlive this.
class FileLooks {
public:
    enum class Kind { file, program, folder, unknown };

    FileLooks();

    /// For the looks that follow, together.
    void allow(std::chrono::microseconds limit) { m_left = limit; }
    /// Links are followed. Unknown for what is not there, and when there was no time.
    [[nodiscard]] Kind look(const QString &path);

private:
    struct State;
    std::shared_ptr<State> m_state;
    std::chrono::microseconds m_left{};
};

} // namespace tavrine
