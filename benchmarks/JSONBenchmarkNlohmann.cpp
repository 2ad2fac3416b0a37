// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/JSONBenchmarkCodecs.h"

#include <nlohmann/json.hpp>

// What it does not bring along itself.
template <class T>
struct nlohmann::adl_serializer<std::optional<T>> {
    static void to_json(json& out, const std::optional<T>& value) {
        if (value)
            out = *value;
        else
            out = nullptr;
    }
    static void from_json(const json& in, std::optional<T>& value) {
        if (in.is_null())
            value.reset();
        else
            value = in.get<T>();
    }
};

namespace vorlan::benchmarks {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Position, latitude, longitude)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Record, id, name, email, isActive, visits, balance, rating,
                                                note, tags, position)

std::string encodeByNlohmann(const Records& records) {
    return nlohmann::json(records).dump();
}

Records decodeByNlohmann(std::string_view text) {
    return nlohmann::json::parse(text).get<Records>();
}

} // namespace vorlan::benchmarks
