// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is handed to a host where an operation failed and does not throw.

#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/Value.h>

#include <cstdint>
#include <exception>
#include <string>

namespace vorlan {

/// An error: a domain that says whose it is, a code that means something within that domain, and what else is to be
/// known of it. The base of errors that say more; those are thrown, too.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
/// Owns:    its texts and its information.
class VORLAN_EXPORT NSError : public std::exception {
public:
    NSError(std::string domain, std::int64_t code, Value::Dictionary userInfo = {});
    NSError(const NSError&);
    NSError& operator=(const NSError&);
    ~NSError() override;

    const std::string& domain() const noexcept { return domain_; }
    std::int64_t code() const noexcept { return code_; }
    const Value::Dictionary& userInfo() const noexcept { return userInfo_; }

    /// A sentence for people: what the information holds as "NSLocalizedDescription", else "The operation couldn’t be
    /// completed. (<domain> error <code>.)".
    std::string localizedDescription() const;

    /// The same, for whom catches it as a std::exception.
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string domain_;
    std::int64_t code_;
    Value::Dictionary userInfo_;
    std::string what_;
};

} // namespace vorlan
