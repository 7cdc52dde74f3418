// Composes the built-in tracks: make-tracks NUMBER FILE.wav. Everything that is heard is made here by arithmetic, the
// same at each run; nothing was recorded or taken from elsewhere.
//
// A track is a loop: whatever still sounds at its end (tails of notes, echoes) goes on at its beginning, so that the
// last sample is followed by the first.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <random>
#include <tuple>
#include <vector>

namespace {

constexpr int rate = 44'100;
constexpr double pi = std::numbers::pi;
constexpr int beatsOfBar = 4;

/// Notes are MIDI numbers: 60 is the middle C.
struct Chord {
    int bass;
    std::array<int, 4> notes;
};

struct Piece {
    double beatsPerMinute;
    double swing;              ///< how late every second eighth comes, as a part of an eighth
    std::vector<Chord> chords; ///< one a bar, over and over
    std::vector<int> scale;    ///< of the melody
    int rounds;                ///< of the chords
    unsigned seed;
};

/// Both move in circles of thirds and fifths, with sevenths and ninths, as this music does.
const Piece pieces[] = {
    {76,
     0.30,
     {{41, {57, 60, 64, 67}},
      {40, {55, 59, 62, 66}},
      {38, {53, 57, 60, 64}},
      {43, {53, 57, 59, 64}},
      {36, {52, 55, 59, 62}},
      {45, {55, 59, 60, 64}},
      {38, {53, 57, 60, 64}},
      {43, {53, 57, 62, 64}}},
     {72, 74, 76, 79, 81, 84},
     3,
     7},
    {70,
     0.36,
     {{46, {57, 62, 65, 69}},
      {45, {55, 60, 64, 67}},
      {43, {53, 58, 62, 69}},
      {36, {55, 58, 64, 69}},
      {41, {57, 60, 64, 67}},
      {38, {54, 60, 63, 69}},
      {43, {53, 58, 62, 65}},
      {36, {52, 58, 62, 67}}},
     {74, 77, 79, 81, 84, 86},
     3,
     23},
};

double frequencyOf(int note) {
    return 440.0 * std::pow(2.0, (note - 69) / 12.0);
}

/// Two channels that run in a circle.
class Loop {
public:
    explicit Loop(std::size_t length) : m_left(length), m_right(length) {}

    [[nodiscard]] std::size_t length() const { return m_left.size(); }
    /// `place` is 0 at the left and 1 at the right.
    void add(std::size_t at, double value, double place) {
        const std::size_t index = at % length();
        m_left[index] += value * std::sqrt(1 - place);
        m_right[index] += value * std::sqrt(place);
    }
    std::array<std::vector<double> *, 2> channels() { return {&m_left, &m_right}; }

private:
    std::vector<double> m_left;
    std::vector<double> m_right;
};

/// A soft electric piano: one sine bends another, less and less while the note dies away.
void addKey(Loop &loop, double begin, double seconds, int note, double loudness, double place) {
    const double frequency = frequencyOf(note);
    const auto first = static_cast<std::size_t>(begin * rate);
    const auto count = static_cast<std::size_t>((seconds + 1.2) * rate);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = double(i) / rate;
        const double attack = std::min(1.0, t / 0.012);
        const double release = t < seconds ? 1.0 : std::exp(-(t - seconds) * 5.0);
        const double bend = 1.1 * std::exp(-t * 4.0) + 0.12;
        const double wow = 1 + 0.0012 * std::sin(2 * pi * 0.6 * (begin + t)); // of a tired tape
        const double phase = 2 * pi * frequency * wow * t;
        const double tine = 0.10 * std::exp(-t * 9.0) * std::sin(phase * 7.0);
        const double value = std::sin(phase + bend * std::sin(phase)) + tine;
        const double tremolo = 1 + 0.10 * std::sin(2 * pi * 3.1 * t);
        loop.add(first + i, value * loudness * attack * release * tremolo * std::exp(-t * 0.7), place);
    }
}

void addBass(Loop &loop, double begin, double seconds, int note, double loudness) {
    const double frequency = frequencyOf(note);
    const auto first = static_cast<std::size_t>(begin * rate);
    const auto count = static_cast<std::size_t>((seconds + 0.2) * rate);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = double(i) / rate;
        const double attack = std::min(1.0, t / 0.015);
        const double release = t < seconds ? 1.0 : std::exp(-(t - seconds) * 25.0);
        const double value = std::sin(2 * pi * frequency * t) + 0.25 * std::sin(4 * pi * frequency * t);
        loop.add(first + i, value * loudness * attack * release * std::exp(-t * 0.8), 0.5);
    }
}

