// SPDX-License-Identifier: Apache-2.0
#include "platform/values/ExceptionStop.h"

#include <VorlanFoundation/Platform/FatalError.h>

#include <exception>
#include <string>

namespace vorlan {

namespace {

std::string textOfCurrentException() {
    try {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "not a std::exception";
    }
}

} // namespace

void stopForException(std::string_view source, std::string_view where) {
    fatalError("an exception left " + std::string(source) + ": " + textOfCurrentException(), where);
}

} // namespace vorlan
