#include "base/FileResult.h"

#include <cerrno>
#include <system_error>

namespace tavrine {

FileResult FileResult::failure(int error) {
    FileResult result;
    result.m_error = error;
    return result;
}

FileResult FileResult::ofCall(int answer) {
    return answer < 0 ? failure(errno) : FileResult();
}

QString FileResult::reason() const {
    return QString::fromStdString(std::generic_category().message(m_error));
}

} // namespace tavrine
