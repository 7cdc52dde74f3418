#pragma once

#include <QString>

#include <chrono>
#include <compare>

namespace tavrine {

/// A length of time in seconds, fractional. Every delay and interval of the system has this unit.
using Seconds = std::chrono::duration<double>;

/// A point in time: seconds since 1970-01-01 00:00:00 UTC, fractional, as the database stores it.
struct Date {
    double secondsSince1970 = 0.0;

    /// The first and the last date that a calendar of the system can name: 0001-01-01 and 4001-01-01, both UTC.
    /// They stand for "never yet" and "later than anything".
    static constexpr Date distantPast() { return {-62135769600.0}; }
    static constexpr Date distantFuture() { return {64092211200.0}; }

    /// Seconds between 1970-01-01 and 2001-01-01, the reference date that stored JSON counts from.
    static constexpr double referenceDate = 978307200.0;

    constexpr auto operator<=>(const Date &) const = default;

    friend constexpr Seconds operator-(Date a, Date b) { return Seconds{a.secondsSince1970 - b.secondsSince1970}; }
    friend constexpr Date operator+(Date a, Seconds s) { return {a.secondsSince1970 + s.count()}; }
    friend constexpr Date operator-(Date a, Seconds s) { return {a.secondsSince1970 - s.count()}; }
};

/// The date as text in UTC, in the form "2026-01-31 12:00:00 +0000". The fraction is cut off.
[[nodiscard]] QString description(Date date);

} // namespace tavrine
