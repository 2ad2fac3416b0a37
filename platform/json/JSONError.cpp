// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/JSONError.h>

#include <utility>

namespace vorlan {
namespace {

std::string sentence(const std::string& path, const std::string& message,
                     std::optional<std::size_t> byteOffset) {
    auto text = path + ": " + message;
    if (byteOffset) text += " (at byte " + std::to_string(*byteOffset) + ")";
    return text;
}

} // namespace

JSONError::JSONError(Kind kind, std::string message, std::string path, std::optional<std::size_t> byteOffset)
    : NSError("VorlanFoundation.JSONError", static_cast<std::int64_t>(kind),
              {{"NSLocalizedDescription", sentence(path, message, byteOffset)}}),
      kind_(kind),
      message_(std::move(message)),
      path_(std::move(path)),
      byteOffset_(byteOffset) {}

JSONError::JSONError(const JSONError&) = default;
JSONError& JSONError::operator=(const JSONError&) = default;
JSONError::~JSONError() = default;

} // namespace vorlan
