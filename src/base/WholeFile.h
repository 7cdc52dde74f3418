#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrine {

/// Who may read a file that is made.
enum class FileRights {
    ownerOnly, ///< mode 0600, also where a file stood that others may read
    asUsual,   ///< as the file that is replaced, else as the person's mask says
};

struct WholeFileOptions {
    FileRights rights = FileRights::ownerOnly;
    bool isDurable = false;               ///< on the disk, with its name, before the call returns
    std::function<bool()> isStopped = {}; ///< asked right before the name is given; may be left empty
};

/// Why a plain file at `path` could not be written, in words, as far as that can be told beforehand. None when nothing
/// speaks against it. Nothing is left behind by asking.
[[nodiscard]] std::optional<std::string> whyNotWritable(const std::string &path);

/// A file that comes in pieces and is there whole or not at all, whenever and however the process ends: it has no name
/// before `commit`. A file that stood at `path` is replaced in one step; a link stays, and what it points to is
/// replaced. What is no plain file (a folder, a device, a pipe) is left alone.
///
/// Each call returns 0 or errno's number: ECANCELED when it was stopped, EISDIR and ENOTSUP for what is no plain file.
/// After a failure every further call fails in the same way. Not copied; for one thread at a time.
class WholeFileWriter {
public:
    explicit WholeFileWriter(const std::string &path, WholeFileOptions options = {});
    ~WholeFileWriter(); ///< without a commit nothing stays
    WholeFileWriter(const WholeFileWriter &) = delete;
    WholeFileWriter &operator=(const WholeFileWriter &) = delete;

    int write(std::string_view piece);
    int commit();

    /// For another that writes into the file, and reads what it wrote: it stays the writer's. -1 after a failure.
    [[nodiscard]] int descriptor() const;
    /// Has the commit fail with `error`, one of errno's numbers, for what that other met.
    void fail(int error);

private:
    class Unfinished;

    WholeFileOptions m_options;
    std::string m_target;
    std::unique_ptr<Unfinished> m_unfinished;
    int m_error = 0;
};

/// Writes the pieces, in order, as one such file.
[[nodiscard]] int writeWholeFile(const std::string &path, const std::vector<std::string_view> &pieces,
                                 const WholeFileOptions &options = {});

} // namespace tavrine
