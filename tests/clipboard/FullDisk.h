#pragma once

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/types.h>

namespace tavrine {

/// SQLite finds no room on the disk meanwhile, in this whole process.
class FullDisk {
public:
    FullDisk() {
        for (const char *const name : {"write", "pwrite", "pwrite64"})
            if (const auto before = m_system->xGetSystemCall(m_system, name)) {
                m_before.emplace_back(name, before);
                EXPECT_EQ(m_system->xSetSystemCall(m_system, name, reinterpret_cast<sqlite3_syscall_ptr>(&refuse)),
                          SQLITE_OK);
            }
        EXPECT_FALSE(m_before.empty());
    }
    ~FullDisk() {
        for (const auto &[name, call] : m_before)
            m_system->xSetSystemCall(m_system, name.c_str(), call);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    /// Of all three calls: the place is the last argument.
    static ssize_t refuse(int, const void *, std::size_t, off_t) {
        errno = ENOSPC;
        return -1;
    }

    sqlite3_vfs *const m_system = sqlite3_vfs_find(nullptr);
    std::vector<std::pair<std::string, sqlite3_syscall_ptr>> m_before;
};

} // namespace tavrine
