#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <seccomp.h>

namespace tavrine {

/// A filter of system calls that refuses all it does not name. A call that is newer than this program, or than
/// libseccomp, is refused like any other. One-way, for the whole process with all its threads to come; it holds for
/// what is called after `load`.
class SystemCalls {
public:
    /// Every call fails with EPERM until it is allowed.
    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls &) = delete;
    SystemCalls &operator=(const SystemCalls &) = delete;

    /// A name that this machine or libseccomp does not know stays refused.
    void allow(std::initializer_list<const char *> calls);
    /// Where all `conditions` hold. Several of these for one call: where one of them does.
    void allow(int call, std::vector<scmp_arg_cmp> conditions);
    /// For newer forms of a call whose arguments a filter cannot see: the C library then uses the older one.
    void sayUnknown(std::initializer_list<int> calls);
    /// For calls that name a file: there is none, which libraries expect, unlike a refusal. Of no name that is allowed.
    void sayMissing(std::initializer_list<const char *> calls);

    /// What every program needs to go on with what it has open: to read and write it, to take and give back memory that
    /// is not executable, to wait, to know the time, to catch its signals and to end.
    void allowComputing();
    /// More threads in this process, and what they wake each other with; no other process.
    void allowThreads();

    /// What failed; the first failure of all above.
    [[nodiscard]] std::optional<std::string> load();

private:
    void rule(std::uint32_t action, int call, const std::vector<scmp_arg_cmp> &conditions = {});

    scmp_filter_ctx m_context;
    int m_error = 0;
};

/// Conditions on the argument at `index`.
[[nodiscard]] scmp_arg_cmp argumentIs(unsigned index, std::uint64_t value);
/// Of the `bits`, those of `value` are set and no other.
[[nodiscard]] scmp_arg_cmp argumentHas(unsigned index, std::uint64_t bits, std::uint64_t value);

} // namespace tavrine