void addKick(Loop &loop, double begin, double loudness) {
    const auto first = static_cast<std::size_t>(begin * rate);
    double phase = 0;
    for (std::size_t i = 0; i < rate / 3; ++i) {
        const double t = double(i) / rate;
        phase += 2 * pi * (46 + 70 * std::exp(-t * 38)) / rate;
        loop.add(first + i, std::sin(phase) * loudness * std::min(1.0, t / 0.003) * std::exp(-t * 13), 0.5);
    }
}

/// Noise behind two gentle filters: low for a brush on the skin, high for one on metal.
void addBrush(Loop &loop, double begin, double seconds, double brightness, double loudness, double place,
              std::mt19937 &random) {
    std::uniform_real_distribution<double> noise(-1, 1);
    const auto first = static_cast<std::size_t>(begin * rate);
    double low = 0;
    double lower = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(seconds * 5 * rate); ++i) {
        const double t = double(i) / rate;
        low += brightness * (noise(random) - low);
        lower += 0.12 * (low - lower);
        const double attack = std::min(1.0, t / 0.006);
        loop.add(first + i, (low - lower) * loudness * attack * std::exp(-t / seconds), place);
    }
}

/// A worn record: a breath of noise, and crackles now and then.
void addRecord(Loop &loop, std::mt19937 &random) {
    std::uniform_real_distribution<double> unit(0, 1);
    std::uniform_real_distribution<double> noise(-1, 1);
    double breath = 0;
    for (std::size_t i = 0; i < loop.length(); ++i) {
        breath += 0.25 * (noise(random) - breath);
        loop.add(i, breath * 0.006, 0.5);
        if (unit(random) > 4.0 / rate)
            continue;
        const double loudness = 0.02 + 0.07 * std::pow(unit(random), 4);
        const double place = unit(random);
        for (std::size_t j = 0; j < 60; ++j)
            loop.add(i + j, noise(random) * loudness * std::exp(-double(j) / 9), place);
    }
}

/// Where the `eighth` of a bar falls, in seconds from the beginning of the piece.
double momentOf(const Piece &piece, int bar, int eighth) {
    const double ofEighth = 30 / piece.beatsPerMinute;
    return (bar * beatsOfBar * 2 + eighth + (eighth % 2 != 0 ? piece.swing : 0)) * ofEighth;
}

void playChords(Loop &loop, const Piece &piece, int bars, std::mt19937 &random) {
    std::uniform_real_distribution<double> unit(0, 1);
    const double beat = 60 / piece.beatsPerMinute;
    for (int bar = 0; bar < bars; ++bar) {
        const Chord &chord = piece.chords[static_cast<std::size_t>(bar) % piece.chords.size()];
        for (const auto &[eighth, beats, loudness] : {std::tuple(0, 2.2, 0.085), std::tuple(5, 1.1, 0.06)}) {
            double strum = 0;
            for (std::size_t i = 0; i < chord.notes.size(); ++i) {
                addKey(loop, momentOf(piece, bar, eighth) + strum, beats * beat, chord.notes[i],
                       loudness * (0.85 + 0.3 * unit(random)), 0.3 + 0.13 * double(i));
                strum += 0.012 + 0.01 * unit(random);
            }
        }
        addBass(loop, momentOf(piece, bar, 0), 1.4 * beat, chord.bass, 0.20);
        addBass(loop, momentOf(piece, bar, 5), 0.9 * beat, chord.bass + (bar % 2 != 0 ? 7 : 0), 0.14);
    }
}

