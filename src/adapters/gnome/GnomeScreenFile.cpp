#include "adapters/gnome/GnomeScreenFile.h"

#include "adapters/gnome/GnomeShell.h"
#include "adapters/gnome/ScreenPictures.h"
#include "base/OnMainThread.h"

#include <QCoreApplication>
#include <QPointer>

#include <thread>

#include <sys/mman.h>

namespace tavrine {
namespace {

std::shared_ptr<Descriptor> namelessFile() {
    return std::make_shared<Descriptor>(::memfd_create("tavrine-screens", MFD_CLOEXEC));
}

/// Null for what are no pictures.
std::shared_ptr<Descriptor> unpacked(const Descriptor &packed, const std::vector<GnomePicture> &pictures,
                                     QPoint pointer, Shrinking shrinking) {
    const auto screens = readScreenPictures(packed.number(), pictures);
    auto file = namelessFile();
    return writeScreenPictures(screens, pointer, shrinking, file->number()) ? file : nullptr;
}

} // namespace

QString pathOf(const Descriptor &file) {
    return QStringLiteral("/proc/%1/fd/%2").arg(QCoreApplication::applicationPid()).arg(file.number());
}

void takeScreenFile(GnomeShell &shell, Shrinking shrinking, QObject *context,
                    std::function<void(const std::shared_ptr<Descriptor> &file)> answered) {
    const auto packed = namelessFile();
    const auto taken = [&shell, packed, shrinking, context = QPointer(context),
                        answered = std::move(answered)](const std::vector<GnomePicture> &pictures) {
        if (pictures.empty()) {
            answered(nullptr);
            return;
        }
        std::thread([packed, pictures, shrinking, context, answered, pointer = shell.pointer().place] {
            onMainThread([context, answered, file = unpacked(*packed, pictures, pointer, shrinking)] {
                if (context)
                    answered(file);
            });
        }).detach();
    };
    shell.takePicture(packed->number(), context, taken);
}

} // namespace tavrine
