// SPDX-License-Identifier: Apache-2.0
#include "fuzz/PropertyListMutator.h"

#include "platform/files/BinaryPropertyList.h"

#include <algorithm>
#include <cstring>

namespace fuzzing {

namespace {

using namespace vorlan::bplist;

constexpr std::size_t smallestList = magic.size() + trailer::size + 2;

std::uint64_t fieldAt(const std::uint8_t* field) {
    std::uint64_t number = 0;
    for (int i = 0; i < 8; ++i) number = (number << 8) | field[i];
    return number;
}

void setField(std::uint8_t* field, std::uint64_t number) {
    for (int i = 8; i-- > 0; number >>= 8) field[i] = static_cast<std::uint8_t>(number);
}

// Makes the fields fit the size, and leaves them where they do.
void mend(std::uint8_t* data, std::size_t size) {
    std::memcpy(data, magic.data(), magic.size());
    auto* const end = data + size - trailer::size;
    std::memset(end, 0, trailer::checksumLength);
    for (auto* const field : {end + trailer::offsetSize, end + trailer::referenceSize})
        if (*field < 1 || *field > 8) *field = 1;
    const std::size_t room = size - trailer::size;
    if (const auto place = fieldAt(end + trailer::tableOffset); place <= magic.size() || place >= room)
        setField(end + trailer::tableOffset, std::max(room * 3 / 4, magic.size() + 1));
    const auto most = (room - fieldAt(end + trailer::tableOffset)) / end[trailer::offsetSize];
    if (fieldAt(end + trailer::objectCount) > most) setField(end + trailer::objectCount, most);
    const auto count = fieldAt(end + trailer::objectCount);
    if (fieldAt(end + trailer::rootObject) >= count) setField(end + trailer::rootObject, 0);
}

} // namespace

std::size_t mutateList(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed,
                       const std::vector<vorlan::Data>& samples) {
    if (size < smallestList) {
        const auto& sample = samples[seed % samples.size()];
        if (sample.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
        std::memcpy(data, sample.data(), sample.size());
        return sample.size();
    }
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (size >= smallestList && seed % 16 != 0) mend(data, size);
    return size;
}

} // namespace fuzzing
