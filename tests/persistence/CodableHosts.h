// SPDX-License-Identifier: Apache-2.0
#pragma once

// Types as a host has them, which can be coded, and which refuse to be.

#include <VorlanFoundation/Platform/Codable.h>
#include <VorlanFoundation/Platform/Date.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::tests {

struct Address {
    std::string street;
    int number = 0;
    bool operator==(const Address&) const = default;
};
VORLAN_CODABLE(Address, street, number)

struct Profile {
    std::string name;
    std::optional<Date> born;
    std::vector<Address> addresses;
    bool operator==(const Profile&) const = default;
};
VORLAN_CODABLE(Profile, name, born, addresses)

struct Appointment {
    std::string title;
    Date when{0};
    bool operator==(const Appointment&) const = default;
};
VORLAN_CODABLE(Appointment, title, when)

struct Measurement {
    std::string unit;
    double value = 0;
    bool operator==(const Measurement&) const = default;
};
VORLAN_CODABLE(Measurement, unit, value)

struct Node {
    std::vector<Node> children;
};
VORLAN_CODABLE(Node, children)

/// Throws something when it is coded, in the middle of it.
struct Stubborn {
    void encode(JSONWriter& writer) const {
        writer.beginObject();
        writer.key("half");
        throw std::runtime_error("no such form");
    }
    static Stubborn decode(JSONReader&) { throw std::runtime_error("no such form"); }
    bool operator==(const Stubborn&) const = default;
};

/// The same with what nobody expects to be thrown.
struct Unruly {
    void encode(JSONWriter& writer) const {
        writer.beginArray();
        throw 7;
    }
    static Unruly decode(JSONReader&) { throw 7; }
    bool operator==(const Unruly&) const = default;
};

/// Says itself that it has no form.
struct Failing {
    void encode(JSONWriter& writer) const {
        writer.beginObject();
        writer.key("half");
        writer.fail("no such form");
    }
};

/// Many arrays within one another, more than a default coder takes.
inline Node tooDeepForADefaultCoder() {
    Node node;
    for (int level = 0; level < 600; ++level) {
        Node parent;
        parent.children.push_back(std::move(node));
        node = std::move(parent);
    }
    return node;
}

/// One that has everything.
inline Profile ada() {
    return {"Ada \"Countess\" Løvelace 👋", Date(-5'852'736'000.25), {{"Main\nStreet", 5}, {"", -1}}};
}

} // namespace vorlan::tests
