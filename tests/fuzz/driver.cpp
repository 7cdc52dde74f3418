// Runs a fuzz target without libFuzzer: its seeds, each mutated over and over, from a fixed seed of the generator, so
// that a run says the same everywhere. With libFuzzer this file is left out.
//
//   TARGET SECONDS [ITERATIONS]    whichever ends first; 0 seconds is no limit

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
/// What the target begins from; ends with a null pointer.
extern "C" const char *const fuzzSeeds[];

namespace {

using Bytes = std::vector<std::uint8_t>;

class Mutator {
public:
    explicit Mutator(std::vector<Bytes> seeds) : m_seeds(std::move(seeds)) {}

    Bytes next() {
        Bytes bytes = m_seeds[below(m_seeds.size())];
        for (std::size_t times = 1 + below(8); times > 0; --times)
            mutate(bytes);
        return bytes;
    }

private:
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }

    void mutate(Bytes &bytes) {
        constexpr std::size_t largest = 1 << 16;
        // Bytes that mean something to text formats, and the ends of ranges.
        static constexpr std::uint8_t telling[] = {0,    1,   0x7F, 0x80, 0xBF, 0xC0, 0xF8, 0xFF, '\n',
                                                   '\r', '%', '/',  ':',  '#',  '"',  '{',  '<'};
        const auto place = [&] { return bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size() + 1)); };
        switch (below(7)) {
        case 0:
            if (!bytes.empty())
                bytes[below(bytes.size())] ^= static_cast<std::uint8_t>(1u << below(8));
            break;
        case 1:
            if (!bytes.empty())
                bytes[below(bytes.size())] = telling[below(sizeof telling)];
            break;
        case 2:
            bytes.insert(place(), telling[below(sizeof telling)]);
            break;
        case 3:
            bytes.insert(place(), static_cast<std::uint8_t>(m_random()));
            break;
        case 4:
            bytes.resize(below(bytes.size() + 1));
            break;
        case 5: // a piece again
            if (!bytes.empty() && bytes.size() < largest) {
                const std::size_t from = below(bytes.size());
                const std::size_t length = 1 + below(bytes.size() - from);
                const Bytes piece(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                                  bytes.begin() + static_cast<std::ptrdiff_t>(from + length));
                bytes.insert(place(), piece.begin(), piece.end());
            }
            break;
        default: // another seed in the middle
            if (bytes.size() < largest) {
                const Bytes &other = m_seeds[below(m_seeds.size())];
                bytes.insert(place(), other.begin(), other.end());
            }
        }
    }

    std::vector<Bytes> m_seeds;
    std::mt19937 m_random{20260131};
};

} // namespace

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s SECONDS [ITERATIONS]\n", argv[0]);
        return 2;
    }
    const double seconds = std::atof(argv[1]);
    const long iterations = argc > 2 ? std::atol(argv[2]) : 0;
    std::vector<Bytes> seeds{{}};
    for (const char *const *seed = fuzzSeeds; *seed; ++seed)
        seeds.emplace_back(*seed, *seed + std::strlen(*seed));
    for (const Bytes &seed : seeds)
        LLVMFuzzerTestOneInput(seed.data(), seed.size());
    Mutator mutator(seeds);
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [start] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    long count = 0;
    while ((iterations == 0 || count < iterations) && (seconds == 0 || elapsed() < seconds)) {
        const Bytes input = mutator.next();
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++count;
    }
    std::printf("%ld inputs in %.2f s\n", count, elapsed());
    return 0;
}
