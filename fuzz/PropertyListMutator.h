// SPDX-License-Identifier: Apache-2.0
#pragma once

// Changes binary property lists so that most stay lists: blind changes would nearly all be refused at the first look.

#include <VorlanFoundation/Platform/Data.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// The engine's own changes: bits, bytes, insertions and the like.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

/// What the engine asks for changes, which a target may define.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed);

namespace fuzzing {

/// Changes a list in place, in the engine's way, and mends its start and trailer afterwards, but for now and then.
/// What is too short to be a list is replaced by one of the samples. Returns the new size.
std::size_t mutateList(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed,
                       const std::vector<vorlan::Data>& samples);

} // namespace fuzzing
