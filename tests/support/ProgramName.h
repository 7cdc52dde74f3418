#pragma once

#include <array>

#include <sys/prctl.h>

namespace tavrine::test {

/// What this program, and so what it plays, is called meanwhile.
class ProgramName {
public:
    explicit ProgramName(const char *called) {
        ::prctl(PR_GET_NAME, m_before.data());
        ::prctl(PR_SET_NAME, called);
    }
    ~ProgramName() { ::prctl(PR_SET_NAME, m_before.data()); }
    ProgramName(const ProgramName &) = delete;
    ProgramName &operator=(const ProgramName &) = delete;

private:
    std::array<char, 16> m_before{};
};

} // namespace tavrine::test
