#include "adapters/linux/IdleMemory.h"

#include <cinttypes>
#include <cstdio>
#include <string_view>

#include <malloc.h>
#include <sys/mman.h>

namespace tavrine {
namespace {

constexpr uintptr_t largeFont =
    2UL * 1024 * 1024; ///< a colour font has 10 MB; one of letters is drawn from all the time

bool isFont(std::string_view path) {
    return path.ends_with(".ttf") || path.ends_with(".otf") || path.ends_with(".ttc");
}

/// What the system knows of its fonts: all of it is read when a family is looked for, and hardly anything afterwards.
bool isFontCache(std::string_view path) {
    return path.find("/fontconfig/") != std::string_view::npos && path.find(".cache-") != std::string_view::npos;
}

/// A line of the process's own map: a range, its rights, and behind other things the file.
void giveBack(const char *line) {
    uintptr_t begin = 0;
    uintptr_t end = 0;
    char rights[5] = "";
    int pathAt = 0;
    if (std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s %*s %*s %*s %n", &begin, &end, rights, &pathAt) != 3)
        return;
    std::string_view path(line + pathAt);
    if (path.ends_with('\n'))
        path.remove_suffix(1);
    // Only what cannot have been written to: the file has the same.
    const std::string_view readOnly(rights, 3);
    if (readOnly == "r--" && ((end - begin >= largeFont && isFont(path)) || isFontCache(path)))
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the system tells addresses as numbers
        madvise(reinterpret_cast<void *>(begin), end - begin, MADV_DONTNEED);
}

} // namespace

void giveIdleMemoryBack() {
    malloc_trim(0);
    std::FILE *maps = std::fopen("/proc/self/maps", "re");
    if (!maps)
        return;
    char line[4352]; // the longest path, and what stands before it
    while (std::fgets(line, sizeof(line), maps))
        giveBack(line);
    std::fclose(maps);
}

} // namespace tavrine
