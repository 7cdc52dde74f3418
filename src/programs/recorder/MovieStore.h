#pragma once

#include <cstdint>
#include <string>

namespace tavrine {

/// Where a movie is written: a file that grows. Each call is carried out later, in order; none is waited for but
/// `settle`, unless the disk is far behind.
class MovieStore {
public:
    virtual ~MovieStore() = default;

    /// At the end, whole or not at all. After one that failed all further ones do, until `settle`.
    virtual void append(std::string bytes) = 0;
    /// In place of what stands there; of what does not stand there, nothing happens.
    virtual void overwrite(std::uint64_t offset, std::string bytes) = 0;
    /// What was written so far is on the disk before anything that follows.
    virtual void sync() = 0;

    struct State {
        std::uint64_t length = 0; ///< bytes of the file
        int error = 0;            ///< errno's number of the first failure since the last `settle`; 0 for none
    };
    /// Waits until all is carried out.
    [[nodiscard]] virtual State settle() = 0;
};

} // namespace tavrine
