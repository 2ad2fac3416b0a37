// SPDX-License-Identifier: Apache-2.0
// What encoding and decoding are for every type: failures of a host's own coding become errors like all others.

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <exception>

namespace vorlan {
namespace {

template <class Coder>
void guard(const Coder& coder, FunctionRef<void()> code) {
    try {
        code();
    } catch (const JSONError&) {
        throw;
    } catch (const std::exception& error) {
        coder.fail(error.what());
    } catch (...) {
        coder.fail("the type's own coding threw an exception that is no std::exception");
    }
}

} // namespace

void JSONEncoder::write(JSONWriter& writer, FunctionRef<void()> encode) {
    guard(writer, encode);
}

void JSONDecoder::read(std::string_view text, FunctionRef<void(JSONReader&)> decode) const {
    JSONReader reader(text, {strategies, unknownMembers, maximumDepth, maximumSize});
    guard(reader, [&] {
        decode(reader);
        reader.finish();
    });
}

} // namespace vorlan
