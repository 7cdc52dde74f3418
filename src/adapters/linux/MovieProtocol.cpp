#include "adapters/linux/MovieProtocol.h"

#include "adapters/linux/HelperLines.h"

#include <charconv>
#include <cstdlib>
#include <utility>
#include <vector>

namespace tavrine::movieProtocol {
namespace {

constexpr std::pair<Job, const char *> jobs[] = {{Job::facts, "facts"}, {Job::frame, "frame"}, {Job::copy, "copy"}};

constexpr std::string_view failedWord = "failed ";
constexpr std::int64_t longestMovie = std::int64_t{1} << 40; // milliseconds, 34 years

/// The numbers behind a word, each behind one blank; none when there is anything else or more of them than `count`.
std::vector<std::int64_t> numbersBehind(std::string_view word, std::string_view line, std::size_t count) {
    std::vector<std::int64_t> numbers;
    if (!line.starts_with(word))
        return {};
    line.remove_prefix(word.size());
    while (!line.empty()) {
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(line.data() + 1, line.data() + line.size(), number);
        if (line.front() != ' ' || error != std::errc())
            return {};
        numbers.push_back(number);
        line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    }
    return numbers.size() == count ? numbers : std::vector<std::int64_t>();
}

bool isEdge(std::int64_t pixels) {
    return pixels > 0 && pixels <= mostPixels;
}

std::optional<Report> factsIn(std::string_view line) {
    const auto numbers = numbersBehind("facts", line, 4);
    if (numbers.empty())
        return std::nullopt;
    const bool hasPicture = isEdge(numbers[0]) && isEdge(numbers[1]);
    const bool isWithoutPicture = numbers[0] == 0 && numbers[1] == 0;
    if ((!hasPicture && !isWithoutPicture) || numbers[2] < 0 || numbers[2] > 1 || numbers[3] < 0 ||
        numbers[3] > longestMovie)
        return std::nullopt;
    return Report{.kind = Report::Kind::facts,
                  .width = static_cast<int>(numbers[0]),
                  .height = static_cast<int>(numbers[1]),
                  .hasAudio = numbers[2] == 1,
                  .milliseconds = numbers[3]};
}

std::optional<Report> frameIn(std::string_view line) {
    const auto numbers = numbersBehind("frame", line, 6);
    if (numbers.empty() || !isEdge(numbers[0]) || !isEdge(numbers[1]))
        return std::nullopt;
    Report report{
        .kind = Report::Kind::frame, .width = static_cast<int>(numbers[0]), .height = static_cast<int>(numbers[1])};
    for (std::size_t i = 0; i < report.turn.size(); ++i) {
        if (std::abs(numbers[i + 2]) > 1)
            return std::nullopt;
        report.turn.at(i) = static_cast<int>(numbers[i + 2]);
    }
    const auto &turn = report.turn;
    const bool isStraight = turn[0] != 0 && turn[3] != 0 && turn[1] == 0 && turn[2] == 0;
    const bool isCrossed = turn[0] == 0 && turn[3] == 0 && turn[1] != 0 && turn[2] != 0;
    return isStraight || isCrossed ? std::optional(report) : std::nullopt;
}

} // namespace

const char *wordOf(Job job) {
    for (const auto &[each, word] : jobs)
        if (each == job)
            return word;
    return "";
}

std::optional<Job> jobIn(std::string_view word) {
    for (const auto &[job, each] : jobs)
        if (each == word)
            return job;
    return std::nullopt;
}

std::optional<int> longestEdgeIn(std::string_view argument) {
    int edge = 0;
    const auto [end, error] = std::from_chars(argument.data(), argument.data() + argument.size(), edge);
    const bool isWhole = error == std::errc() && end == argument.data() + argument.size();
    return isWhole && isEdge(edge) ? std::optional(edge) : std::nullopt;
}

std::string lineOf(const Report &report) {
    const auto line = [](std::string word, std::initializer_list<std::int64_t> numbers) {
        for (const std::int64_t number : numbers)
            word += ' ' + std::to_string(number);
        return word + '\n';
    };
    switch (report.kind) {
    case Report::Kind::facts:
        return line("facts", {report.width, report.height, report.hasAudio ? 1 : 0, report.milliseconds});
    case Report::Kind::frame:
        return line("frame",
                    {report.width, report.height, report.turn[0], report.turn[1], report.turn[2], report.turn[3]});
    case Report::Kind::copied:
        return "copied\n";
    case Report::Kind::alive:
        return "alive\n";
    case Report::Kind::failed:
        break;
    }
    return std::string(failedWord) + HelperLines::words(report.words) + '\n';
}

std::optional<Report> reportIn(std::string_view line) {
    if (line == "alive")
        return Report{.kind = Report::Kind::alive};
    if (line == "copied")
        return Report{.kind = Report::Kind::copied};
    if (line.starts_with(failedWord))
        return Report{.kind = Report::Kind::failed, .words = HelperLines::words(line.substr(failedWord.size()))};
    const auto facts = factsIn(line);
    return facts ? facts : frameIn(line);
}

} // namespace tavrine::movieProtocol
