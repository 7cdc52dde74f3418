#include "programs/movies/Walls.h"

#include "walls/FileRules.h"
#include "walls/SystemCalls.h"

#include <array>

namespace tavrine {
namespace {

/// Beyond the libraries: the frames that a decoder holds on to at 128 megapixels, or the index of a day at 60 frames a
/// second.
constexpr std::size_t mostMemory = std::size_t(1) << 30;

LockDownError filterMovieReader() {
    SystemCalls calls;
    calls.allowComputing();
    calls.allow({"pwrite64"});
    return calls.load();
}

} // namespace

LockDownError lockMovieReader(std::uint64_t mostOutput, std::uint64_t mostSeconds) {
    if (LockDownError error = limit("file size", RLIMIT_FSIZE, mostOutput))
        return error;
    if (LockDownError error = limit("seconds", RLIMIT_CPU, mostSeconds))
        return error;
    return inOrder(std::array{+[] { return limitMemory(mostMemory); }, &keepToOurselves,
                              +[] { return allowFilesOnlyIn({}); },
                              +[] { return limit("descriptors", RLIMIT_NOFILE, 1); }, &filterMovieReader});
}

} // namespace tavrine
