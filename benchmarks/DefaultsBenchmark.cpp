// SPDX-License-Identifier: Apache-2.0

// What the user's settings cost: to set and read, to bring to the disk, and to turn into bytes and back.

#include "benchmarks/DefaultsCodecBenchmark.h"
#include "benchmarks/DefaultsMemoryBenchmark.h"
#include "benchmarks/DefaultsSavingBenchmark.h"
#include "benchmarks/support/DiskHome.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <thread>

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    const DiskHome home;
    // With a second thread in the process, if only a sleeping one, reference counts are atomic: as in any
    // application.
    Signal isOver;
    std::thread bystander([&] { isOver.wait(); });
    addDefaultsMemoryRows(home.path());
    addDefaultsSavingRows(home.path());
    addDefaultsCodecRows();
    const int status = runRows(argc, argv);
    isOver.post();
    bystander.join();
    return status;
}
