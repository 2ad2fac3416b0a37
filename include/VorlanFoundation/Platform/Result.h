// SPDX-License-Identifier: Apache-2.0
#pragma once

// A value, or the error for which there is none.
//
//     fromJSONData<Profile>(data, JSONDecoder(), [](const Result<Profile>& result) {
//         if (result) return show(*result);
//         Logger::log(result.error().what());
//     });

#include <VorlanFoundation/Platform/FatalError.h>
#include <VorlanFoundation/Platform/NSError.h>

#include <concepts>
#include <memory>
#include <utility>
#include <variant>

namespace vorlan {

/// What an operation that may fail hands to a callback.
///
/// Threads: one thread at a time, as its value.
/// Owns:    the value or the error; copies share the error.
/// Errors:  asking a failure for its value, or a success for its error, stops the process with a message.
template <class T>
class Result {
public:
    /// A success.
    Result(T value)
        : content_(std::in_place_index<0>, std::move(value)) {} // NOLINT(*-explicit-*): the same thing

    /// A failure. What the error is beyond an NSError is kept: `errorAs` finds it.
    template <std::derived_from<NSError> Error>
    Result(Error error) // NOLINT(*-explicit-*): the same thing
        : content_(std::in_place_index<1>, std::make_shared<const Error>(std::move(error))) {}

    /// Whether there is a value.
    explicit operator bool() const noexcept { return content_.index() == 0; }

    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    const T* operator->() const { return &value(); }

    const T& value() const& {
        requireValue();
        return *std::get_if<0>(&content_);
    }
    T&& value() && {
        requireValue();
        return std::move(*std::get_if<0>(&content_));
    }

    const NSError& error() const {
        if (*this) fatalError("a success was asked for its error", "VorlanFoundation/Result");
        return **std::get_if<1>(&content_);
    }

    /// The error as what it was made as, for example `errorAs<JSONError>()`; null when it is none of these, or when
    /// there is a value.
    template <std::derived_from<NSError> Error>
    const Error* errorAs() const noexcept {
        return *this ? nullptr : dynamic_cast<const Error*>(std::get_if<1>(&content_)->get());
    }

private:
    void requireValue() const {
        if (!*this) fatalError("a failure was asked for its value", "VorlanFoundation/Result");
    }

    std::variant<T, std::shared_ptr<const NSError>> content_;
};

} // namespace vorlan
