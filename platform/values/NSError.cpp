// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NSError.h>

#include <utility>

namespace vorlan {
namespace {

std::string sentence(const std::string& domain, std::int64_t code, const Value::Dictionary& userInfo) {
    if (const auto found = userInfo.find("NSLocalizedDescription"); found != userInfo.end())
        if (const auto* text = found->second.text()) return *text;
    return "The operation couldn’t be completed. (" + domain + " error " + std::to_string(code) + ".)";
}

} // namespace

NSError::NSError(std::string domain, std::int64_t code, Value::Dictionary userInfo)
    : domain_(std::move(domain)),
      code_(code),
      userInfo_(std::move(userInfo)),
      what_(sentence(domain_, code_, userInfo_)) {}

NSError::NSError(const NSError&) = default;
NSError& NSError::operator=(const NSError&) = default;
NSError::~NSError() = default;

std::string NSError::localizedDescription() const {
    return what_;
}

} // namespace vorlan
