// SPDX-License-Identifier: Apache-2.0

// What it costs to hand work over and have it run elsewhere: submitting much of it, and going there and back.
//
// Best pinned to one processor, where waking a thread is a context switch: between processors it takes up to
// twenty times as long, and differs from run to run by more than any two rows differ.

#include "benchmarks/RoundTripBenchmark.h"
#include "benchmarks/support/Allocations.h"
#include "benchmarks/support/DispatchHandle.h"
#include "benchmarks/support/GThreadPoolHandle.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Platform/Queue.h>

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QThreadPool>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include <memory>
#include <string>

namespace vorlan::benchmarks {

namespace {

constexpr int threadsOfPools = 2;

/// The work: two words, as the smallest real closures have.
struct Piece {
    Batch* batch;
    std::size_t pieces;

    void operator()() const { batch->finish(pieces); }
};

using SubmitFunction = void (*)(dispatch_queue_t, void*, dispatch_function_t);

/// The time per piece of submitting a batch and waiting until all of it ran.
template <class Submit>
void measure(benchmark::State& state, const Submit& submit) {
    Batch batch;
    std::size_t allocations = 0;
    while (state.KeepRunningBatch(Batch::size)) {
        batch.begin();
        const auto before = allocationCount();
        for (std::size_t i = 0; i < Batch::size; ++i) submit(Piece{&batch, 1});
        allocations += allocationCount() - before;
        batch.wait();
    }
    state.counters["allocations"] =
        static_cast<double>(allocations) / static_cast<double>(state.iterations());
}

void measureBare(benchmark::State& state, dispatch_queue_t queue, SubmitFunction submit) {
    measure(state, [&](Piece piece) {
        submit(queue, piece.batch, [](void* batch) { static_cast<Batch*>(batch)->finish(1); });
    });
}

void measureBoxed(benchmark::State& state, dispatch_queue_t queue, SubmitFunction submit) {
    measure(state, [&](Piece piece) {
        submit(queue, new Piece(piece), [](void* context) {
            const std::unique_ptr<Piece> box(static_cast<Piece*>(context));
            (*box)();
        });
    });
}

dispatch_queue_t globalQueue() {
    return dispatch_get_global_queue(0x15, 0); // the default quality of service, as ours
}

void addFloors(const std::string& group, dispatch_queue_t queue, SubmitFunction submit, const char* name) {
    addThreadedRow(group, std::string("floor: ") + name,
                   [=](benchmark::State& state) { measureBare(state, queue, submit); });
    addThreadedRow(group, std::string("floor: ") + name + " with a boxed closure",
                   [=](benchmark::State& state) { measureBoxed(state, queue, submit); });
}

void addEngine() {
    static const DispatchHandle concurrent(DISPATCH_QUEUE_CONCURRENT);
    static const DispatchHandle serial(DISPATCH_QUEUE_SERIAL);
    addFloors("submit, concurrent queue", concurrent.get(), dispatch_async_f, "dispatch_async_f");
    addFloors("submit, global queue", globalQueue(), dispatch_async_f, "dispatch_async_f");
    addFloors("submit, serial queue", serial.get(), dispatch_async_f, "dispatch_async_f");
    addFloors("submit, barrier", concurrent.get(), dispatch_barrier_async_f, "dispatch_barrier_async_f");
}

void addOurs() {
    addThreadedRow("submit, concurrent queue", "ours: Queue::async", [](benchmark::State& state) {
        const Queue queue("benchmark", Queue::concurrent);
        measure(state, [&](Piece piece) { queue.async(piece); });
    });
    addThreadedRow("submit, global queue", "ours: Queue::async", [](benchmark::State& state) {
        const auto& queue = Queue::global();
        measure(state, [&](Piece piece) { queue.async(piece); });
    });
    addThreadedRow("submit, serial queue", "ours: Queue::async", [](benchmark::State& state) {
        const Queue queue("benchmark");
        measure(state, [&](Piece piece) { queue.async(piece); });
    });
    addThreadedRow("submit, barrier", "ours: Queue::barrierAsync", [](benchmark::State& state) {
        const Queue queue("benchmark", Queue::concurrent);
        measure(state, [&](Piece piece) { queue.barrierAsync(piece); });
    });
}

void addQt() {
    addThreadedRow("submit, concurrent queue", "peer: QtConcurrent::run", [](benchmark::State& state) {
        QThreadPool pool;
        pool.setMaxThreadCount(threadsOfPools);
        measure(state, [&](Piece piece) { static_cast<void>(QtConcurrent::run(&pool, piece)); });
    });
    addThreadedRow("submit, concurrent queue", "peer: QThreadPool::start", [](benchmark::State& state) {
        QThreadPool pool;
        pool.setMaxThreadCount(threadsOfPools);
        measure(state, [&](Piece piece) { pool.start(piece); });
    });
}

void addGLib() {
    addThreadedRow("submit, concurrent queue", "peer: GThreadPool", [](benchmark::State& state) {
        GThreadPoolHandle<Piece> pool(threadsOfPools);
        measure(state, [&](Piece piece) { pool.push(piece); });
    });
}

void addBoost() {
    addThreadedRow("submit, concurrent queue", "peer: asio::thread_pool", [](benchmark::State& state) {
        boost::asio::thread_pool pool(threadsOfPools);
        measure(state, [&](Piece piece) { boost::asio::post(pool, piece); });
    });
    addThreadedRow("submit, serial queue", "peer: asio::strand", [](benchmark::State& state) {
        boost::asio::thread_pool pool(threadsOfPools);
        const auto strand = boost::asio::make_strand(pool.get_executor());
        measure(state, [&](Piece piece) { boost::asio::post(strand, piece); });
    });
}

void addTbb() {
    addThreadedRow("submit, concurrent queue", "note: TBB task_arena::enqueue", [](benchmark::State& state) {
        // The measuring thread takes no part, so that all work is handed over; and a process that is pinned to one
        // processor may have workers all the same.
        constexpr auto parallelism = tbb::global_control::max_allowed_parallelism;
        const tbb::global_control control(parallelism, threadsOfPools + 1);
        tbb::task_arena arena(threadsOfPools, 0);
        measure(state, [&](Piece piece) { arena.enqueue(piece); });
    });
}

} // namespace

} // namespace vorlan::benchmarks

int main(int argc, char** argv) {
    using namespace vorlan::benchmarks;
    addEngine();
    addOurs();
    addQt();
    addGLib();
    addBoost();
    addTbb();
    addRoundTripRows();
    return runRows(argc, argv);
}