/// A few notes in answer to each other; the second round leaves most of them out.
void playMelody(Loop &loop, const Piece &piece, int bars, std::mt19937 &random) {
    std::uniform_real_distribution<double> unit(0, 1);
    const double beat = 60 / piece.beatsPerMinute;
    const int ofRound = static_cast<int>(piece.chords.size());
    std::size_t degree = piece.scale.size() / 2;
    for (int bar = 0; bar < bars; ++bar) {
        const double wish = bar / ofRound == 1 ? 0.15 : bar % 4 == 3 ? 0.2 : 0.42;
        for (int eighth = 1; eighth < beatsOfBar * 2; ++eighth) {
            if (unit(random) > wish)
                continue;
            const int step = static_cast<int>(unit(random) * 3) - 1;
            degree = static_cast<std::size_t>(
                std::clamp(static_cast<int>(degree) + step, 0, static_cast<int>(piece.scale.size()) - 1));
            addKey(loop, momentOf(piece, bar, eighth), 0.8 * beat, piece.scale[degree], 0.035 + 0.02 * unit(random),
                   0.62);
        }
    }
}

void playDrums(Loop &loop, const Piece &piece, int bars, std::mt19937 &random) {
    std::uniform_real_distribution<double> unit(0, 1);
    for (int bar = 0; bar < bars; ++bar) {
        addKick(loop, momentOf(piece, bar, 0), 0.34);
        addKick(loop, momentOf(piece, bar, 5), 0.24);
        for (const int eighth : {2, 6})
            addBrush(loop, momentOf(piece, bar, eighth) + 0.008, 0.085, 0.42, 0.20, 0.46, random);
        for (int eighth = 0; eighth < beatsOfBar * 2; ++eighth)
            addBrush(loop, momentOf(piece, bar, eighth), eighth % 2 != 0 ? 0.03 : 0.018, 0.95,
                     0.022 + 0.018 * unit(random), 0.64, random);
    }
}

/// Mellow: what is bright goes. Run round the circle twice, so that the second time its beginning knows its end.
void makeMellow(std::vector<double> &channel, double brightness) {
    double first = 0;
    double second = 0;
    for (int round = 0; round < 2; ++round) {
        for (double &sample : channel) {
            first += brightness * (sample - first);
            second += brightness * (first - second);
            if (round == 1)
                sample = second;
        }
    }
}

/// An echo off a soft wall, a dotted eighth later, over and over.
void addEcho(std::vector<double> &channel, std::size_t delay, double strength) {
    const std::vector<double> dry = channel;
    double part = strength;
    for (std::size_t i = 1; i <= 4; ++i, part *= strength)
        for (std::size_t at = 0; at < dry.size(); ++at)
            channel[(at + i * delay) % dry.size()] += dry[at] * part;
}

bool write(Loop &loop, const char *path) {
    std::ofstream file(path, std::ios::binary);
    const auto number = [&file](auto value) { file.write(reinterpret_cast<const char *>(&value), sizeof value); };
    const auto bytes = static_cast<std::uint32_t>(loop.length() * 4);
    file << "RIFF";
    number(std::uint32_t(36 + bytes));
    file << "WAVEfmt ";
    number(std::uint32_t(16));
    number(std::uint16_t(1));
    number(std::uint16_t(2));
    number(std::uint32_t(rate));
    number(std::uint32_t(rate * 4));
    number(std::uint16_t(4));
    number(std::uint16_t(16));
    file << "data";
    number(bytes);
    for (std::size_t i = 0; i < loop.length(); ++i)
        for (const std::vector<double> *channel : loop.channels())
            number(static_cast<std::int16_t>(std::lround(28'000 * std::tanh(1.8 * (*channel)[i]))));
    return file.good();
}

} // namespace

int main(int count, char **arguments) {
    const int which = count == 3 ? std::atoi(arguments[1]) : 0;
    if (which < 1 || which > static_cast<int>(std::size(pieces))) {
        std::fprintf(stderr, "usage: make-tracks NUMBER FILE.wav\n");
        return EXIT_FAILURE;
    }
    const Piece &piece = pieces[which - 1];
    const int bars = piece.rounds * static_cast<int>(piece.chords.size());
    const double seconds = bars * beatsOfBar * 60 / piece.beatsPerMinute;
    Loop loop(static_cast<std::size_t>(seconds * rate));
    std::mt19937 random(piece.seed);
    playChords(loop, piece, bars, random);
    playMelody(loop, piece, bars, random);
    for (std::vector<double> *channel : loop.channels())
        addEcho(*channel, static_cast<std::size_t>(0.75 * 60 / piece.beatsPerMinute * rate), 0.22);
    playDrums(loop, piece, bars, random);
    addRecord(loop, random);
    for (std::vector<double> *channel : loop.channels())
        makeMellow(*channel, 0.38);
    return write(loop, arguments[2]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
