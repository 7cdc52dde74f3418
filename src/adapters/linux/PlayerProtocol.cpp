#include "adapters/linux/PlayerProtocol.h"

#include "adapters/linux/HelperLines.h"

#include <charconv>

namespace tavrine::playerProtocol {
namespace {

struct Word {
    Report::Kind kind;
    std::string_view text;
    bool hasWords = false;
};

constexpr Word words[] = {
    {Report::Kind::ready, "ready"},
    {Report::Kind::alive, "alive"},
    {Report::Kind::ended, "ended"},
    {Report::Kind::outputChanged, "output-changed"},
    {Report::Kind::contentsFailed, "contents-failed", true},
    {Report::Kind::outputFailed, "output-failed", true},
};

constexpr std::string_view playWord = "play ";

} // namespace

std::string lineOf(const Report &report) {
    for (const Word &word : words)
        if (word.kind == report.kind)
            return std::string(word.text) + (word.hasWords ? ' ' + HelperLines::words(report.words) : "") + '\n';
    return {};
}

std::optional<Report> reportIn(std::string_view line) {
    const std::string_view first = line.substr(0, line.find(' '));
    for (const Word &word : words) {
        if (word.text != first)
            continue;
        if (!word.hasWords)
            return first.size() == line.size() ? std::optional(Report{word.kind}) : std::nullopt;
        const std::size_t begin = std::min(line.size(), first.size() + 1);
        return Report{word.kind, HelperLines::words(line.substr(begin))};
    }
    return std::nullopt;
}

std::string playLine(int loops) {
    return std::string(playWord) + std::to_string(loops) + '\n';
}

std::optional<int> loopsIn(std::string_view line) {
    if (!line.starts_with(playWord))
        return std::nullopt;
    line.remove_prefix(playWord.size());
    int loops = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), loops);
    const bool isWhole = error == std::errc() && end == line.data() + line.size();
    return isWhole && loops >= -1 ? std::optional(loops) : std::nullopt;
}

} // namespace tavrine::playerProtocol
