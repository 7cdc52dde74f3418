#include "upload/worker/WorkerRecord.h"

#include "upload/worker/WorkerLimits.h"
#include "upload/worker/WorkerText.h"

#include <utility>

namespace tavrine {
namespace {

const char *errorKind(WorkerEnd end) {
    switch (end) {
    case WorkerEnd::syntaxError:
        return "syntaxError";
    case WorkerEnd::missingFunction:
        return "missingFunction";
    case WorkerEnd::invalidReturnValue:
        return "invalidReturnValue";
    case WorkerEnd::url:
    case WorkerEnd::runtimeError:
        break;
    }
    return "runtimeError";
}

void appendMember(std::string &json, std::string_view key, std::string_view text) {
    appendJsonString(json, key);
    json += ':';
    appendJsonString(json, text);
    json += ',';
}

} // namespace

bool WorkerLogs::add(std::string line) {
    if (m_isFull)
        return false;
    if (line.size() > limits::logLineBytes)
        line = repairedUtf8(line, limits::logLineBytes);
    m_isFull = m_lines.size() >= limits::logLines || m_bytes + line.size() > limits::logBytes;
    m_bytes += line.size();
    m_lines.push_back(m_isFull ? "(The script logged more than is kept.)" : std::move(line));
    return !m_isFull;
}

std::string workerRecord(const WorkerResult &result, const WorkerLogs &logs) {
    std::string json = "{";
    if (result.end == WorkerEnd::url) {
        appendMember(json, "url", result.text);
    } else {
        appendMember(json, "errorKind", errorKind(result.end));
        if (!result.text.empty())
            appendMember(json, "errorMessage", repairedUtf8(result.text, limits::messageBytes));
    }
    json += "\"logs\":[";
    for (std::size_t i = 0; i < logs.lines().size(); ++i) {
        if (i > 0)
            json += ',';
        appendJsonString(json, logs.lines()[i]);
    }
    return json + "]}\n";
}

} // namespace tavrine
