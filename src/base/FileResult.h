#pragma once

#include <QString>

namespace tavrine {

/// How an operation on a file ended: true when it succeeded, otherwise with the system's reason. A value; the reason
/// travels in it, and nobody has to read it out of the thread before the next call changes it.
class FileResult {
public:
    FileResult() = default; ///< success

    /// `error` is one of the system's numbers, as EACCES.
    [[nodiscard]] static FileResult failure(int error);
    /// What a system call that answers a negative number on failure has just said.
    [[nodiscard]] static FileResult ofCall(int answer);

    explicit operator bool() const { return m_error == 0; }
    [[nodiscard]] int error() const { return m_error; }
    /// In the system's words: "Permission denied".
    [[nodiscard]] QString reason() const;

private:
    int m_error = 0;
};

} // namespace tavrine
