#include "programs/screencapture/Narration.h"

#include "adapters/linux/NarrationProtocol.h"

#include <array>
#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// With `input` as its standard input and nothing else of ours. False when there is none.
bool start(const std::string &program, int input) {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    for (const int standard : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t pid = 0;
    std::array<char *, 2> arguments{const_cast<char *>(program.c_str()), nullptr};
    const int error = posix_spawn(&pid, program.c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error == 0;
}

NarratedPlace::Kind kindOf(SelectionModel::State state) {
    switch (state) {
    case SelectionModel::State::dragging:
        return NarratedPlace::Kind::area;
    case SelectionModel::State::picking:
        return NarratedPlace::Kind::window;
    default:
        return NarratedPlace::Kind::cross;
    }
}

} // namespace

Narration::Narration(const QRect &screen, WrittenSize writtenSize)
    : m_screen(screen), m_writtenSize(std::move(writtenSize)) {}

void Narration::begin() {
    std::error_code error;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
    std::array<int, 2> ends{};
    if (error || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return;
    Descriptor ours(ends[0]);
    const Descriptor theirs(ends[1]);
    if (start((own.parent_path() / "TavrineNarrator").string(), theirs.number()))
        beginWith(std::move(ours));
}

void Narration::beginWith(Descriptor listener) {
    m_listener = std::move(listener);
    const QSize size = m_screen.size();
    send(NarratedPlace{NarratedPlace::Kind::screen,
                       {m_screen.x(), m_screen.y(), size.width(), size.height()},
                       {size.width(), size.height()}}
             .line());
}

void Narration::follow(OverlayEvent::Kind kind, const SelectionModel &model) {
    if (kind != OverlayEvent::Kind::pointerMoved)
        tell(model);
}

void Narration::tell(const SelectionModel &model) {
    if (model.isFinished())
        return;
    const std::optional<QRect> selection = model.selection();
    const QRect area = selection.value_or(QRect(model.pointer(), QSize(1, 1)));
    const QSize picture = selection && m_writtenSize ? m_writtenSize(area) : area.size();
    const std::string line = NarratedPlace{
        selection ? kindOf(model.state()) : NarratedPlace::Kind::cross,
        {area.x(), area.y(), area.width(), area.height()},
        {picture.width(),
         picture.height()}}.line();
    if (line == m_last)
        return;
    m_last = line;
    send(line);
}

void Narration::send(const std::string &line) {
    if (m_listener.isOpen())
        static_cast<void>(::send(m_listener.number(), line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
}

} // namespace tavrine
