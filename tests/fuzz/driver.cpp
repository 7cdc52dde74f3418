// Runs the fuzz targets that are linked with it.
//
//   PROGRAM SECONDS [TARGET]       all targets, or one of them, within that time: their seeds, then these mutated over
//   and over, from a
//                                  fixed seed of the generator, so that a run says the same everywhere
//   PROGRAM --list                 their names
//   PROGRAM --file TARGET FILE     that input alone
//   PROGRAM --coverage TARGET …    one target as libFuzzer does it, with its options; in builds with TAVRINE_FUZZERS
//   alone. The
//                                  seeds are put into the first folder that is named

#include "FuzzTarget.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

using tavrine::fuzz::Target;

namespace {

std::vector<const Target *> &allTargets() {
    static std::vector<const Target *> targets;
    return targets;
}

using Bytes = std::string;

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
    static void flip(char &byte, std::size_t bit) {
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^ (1u << bit));
    }
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }

    void mutate(Bytes &bytes) {
        constexpr std::size_t largest = 1 << 16;
        // Bytes that mean something to text formats, and the ends of ranges.
        static constexpr std::string_view telling{"\0\1\x7F\x80\xBF\xC0\xF8\xFF\n\r%/:#\"{<;=[", 20};
        const auto place = [&] { return bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size() + 1)); };
        switch (below(7)) {
        case 0:
            if (!bytes.empty())
                flip(bytes[below(bytes.size())], below(8));
            break;
        case 1:
            if (!bytes.empty())
                bytes[below(bytes.size())] = telling[below(telling.size())];
            break;
        case 2:
            bytes.insert(place(), telling[below(telling.size())]);
            break;
        case 3:
            bytes.insert(place(), static_cast<char>(m_random() % 256));
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

/// An empty input too: nothing is what the outside says most often.
std::vector<std::string> seedsOf(const Target &target) {
    std::vector<std::string> seeds = target.seeds();
    seeds.emplace_back();
    return seeds;
}

void runFor(const Target &target, double seconds) {
    const std::vector<std::string> seeds = seedsOf(target);
    const auto start = std::chrono::steady_clock::now();
    const auto elapsed = [start] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    for (const std::string &seed : seeds)
        target.run(seed);
    Mutator mutator(seeds);
    long count = 0;
    for (; elapsed() < seconds; ++count)
        target.run(mutator.next());
    std::printf("%s: %ld inputs in %.2f s\n", target.name, count, elapsed());
}

const Target *targetNamed(std::string_view name) {
    for (const Target *target : allTargets())
        if (name == target->name)
            return target;
    std::fprintf(stderr, "no target is called %s\n", std::string(name).c_str());
    std::exit(2);
}

int usage(const char *program) {
    std::fprintf(stderr, "usage: %s SECONDS [TARGET] | --list | --file TARGET FILE | --coverage TARGET …\n", program);
    return 2;
}

std::string bytesOf(const char *path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

Target::Target(const char *theName, Run theRun, Seeds theSeeds) : name(theName), run(theRun), seeds(theSeeds) {
    allTargets().push_back(this);
}

#ifdef TAVRINE_FUZZERS
extern "C" int LLVMFuzzerRunDriver(int *argc, char ***argv, int (*run)(const std::uint8_t *data, std::size_t size));

namespace {

const Target *covered;

int runCoverage(int argc, char **argv) {
    covered = targetNamed(argv[2]);
    int number = 0;
    if (argc > 3)
        for (const std::string &seed : seedsOf(*covered))
            std::ofstream(std::filesystem::path(argv[3]) / ("seed" + std::to_string(number++)), std::ios::binary)
                << seed;
    std::vector<char *> options{argv[0]};
    options.insert(options.end(), argv + 3, argv + argc);
    int count = static_cast<int>(options.size());
    options.push_back(nullptr);
    char **values = options.data();
    return LLVMFuzzerRunDriver(&count, &values, [](const std::uint8_t *data, std::size_t size) {
        covered->run({reinterpret_cast<const char *>(data), size});
        return 0;
    });
}

} // namespace
#endif

int main(int argc, char **argv) {
    if (argc < 2)
        return usage(argv[0]);
    const std::string_view word = argv[1];
    if (word == "--list") {
        for (const Target *target : allTargets())
            std::puts(target->name);
        return 0;
    }
    if (word == "--file" && argc == 4) {
        targetNamed(argv[2])->run(bytesOf(argv[3]));
        return 0;
    }
#ifdef TAVRINE_FUZZERS
    if (word == "--coverage" && argc > 2)
        return runCoverage(argc, argv);
#endif
    const double seconds = std::atof(argv[1]);
    if (seconds <= 0)
        return usage(argv[0]);
    if (argc > 2)
        runFor(*targetNamed(argv[2]), seconds);
    else
        for (const Target *target : allTargets())
            runFor(*target, seconds / static_cast<double>(allTargets().size()));
    return 0;
}
