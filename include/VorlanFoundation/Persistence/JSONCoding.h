// SPDX-License-Identifier: Apache-2.0
#pragma once

// Values and dictionaries to and from JSON data, for hosts that want no exceptions.
//
//     std::optional<Profile> profile = fromJSONData<Profile>(data, JSONDecoder());
//     std::optional<Data> json = toJSONData(*profile, JSONEncoder());
//     fromJSON<Profile>(response, JSONDecoder(), [](const Result<Profile>& result) { ... });
//     std::optional<std::string> text = prepareJSONString({{"width", 800}}, true);

#include <VorlanFoundation/Platform/Data.h>
#include <VorlanFoundation/Platform/Describe.h>
#include <VorlanFoundation/Platform/Export.h>
#include <VorlanFoundation/Platform/JSONResult.h>
#include <VorlanFoundation/Platform/NSError.h>
#include <VorlanFoundation/Platform/Value.h>

#include <concepts>
#include <optional>
#include <span>
#include <string>
#include <typeinfo>
#include <utility>

namespace vorlan {

/// Decodes a T from JSON; absent when `data` is none. Safe from any thread.
template <Decodable T>
std::optional<T> fromJSONData(std::span<const std::byte> data, const JSONDecoder& decoder) {
    auto result = detail::decodingResult<T>(data, decoder);
    return result ? std::optional<T>(*std::move(result)) : std::nullopt;
}

/// The same, and why not: calls `completionHandler` once with a `Result<T>`, on this thread, before it returns. The
/// error is a JSONError. What the handler throws passes.
template <Decodable T, std::invocable<Result<T>> Handler>
void fromJSONData(std::span<const std::byte> data, const JSONDecoder& decoder, Handler&& completionHandler) {
    std::forward<Handler>(completionHandler)(detail::decodingResult<T>(data, decoder));
}

/// Encodes a value as JSON; absent when it cannot be. Safe from any thread, as far as reading `value` is.
template <Encodable T>
std::optional<Data> toJSONData(const T& value, const JSONEncoder& encoder) {
    auto result = detail::encodingResult(value, encoder);
    return result ? std::optional<Data>(*std::move(result)) : std::nullopt;
}

/// The same, and why not: calls one of the handlers once, on this thread, before it returns: `successHandler` with the
/// data, or `failureHandler` with the error, a JSONError. What a handler throws passes.
template <Encodable T, std::invocable<Data> Success, std::invocable<const NSError&> Failure>
void toJSONData(const T& value, const JSONEncoder& encoder, Success&& successHandler,
                Failure&& failureHandler) {
    auto result = detail::encodingResult(value, encoder);
    if (result) {
        std::forward<Success>(successHandler)(*std::move(result));
    } else {
        std::forward<Failure>(failureHandler)(result.error());
    }
}

/// The JSON text of a dictionary, over several lines if `prettify`; absent when there is something in it that JSON does
/// not have (`JSONSerialization::isValidJSONObject`), as a date. Safe from any thread.
VORLAN_EXPORT std::optional<Data> prepareJSONData(const Value::Dictionary& dictionary, bool prettify);

/// The same as a text.
VORLAN_EXPORT std::optional<std::string> prepareJSONString(const Value::Dictionary& dictionary,
                                                           bool prettify);

/// Decodes a T from a dictionary, as `fromJSONData` would from its JSON text, always with a default decoder: `decoder` has
/// no influence, and is there for the likeness of the calls.
///
/// Calls `completionHandler` once with a `Result<T>`, on this thread, before it returns. When the dictionary has no JSON
/// text, the error is an NSError of code 100500 and the domain "Cannot decode response to " with T's name, without the
/// namespaces and classes that it stands in.
template <Decodable T, std::invocable<Result<T>> Handler>
void fromJSON(const Value::Dictionary& dictionary, [[maybe_unused]] const JSONDecoder& decoder,
              Handler&& completionHandler) {
    if (const auto data = prepareJSONData(dictionary, false)) {
        fromJSONData<T>(*data, JSONDecoder(), std::forward<Handler>(completionHandler));
    } else {
        const NSError error("Cannot decode response to " + detail::unqualifiedTypeName(typeid(T)), 100'500);
        std::forward<Handler>(completionHandler)(Result<T>(error));
    }
}

/// A type that says what is in it as a dictionary.
///
/// Threads: safe from any thread, as far as `dictionaryRepresentation` is.
/// Errors:  what `dictionaryRepresentation` throws passes.
class VORLAN_EXPORT EncodableType {
public:
    virtual ~EncodableType();

    /// The value as a dictionary.
    virtual Value::Dictionary dictionaryRepresentation() const = 0;

    /// The JSON text of that, on one line; absent when it has none.
    std::optional<Data> toJSONData() const;

    /// The same as a text.
    std::optional<std::string> toJSONString() const;

protected:
    EncodableType() = default;
    EncodableType(const EncodableType&) = default;
    EncodableType& operator=(const EncodableType&) = default;
};

/// A type that is made from a JSON dictionary.
template <class T>
concept JSONDecodable = std::constructible_from<T, const Value::Dictionary&>;

} // namespace vorlan
