#include "adapters/gnome/GnomeScreenFile.h"

#include "adapters/frozen/PictureFile.h"
#include "adapters/gnome/GnomeShell.h"
#include "base/OnMainThread.h"

#include <QFile>
#include <QImageReader>
#include <QPointer>

#include <thread>

#include <sys/mman.h>

namespace tavrine {
namespace {

constexpr int widest = 32767; // an X server's limit

std::shared_ptr<Descriptor> namelessFile() {
    return std::make_shared<Descriptor>(::memfd_create("tavrine-screens", MFD_CLOEXEC));
}

/// Empty for what is no picture.
std::shared_ptr<Descriptor> unpacked(const Descriptor &packed, QPoint pointer) {
    QFile from;
    if (!from.open(packed.number(), QIODevice::ReadOnly) || !from.seek(0))
        return nullptr;
    QImageReader reader(&from, "png");
    if (reader.size().width() > widest || reader.size().height() > widest)
        return nullptr;
    const QImage picture = reader.read().convertToFormat(QImage::Format_RGB32);
    auto file = namelessFile();
    QFile to;
    if (picture.isNull() || !to.open(file->number(), QIODevice::WriteOnly | QIODevice::Unbuffered))
        return nullptr;
    PictureFileHead head;
    head.width = picture.width();
    head.height = picture.height();
    head.pointerX = pointer.x();
    head.pointerY = pointer.y();
    // Lines of 32 bits a pixel have no gaps between them.
    const qint64 bytes = picture.sizeInBytes();
    const bool isWritten = to.write(reinterpret_cast<const char *>(&head), sizeof head) == sizeof head &&
                           to.write(reinterpret_cast<const char *>(picture.constBits()), bytes) == bytes;
    return isWritten ? file : nullptr;
}

} // namespace

QString pathOf(const Descriptor &file) {
    return QStringLiteral("/proc/%1/fd/%2").arg(QCoreApplication::applicationPid()).arg(file.number());
}

void takeScreenFile(GnomeShell &shell, QObject *context,
                    std::function<void(const std::shared_ptr<Descriptor> &file)> answered) {
    const auto packed = namelessFile();
    shell.takePicture(packed->number(), context,
                      [&shell, packed, context = QPointer(context), answered = std::move(answered)](bool isTaken) {
                          if (!isTaken) {
                              answered(nullptr);
                              return;
                          }
                          std::thread([packed, context, answered, pointer = shell.pointer().place] {
                              onMainThread([context, answered, file = unpacked(*packed, pointer)] {
                                  if (context)
                                      answered(file);
                              });
                          }).detach();
                      });
}

} // namespace tavrine
