#include "adapters/linux/HelperStart.h"

#include <QFile>

#include <algorithm>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>

namespace tavrine {
namespace {

int spawn(pid_t &pid, const HelperStart &start, const posix_spawn_file_actions_t &actions,
          const posix_spawnattr_t &attributes) {
    std::vector<QByteArray> texts{QFile::encodeName(start.program)};
    for (const QString &argument : start.arguments)
        texts.push_back(argument.toUtf8());
    std::vector<char *> arguments;
    arguments.reserve(texts.size() + 1);
    for (QByteArray &text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    return posix_spawn(&pid, texts.front().constData(), &actions, &attributes, arguments.data(), environ);
}

} // namespace

int startHelper(pid_t &pid, const HelperStart &start) {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_init(&actions);
    int highest = STDERR_FILENO;
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0);
    for (const auto &[from, to] : start.descriptors) {
        posix_spawn_file_actions_adddup2(&actions, from, to);
        highest = std::max(highest, to);
    }
    posix_spawn_file_actions_addclosefrom_np(&actions, highest + 1);
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    const short group = start.group == HelperStart::Group::own ? POSIX_SPAWN_SETPGROUP : 0;
    posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group));
    const int error = spawn(pid, start, actions, attributes);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error;
}

Descriptor aboveHelperNumbers(int number) {
    return Descriptor(fcntl(number, F_DUPFD_CLOEXEC, highestHelperNumber + 1));
}

} // namespace tavrine
