// SPDX-License-Identifier: Apache-2.0

// What timers cost: one that comes and goes, a call that puts off what is pending, and how late one fires.

#include "benchmarks/ArmingBenchmark.h"
#include "benchmarks/DebounceBenchmark.h"
#include "benchmarks/FiringBenchmark.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <QtCore/QCoreApplication>

#include <thread>

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    // With a second thread in the process, if only a sleeping one, reference counts are atomic: as in any
    // application.
    Signal isOver;
    std::thread bystander([&] { isOver.wait(); });
    int qtArgc = 1; // Qt has no say in the options, and holds on to the count
    const QCoreApplication application(qtArgc, argv); // Qt's timers need it
    addArmingRows();
    addDebounceRows();
    addFiringRows();
    const int status = runRows(argc, argv);
    isOver.post();
    bystander.join();
    return status;
}
