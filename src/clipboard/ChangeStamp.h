#pragma once

#include <QtGlobal>

#include <array>
#include <optional>

struct sqlite3;

namespace tavrine {

/// What the database file itself says about its last change: the header's change counter and its neighbours, the same
/// bytes by which SQLite decides whether its own page cache still stands. Belongs to the connection's thread.
///
/// In a file with a rollback journal the counter grows by exactly 1 with every transaction that wrote, of whatever
/// process, and the header is written before the transaction ends. So two equal stamps have no write between them.
class ChangeStamp {
public:
    /// Reads the stamp of the connection's file through SQLite's own handle: a handle of ours would drop the locks of
    /// the process when it is closed. Absent when the file cannot be read or has a write-ahead log, where the counter
    /// says nothing.
    [[nodiscard]] static std::optional<ChangeStamp> read(sqlite3 *db);

    /// True when `this` can be what `writes` (0 or 1) transactions of ours, and none of anyone else's, made of
    /// `before`.
    [[nodiscard]] bool follows(const ChangeStamp &before, quint32 writes) const;

    bool operator==(const ChangeStamp &) const = default;

private:
    /// Change counter, size in pages, first free page, number of free pages: bytes 24 to 39 of the file.
    static constexpr std::size_t size = 16;

    [[nodiscard]] quint32 counter() const;

    std::array<uchar, size> m_bytes{};
};

} // namespace tavrine
