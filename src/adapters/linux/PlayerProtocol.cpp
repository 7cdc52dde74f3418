#include "adapters/linux/PlayerProtocol.h"

#include "adapters/linux/HelperLines.h"

#include <charconv>
#include <utility>

namespace tavrine::playerProtocol {
namespace {

/// What follows a word.
enum class Says { nothing, words, size };

struct Word {
    Report::Kind kind;
    std::string_view text;
    Says says = Says::nothing;
};

constexpr Word words[] = {
    {Report::Kind::ready, "ready"},
    {Report::Kind::alive, "alive"},
    {Report::Kind::picture, "picture", Says::size},
    {Report::Kind::ended, "ended"},
    {Report::Kind::outputChanged, "output-changed"},
    {Report::Kind::contentsFailed, "contents-failed", Says::words},
    {Report::Kind::outputFailed, "output-failed", Says::words},
};

constexpr std::string_view playWord = "play ";
constexpr std::string_view sizeWord = "size ";

constexpr std::pair<MovieCommand, std::string_view> movieWords[] = {
    {MovieCommand::play, "play"},     {MovieCommand::pause, "pause"}, {MovieCommand::mute, "mute"},
    {MovieCommand::unmute, "unmute"}, {MovieCommand::next, "next"},
};

/// None unless all of `text` is a number of this kind.
template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string textOf(PictureSize size) {
    return std::to_string(size.width) + ' ' + std::to_string(size.height);
}

std::optional<PictureSize> pictureSizeIn(std::string_view text) {
    const std::size_t gap = text.find(' ');
    if (gap == std::string_view::npos)
        return std::nullopt;
    const auto width = numberIn<int>(text.substr(0, gap));
    const auto height = numberIn<int>(text.substr(gap + 1));
    const auto isPossible = [](std::optional<int> edge) { return edge && *edge >= 1 && *edge <= longestEdge; };
    return isPossible(width) && isPossible(height) ? std::optional(PictureSize{*width, *height}) : std::nullopt;
}

} // namespace

std::string lineOf(const Report &report) {
    for (const Word &word : words) {
        if (word.kind != report.kind)
            continue;
        std::string line(word.text);
        if (word.says == Says::words)
            line += ' ' + HelperLines::words(report.words);
        if (word.says == Says::size)
            line += ' ' + textOf(report.size);
        return line + '\n';
    }
    return {};
}

std::optional<Report> reportIn(std::string_view line) {
    const std::string_view first = line.substr(0, line.find(' '));
    for (const Word &word : words) {
        if (word.text != first)
            continue;
        if (word.says == Says::nothing)
            return first.size() == line.size() ? std::optional(Report{word.kind}) : std::nullopt;
        const std::string_view rest = line.substr(std::min(line.size(), first.size() + 1));
        if (word.says == Says::words)
            return Report{.kind = word.kind, .words = HelperLines::words(rest)};
        const auto size = pictureSizeIn(rest);
        return size ? std::optional(Report{.kind = word.kind, .size = *size}) : std::nullopt;
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

std::string sizeLine(PictureSize size) {
    return std::string(sizeWord) + textOf(size) + '\n';
}

std::optional<PictureSize> sizeIn(std::string_view line) {
    return line.starts_with(sizeWord) ? pictureSizeIn(line.substr(sizeWord.size())) : std::nullopt;
}

} // namespace tavrine::playerProtocol
