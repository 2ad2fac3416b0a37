// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Reachability/ReachabilityError.h>

#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/SystemConfiguration.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace vorlan {

/// The case, with what goes with it.
///
/// Threads: safe from any thread (never changed).
struct ReachabilityError::Payload {
    Case kind;
    std::int32_t status;
    std::optional<SocketAddress> address{};
    std::optional<std::string> hostname{};
    std::string text{};
};

namespace {

std::string nameOf(ReachabilityError::Case kind) {
    switch (kind) {
    case ReachabilityError::Case::failedToCreateWithAddress: return "failedToCreateWithAddress";
    case ReachabilityError::Case::failedToCreateWithHostname: return "failedToCreateWithHostname";
    case ReachabilityError::Case::unableToSetCallback: return "unableToSetCallback";
    case ReachabilityError::Case::unableToSetDispatchQueue: return "unableToSetDispatchQueue";
    case ReachabilityError::Case::unableToGetFlags: return "unableToGetFlags";
    }
    return "unknown";
}

// The bytes of the control character or line separator that a text begins with; 0 when it begins with another one.
std::size_t controlLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x20 || first == 0x7f) return 1;
    const bool isC1 = text.size() > 1 && first == 0xc2 && static_cast<unsigned char>(text[1]) < 0xa0;
    if (isC1) return 2;
    return text.starts_with("\xe2\x80\xa8") || text.starts_with("\xe2\x80\xa9") ? 3 : 0;
}

// Names come from outside, may be of any length, and break a line of a log or steer the terminal that shows it.
std::string oneLine(const std::string& name) {
    constexpr std::size_t longest = 253; // that a host's name can have
    const std::string text = describe(name.substr(0, longest));
    std::string line;
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t control = controlLength(std::string_view(text).substr(place));
        line += control > 0 ? '?' : text[place];
        place += std::max<std::size_t>(control, 1);
    }
    return line + (name.size() > longest ? "..." : "");
}

} // namespace

ReachabilityError::ReachabilityError(Payload payload) {
    payload.text = nameOf(payload.kind) + "(";
    if (payload.address) payload.text += describe(*payload.address) + ", ";
    if (payload.hostname) payload.text += "\"" + oneLine(*payload.hostname) + "\", ";
    payload.text += std::to_string(payload.status) + ": " + SCErrorString(payload.status) + ")";
    payload_ = std::make_shared<const Payload>(std::move(payload));
}

ReachabilityError ReachabilityError::failedToCreateWithAddress(const SocketAddress& address,
                                                               std::int32_t status) {
    return ReachabilityError({Case::failedToCreateWithAddress, status, address});
}

ReachabilityError ReachabilityError::failedToCreateWithHostname(std::string hostname, std::int32_t status) {
    return ReachabilityError({Case::failedToCreateWithHostname, status, std::nullopt, std::move(hostname)});
}

ReachabilityError ReachabilityError::unableToSetCallback(std::int32_t status) {
    return ReachabilityError({Case::unableToSetCallback, status});
}

ReachabilityError ReachabilityError::unableToSetDispatchQueue(std::int32_t status) {
    return ReachabilityError({Case::unableToSetDispatchQueue, status});
}

ReachabilityError ReachabilityError::unableToGetFlags(std::int32_t status) {
    return ReachabilityError({Case::unableToGetFlags, status});
}

ReachabilityError::Case ReachabilityError::kind() const noexcept {
    return payload_->kind;
}

std::int32_t ReachabilityError::status() const noexcept {
    return payload_->status;
}

const std::optional<SocketAddress>& ReachabilityError::address() const noexcept {
    return payload_->address;
}

const std::optional<std::string>& ReachabilityError::hostname() const noexcept {
    return payload_->hostname;
}

const char* ReachabilityError::what() const noexcept {
    return payload_->text.c_str();
}

bool operator==(const ReachabilityError& a, const ReachabilityError& b) noexcept {
    return a.kind() == b.kind() && a.status() == b.status() && a.address() == b.address() &&
           a.hostname() == b.hostname();
}

} // namespace vorlan
