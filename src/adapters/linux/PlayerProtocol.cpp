#include "adapters/linux/PlayerProtocol.h"

#include "adapters/linux/HelperLines.h"

#include <charconv>
#include <utility>

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

constexpr std::pair<MovieCommand, std::string_view> movieWords[] = {
    {MovieCommand::play, "play"},
    {MovieCommand::pause, "pause"},
    {MovieCommand::mute, "mute"},
    {MovieCommand::unmute, "unmute"},
};

/// None unless all of `text` is a number of this kind.
template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

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
    const auto loops = numberIn<int>(line);
    return loops && *loops >= -1 ? loops : std::nullopt;
}

std::string lineOf(MovieCommand command) {
    for (const auto &[each, word] : movieWords)
        if (each == command)
            return std::string(word) + '\n';
    return {};
}

std::optional<MovieCommand> movieCommandIn(std::string_view line) {
    for (const auto &[each, word] : movieWords)
        if (word == line)
            return each;
    return std::nullopt;
}

std::optional<std::uint32_t> windowIn(std::string_view argument) {
    const auto window = numberIn<std::uint32_t>(argument);
    return window && *window != 0 ? window : std::nullopt;
}

} // namespace tavrine::playerProtocol
