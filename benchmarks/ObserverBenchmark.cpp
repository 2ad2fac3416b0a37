// SPDX-License-Identifier: Apache-2.0

// What it costs to tell observers of something, and to come and go as an observer.

#include "benchmarks/NotifyBenchmark.h"
#include "benchmarks/RegistrationBenchmark.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <thread>

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    // With a second thread in the process, if only a sleeping one, reference counts are atomic: as in any
    // application.
    Signal isOver;
    std::thread bystander([&] { isOver.wait(); });
    addNotifyRows();
    addRegistrationRows();
    const int status = runRows(argc, argv);
    isOver.post();
    bystander.join();
    return status;
}
