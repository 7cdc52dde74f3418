#pragma once

#include <string>
#include <vector>

namespace tavrine {

/// How a run ended, as the record's "errorKind" names it; `url` is no error.
enum class WorkerEnd : unsigned char { url, syntaxError, missingFunction, invalidReturnValue, runtimeError };

struct WorkerResult {
    WorkerEnd end = WorkerEnd::runtimeError;
    std::string text; // the link or the message
};

/// The lines that a script logged, up to the limits; then one line says that there was more.
class WorkerLogs {
public:
    /// False when this line and all later ones are dropped.
    bool add(std::string line);
    /// The last line tells of those that were dropped.
    [[nodiscard]] bool isFull() const { return m_isFull; }
    [[nodiscard]] const std::vector<std::string> &lines() const { return m_lines; }

private:
    std::vector<std::string> m_lines;
    std::size_t m_bytes = 0;
    bool m_isFull = false;
};

/// The whole record that goes to standard output: valid JSON in valid UTF-8, whatever the texts hold, with "logs".
[[nodiscard]] std::string workerRecord(const WorkerResult &result, const WorkerLogs &logs);

} // namespace tavrine
