// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONWriterSorting.h"

#include "platform/json/JSONEscaping.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

namespace vorlan {
namespace {

void takeMembers(JSONWriterStorage& storage, std::size_t firstMember, std::size_t separatorLength) {
    const auto starts = std::span(storage.memberStarts).subspan(firstMember);
    storage.members.clear();
    for (std::size_t index = 0; index + 1 < starts.size(); ++index)
        storage.members.push_back({starts[index], starts[index + 1] - separatorLength});
    if (!starts.empty()) storage.members.push_back({starts.back(), storage.text.size()});
    storage.memberStarts.resize(firstMember);
}

// Writes them one after another, and the whole over what was there: it is as long.
void rearrange(JSONWriterStorage& storage, std::size_t begin, std::string_view separator) {
    auto& sorted = storage.sorted;
    sorted.clear();
    for (const auto& member : storage.members) {
        if (sorted.size() != 0) sorted.append(separator);
        sorted.append(storage.text.text().substr(member.begin, member.end - member.begin));
    }
    std::memcpy(storage.text.data() + begin, sorted.data(), sorted.size());
}

} // namespace

void sortMembers(JSONWriterStorage& storage, std::size_t firstMember, std::size_t separatorLength) {
    takeMembers(storage, firstMember, separatorLength);
    auto& members = storage.members;
    if (members.size() < 2) return;
    const char* const text = storage.text.data();
    const auto comesFirst = [&](const JSONWriterMember& member, const JSONWriterMember& other) {
        const char* const name = text + member.begin + 1;
        const char* const otherName = text + other.begin + 1;
        if (escaping::isBefore(name, otherName)) return true;
        return member.begin < other.begin && !escaping::isBefore(otherName, name);
    };
    if (std::ranges::is_sorted(members, comesFirst)) return;
    const auto begin = members.front().begin;
    const auto separator = storage.text.text().substr(members.front().end, separatorLength);
    std::ranges::sort(members, comesFirst);
    rearrange(storage, begin, separator);
}

} // namespace vorlan
