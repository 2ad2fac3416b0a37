// SPDX-License-Identifier: Apache-2.0
#pragma once

// What an application may send or keep as JSON: ten thousand records of ten members.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorlan::benchmarks {

inline constexpr std::size_t sampleRecordCount = 10'000;

struct Position {
    double latitude = 0;
    double longitude = 0;
    friend bool operator==(const Position&, const Position&) = default;
};

/// A bit of each: numbers with few digits and with all, texts short and long, some beyond ASCII, some to be escaped.
struct Record {
    std::int64_t id = 0;
    std::string name;
    std::string email;
    bool isActive = false;
    std::uint32_t visits = 0;
    double balance = 0;
    double rating = 0;
    std::optional<std::string> note;
    std::vector<std::string> tags;
    Position position;
    friend bool operator==(const Record&, const Record&) = default;
};

using Records = std::vector<Record>;

/// The same in every run.
const Records& sampleRecords();

} // namespace vorlan::benchmarks
