// SPDX-License-Identifier: Apache-2.0

// What a record of ten members costs to write as JSON and to read.

#include "benchmarks/JSONBenchmarkCodecs.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/SampleRecords.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <malloc.h>

#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace vorlan::benchmarks {

VORLAN_CODABLE(Position, latitude, longitude)
VORLAN_CODABLE(Record, id, name, email, isActive, visits, balance, rating, note, tags, position)

namespace {

constexpr auto writing = "write a record of ten members as JSON";
constexpr auto reading = "read a record of ten members from JSON";

/// Times are of one record: all are written in one go, and counted.
template <class Encode>
void addWriting(const std::string& name, const Encode& encode) {
    addRow(writing, name, [=](benchmark::State& state) {
        if (JSONDecoder().decode<Records>(encode(sampleRecords())) != sampleRecords())
            state.SkipWithError("wrote something else");
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(sampleRecordCount))) {
            auto text = encode(sampleRecords());
            benchmark::DoNotOptimize(text.data());
        }
    });
}

template <class Decode>
void addReading(const std::string& name, const Decode& decode) {
    addRow(reading, name, [=](benchmark::State& state) {
        const auto text = encodeByHand(sampleRecords());
        if (decode(text) != sampleRecords()) state.SkipWithError("read something else");
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(sampleRecordCount))) {
            auto records = decode(text);
            benchmark::DoNotOptimize(records.data());
        }
    });
}

// Its hosts have texts of its own kind in their records, so making these is no part of the time.
void addQtWriting() {
    addRow(writing, "peer: QJsonDocument", [](benchmark::State& state) {
        const auto records = qtRecords(sampleRecords());
        if (JSONDecoder().decode<Records>(encodeByQt(records).toStdString()) != sampleRecords())
            state.SkipWithError("wrote something else");
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(sampleRecordCount))) {
            auto text = encodeByQt(records);
            benchmark::DoNotOptimize(text.data());
        }
    });
}

void addQtReading() {
    addRow(reading, "peer: QJsonDocument", [](benchmark::State& state) {
        const auto text = encodeByHand(sampleRecords());
        if (recordsOf(decodeByQt(text)) != sampleRecords()) state.SkipWithError("read something else");
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(sampleRecordCount))) {
            auto records = decodeByQt(text);
            benchmark::DoNotOptimize(records.data());
        }
    });
}

void addRows() {
    addWriting("floor: by hand, std::to_chars", encodeByHand);
    addWriting("ours: JSONEncoder", [](const Records& records) { return JSONEncoder().encode(records); });
    addWriting("ours: JSONEncoder, sorted keys",
               [](const Records& records) { return JSONEncoder{.sortedKeys = true}.encode(records); });
    addWriting("peer: RapidJSON, Writer", encodeByRapidJSON);
    addWriting("peer: nlohmann, by its macro", encodeByNlohmann);
    addQtWriting();
    addWriting("peer: Poco::JSON", encodeByPoco);

    addReading("floor: by hand, simdjson on demand", decodeOnDemand);
    addReading("floor: by hand, std::from_chars", decodeByHand);
    addReading("ours: JSONDecoder",
               [](std::string_view text) { return JSONDecoder().decode<Records>(text); });
    addReading("peer: RapidJSON, Document", decodeByRapidJSON);
    addReading("peer: nlohmann, by its macro", decodeByNlohmann);
    addQtReading();
    addReading("peer: Poco::JSON", decodeByPoco);
}

/// Memory that a row gives back stays with the process for the next: else the kernel's pages would be measured, of which
/// one row gets more than another by chance.
void keepMemory() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20); // the most that it takes
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

} // namespace

void addJSONRows() {
    keepMemory();
    addRows();
}

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    // With a second thread in the process, if only a sleeping one, reference counts are atomic: as in any
    // application.
    Signal isOver;
    std::thread bystander([&] { isOver.wait(); });
    addJSONRows();
    const int status = runRows(argc, argv);
    isOver.post();
    bystander.join();
    return status;
}
