// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/DefaultsCodecBenchmark.h"

#include "benchmarks/support/Rows.h"
#include "benchmarks/support/SampleEntries.h"
#include "platform/files/PropertyList.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace vorlan::benchmarks {

namespace {

constexpr auto writing = "write 100 settings as a property list";
constexpr auto reading = "read 100 settings of a property list";

void freeNode(void* node) {
    plist_free(node);
}

using Node = std::unique_ptr<void, decltype(&freeNode)>;
using Text = std::unique_ptr<char, decltype(&std::free)>;

plist_t nodeOf(const Value& value) {
    if (const auto* text = value.text()) return plist_new_string(text->c_str());
    if (value.kind() == Value::Kind::boolean) return plist_new_bool(value.as<bool>().value_or(false) ? 1 : 0);
    if (value.kind() == Value::Kind::integer) return plist_new_uint(value.as<std::uint64_t>().value_or(0));
    return plist_new_real(value.as<double>().value_or(0));
}

Node sampleTree() {
    Node tree(plist_new_dict(), freeNode);
    for (const auto& [key, value] : sampleEntries())
        plist_dict_set_item(tree.get(), key.c_str(), nodeOf(value));
    return tree;
}

Value valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t boolean = 0;
        plist_get_bool_val(node, &boolean);
        return boolean != 0;
    }
    case PLIST_UINT: {
        std::uint64_t integer = 0;
        plist_get_uint_val(node, &integer);
        return integer;
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return number;
    }
    case PLIST_STRING: {
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return std::string(text, length);
    }
    default: throw std::runtime_error("libplist read what was not written");
    }
}

Value::Dictionary dictionaryOf(plist_t tree) {
    Value::Dictionary entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(tree, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> owner(iterator, std::free);
    for (;;) {
        char* key = nullptr;
        plist_t node = nullptr;
        plist_dict_next_item(tree, iterator, &key, &node);
        if (node == nullptr) return entries;
        const Text ownedKey(key, std::free);
        entries.emplace(key, valueOf(node));
    }
}

Value::Dictionary readByLibplist(const Data& bytes) {
    plist_t tree = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()),
                   &tree);
    const Node owner(tree, freeNode);
    return dictionaryOf(tree);
}

void measureCopy(benchmark::State& state) {
    const auto entries = sampleEntries();
    for ([[maybe_unused]] auto _ : state) {
        auto copy = entries;
        benchmark::DoNotOptimize(copy);
    }
}

void addWriting() {
    addRow(writing, "floor: copying the map", measureCopy);
    addRow(writing, "ours: writeBinaryPropertyList", [](benchmark::State& state) {
        const Value list = sampleEntries();
        for ([[maybe_unused]] auto _ : state) {
            auto bytes = writeBinaryPropertyList(list);
            benchmark::DoNotOptimize(bytes.data());
        }
    });
    addRow(writing, "peer: libplist, of a tree of its own", [](benchmark::State& state) {
        const auto tree = sampleTree();
        for ([[maybe_unused]] auto _ : state) {
            char* bytes = nullptr; // or it writes nothing
            std::uint32_t length = 0;
            plist_to_bin(tree.get(), &bytes, &length);
            if (length == 0) state.SkipWithError("libplist wrote nothing");
            plist_to_bin_free(bytes);
        }
    });
}

void addReading() {
    addRow(reading, "floor: copying the map", measureCopy);
    addRow(reading, "ours: readBinaryPropertyList", [](benchmark::State& state) {
        const auto bytes = writeBinaryPropertyList(sampleEntries());
        if (readBinaryPropertyList(bytes) != Value(sampleEntries())) state.SkipWithError("read otherwise");
        for ([[maybe_unused]] auto _ : state) {
            auto list = readBinaryPropertyList(bytes);
            benchmark::DoNotOptimize(list);
        }
    });
    addRow(reading, "peer: libplist, into a map", [](benchmark::State& state) {
        const auto bytes = writeBinaryPropertyList(sampleEntries());
        if (readByLibplist(bytes) != sampleEntries()) state.SkipWithError("read otherwise");
        for ([[maybe_unused]] auto _ : state) {
            auto list = readByLibplist(bytes);
            benchmark::DoNotOptimize(list);
        }
    });
}

} // namespace

void addDefaultsCodecRows() {
    addWriting();
    addReading();
}

} // namespace vorlan::benchmarks
