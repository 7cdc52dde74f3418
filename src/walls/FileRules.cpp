#include "walls/FileRules.h"

#include "base/Descriptor.h"
#include "base/ErrorText.h"

#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tavrine {
namespace {

// The kernel's own numbers and records (include/uapi/linux/landlock.h); Debian 12's headers lack the later rights.
constexpr long createRulesetCall = 444;
constexpr long addRuleCall = 445;
constexpr long restrictSelfCall = 446;
constexpr std::uint32_t versionFlag = 1;
constexpr int pathRule = 1;
constexpr std::uint64_t readFile = 1u << 2;
constexpr std::uint64_t readFolder = 1u << 3;
constexpr std::uint64_t rightsOfVersion1 = (1u << 13) - 1; // execute … make symbolic links
constexpr std::uint64_t referRight = 1u << 13;             // version 2
constexpr std::uint64_t truncateRight = 1u << 14;          // version 3
constexpr std::uint64_t deviceRight = 1u << 15;            // version 5

struct RulesetAttributes {
    std::uint64_t handledFileRights;
};
struct [[gnu::packed]] PathAttributes {
    std::uint64_t allowedRights;
    std::int32_t place;
};

std::optional<std::string> failed() {
    return std::string("landlock: ") + errorText(errno);
}

} // namespace

std::optional<std::string> allowFilesOnlyIn(const std::vector<std::string> &places) {
    const long version = syscall(createRulesetCall, nullptr, 0, versionFlag);
    if (version < 0)
        return errno == ENOSYS || errno == EOPNOTSUPP ? std::nullopt : failed();
    RulesetAttributes rights{rightsOfVersion1};
    if (version >= 2)
        rights.handledFileRights |= referRight;
    if (version >= 3)
        rights.handledFileRights |= truncateRight;
    if (version >= 5)
        rights.handledFileRights |= deviceRight;
    const Descriptor ruleset(static_cast<int>(syscall(createRulesetCall, &rights, sizeof rights, 0)));
    if (ruleset.number() < 0)
        return failed();
    for (const std::string &path : places) {
        const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
        struct stat info {};
        if (place.number() < 0 || fstat(place.number(), &info) != 0)
            continue;
        // The kernel refuses a rule that gives a file what only a folder has.
        const PathAttributes rule{S_ISDIR(info.st_mode) ? readFile | readFolder : readFile, place.number()};
        if (syscall(addRuleCall, ruleset.number(), pathRule, &rule, 0) != 0)
            return failed();
    }
    return syscall(restrictSelfCall, ruleset.number(), 0) == 0 ? std::nullopt : failed();
}

} // namespace tavrine
