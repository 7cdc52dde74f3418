#include "adapters/linux/InstanceLock.h"

#include "base/PrivateFiles.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tavrine {

InstanceLock::InstanceLock(const QString &folder, const QString &name)
    : m_folder(folder), m_path(folder + u'/' + name + QStringLiteral(".lock")) {}

InstanceLock::~InstanceLock() {
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

InstanceLock::Holder InstanceLock::take() {
    if (m_descriptor < 0) {
        if (!makePrivateFolder(m_folder))
            return Holder::nobody;
        constexpr int onlyForThePerson = 0600;
        m_descriptor =
            ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, onlyForThePerson);
        if (m_descriptor < 0)
            return Holder::nobody;
    }
    // The file stays: one that was removed and made anew would let two processes lock two files of one name.
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0)
        return Holder::ours;
    return errno == EWOULDBLOCK ? Holder::another : Holder::nobody;
}

} // namespace tavrine
