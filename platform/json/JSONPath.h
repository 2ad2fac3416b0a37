// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where in a JSON text something is, for people.

#include <cstddef>
#include <string>
#include <string_view>

namespace vorlan {

/// A path that is put together from the outside in: "$.items[3].price".
class JSONPath {
public:
    /// Goes on to a member: ".price", or `["unit price"]` when its name is not made of ASCII letters, digits and "_".
    void appendMember(std::string_view name);

    /// Goes on to an element, counted from 0.
    void appendElement(std::size_t index) { text_ += "[" + std::to_string(index) + "]"; }

    const std::string& text() const noexcept { return text_; }

private:
    std::string text_ = "$";
};

} // namespace vorlan
