#include "adapters/linux/PlainFile.h"

#include "base/ErrorText.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace tavrine {

PlainFile openPlainFile(const QString &path) {
    Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return {.file = {}, .reason = QString::fromLocal8Bit(errorText(errno))};
    if (!S_ISREG(status.st_mode))
        return {.file = {}, .isThere = true, .reason = QStringLiteral("not a plain file")};
    return {.file = std::move(file), .isThere = true};
}

} // namespace tavrine
