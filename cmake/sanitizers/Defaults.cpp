// What every sanitized program carries within itself, so that those with an emptied environment and those behind walls
// behave like the others. In no other build.

#include "walls/ForeignDescriptors.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

namespace {

/// All processes tell what they find through one pipe, which whoever runs the tests reads. It is opened before any wall
/// stands, and neither error output nor exit status need be looked at by whoever started the process. Where nobody
/// reads it, findings go to the error output.
[[gnu::constructor]] void openFindings() {
    const int pipe = open(TAVRINE_FINDINGS, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (pipe < 0)
        return;
    const int number = fcntl(pipe, F_DUPFD_CLOEXEC, tavrine::numberOfFindings);
    fcntl(number, F_SETFL, 0); // a full pipe is waited for
    close(pipe);
    if (number < 0)
        return;
    const auto tellAt = [](auto set, int descriptor) { set(reinterpret_cast<void *>(static_cast<long>(descriptor))); };
    tellAt(&__sanitizer_set_report_fd, number);
    // Each runtime has a report of its own. This one closes its descriptor as it begins, at the first type that it does
    // not know, and goes on with the other's.
    if (void *const library = dlopen("libubsan.so.1", RTLD_NOW | RTLD_NOLOAD)) {
        using Function = void (*)(void *);
        if (const auto set = reinterpret_cast<Function>(dlsym(library, "__sanitizer_set_report_fd")))
            tellAt(set, fcntl(number, F_DUPFD_CLOEXEC, number));
        dlclose(library);
    }
}

} // namespace

// NOLINTBEGIN: the runtimes ask for these names.
extern "C" {

[[gnu::visibility("default")]] const char *__asan_default_options() {
    // Memory that its owner takes away ends who reads it, as the tests know. A request for too much memory is answered
    // with none, as without a sanitizer. What is preloaded may come first.
    return "allocator_may_return_null=1:verify_asan_link_order=0:handle_abort=0:handle_sigbus=0:"
           "detect_leaks=" TAVRINE_LEAKS;
}

[[gnu::visibility("default")]] const char *__ubsan_default_options() {
    return "print_stacktrace=1";
}

[[gnu::visibility("default")]] const char *__tsan_default_options() {
    // A program that forks goes on in both halves. Memory that its owner takes away is as above.
    return "die_after_fork=0:handle_sigbus=0:second_deadlock_stack=1:allocator_may_return_null=1";
}

[[gnu::visibility("default")]] const char *__lsan_default_options() {
    return "print_suppressions=0"; // what is left out is no finding
}

[[gnu::visibility("default")]] const char *__lsan_default_suppressions() {
    return TAVRINE_SUPPRESSED_LEAKS;
}

[[gnu::visibility("default")]] const char *__tsan_default_suppressions() {
    return TAVRINE_SUPPRESSED_RACES;
}
}
// NOLINTEND
