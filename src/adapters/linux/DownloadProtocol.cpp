#include "adapters/linux/DownloadProtocol.h"

#include "adapters/linux/HelperLines.h"

#include <charconv>

namespace tavrine::downloadProtocol {
namespace {

constexpr std::string_view progressWord = "progress ";
constexpr std::string_view doneWord = "done";
constexpr std::string_view failedWord = "failed ";

/// The whole of `text`, as a number of bytes.
std::optional<std::int64_t> bytesIn(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && number >= 0 ? std::optional(number) : std::nullopt;
}

} // namespace

std::string lineOf(const Report &report) {
    switch (report.kind) {
    case Report::Kind::progress:
        return std::string(progressWord) + std::to_string(report.written) + ' ' + std::to_string(report.expected) +
               '\n';
    case Report::Kind::done:
        return std::string(doneWord) + '\n';
    case Report::Kind::failed:
        break;
    }
    return std::string(failedWord) + HelperLines::words(report.words) + '\n';
}

std::optional<Report> reportIn(std::string_view line) {
    if (line == doneWord)
        return Report{Report::Kind::done};
    if (line.starts_with(failedWord))
        return Report{.kind = Report::Kind::failed, .words = HelperLines::words(line.substr(failedWord.size()))};
    if (!line.starts_with(progressWord))
        return std::nullopt;
    line.remove_prefix(progressWord.size());
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos)
        return std::nullopt;
    const auto written = bytesIn(line.substr(0, blank));
    const auto expected = bytesIn(line.substr(blank + 1));
    if (!written || !expected)
        return std::nullopt;
    return Report{Report::Kind::progress, *written, *expected};
}

} // namespace tavrine::downloadProtocol
