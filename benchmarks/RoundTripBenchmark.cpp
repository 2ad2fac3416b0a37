// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/RoundTripBenchmark.h"

#include "benchmarks/support/DispatchHandle.h"
#include "benchmarks/support/GThreadPoolHandle.h"
#include "benchmarks/support/Rows.h"
#include "benchmarks/support/Signal.h"

#include <VorlanFoundation/Platform/Queue.h>

#include <Poco/Runnable.h>
#include <Poco/ThreadPool.h>
#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QThreadPool>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>

#include <thread>

namespace vorlan::benchmarks {

namespace {

constexpr int threadsOfPools = 2;

/// The work: wakes the thread that waits for it.
struct Answer {
    Signal* answered;

    void operator()() const { answered->post(); }
};

template <class Submit>
void measure(benchmark::State& state, const Submit& submit) {
    Signal answered;
    for ([[maybe_unused]] auto _ : state) {
        submit(Answer{&answered});
        answered.wait();
    }
}

void measureBare(benchmark::State& state, dispatch_queue_t queue) {
    measure(state, [&](Answer answer) {
        dispatch_async_f(queue, answer.answered, [](void* signal) { static_cast<Signal*>(signal)->post(); });
    });
}

void measurePingPong(benchmark::State& state) {
    Signal ping, pong;
    bool isOver = false; // ordered by the signals
    std::thread other([&] {
        for (ping.wait(); !isOver; ping.wait()) pong.post();
    });
    for ([[maybe_unused]] auto _ : state) {
        ping.post();
        pong.wait();
    }
    isOver = true;
    ping.post();
    other.join();
}

/// Poco's pool takes objects that it does not own.
class PocoAnswer : public Poco::Runnable {
public:
    explicit PocoAnswer(Answer answer) : answer_(answer) {}
    void run() override { answer_(); }

private:
    Answer answer_;
};

// The pool has no queue: a thread that has answered, but is not idle again, would make the next start fail. So
// there are more threads than one answer needs.
void measurePoco(benchmark::State& state) {
    Poco::ThreadPool pool(threadsOfPools, 16);
    Signal answered;
    PocoAnswer answer(Answer{&answered});
    for ([[maybe_unused]] auto _ : state) {
        pool.start(answer);
        answered.wait();
    }
    pool.joinAll();
}

void addSerial() {
    static const DispatchHandle serial(DISPATCH_QUEUE_SERIAL);
    constexpr auto group = "round trip, serial queue";
    addThreadedRow(group, "floor: two threads and two semaphores", measurePingPong);
    addThreadedRow(group, "floor: dispatch_async_f",
                   [](benchmark::State& state) { measureBare(state, serial.get()); });
    addThreadedRow(group, "ours: Queue::async", [](benchmark::State& state) {
        const Queue queue("benchmark");
        measure(state, [&](Answer answer) { queue.async(answer); });
    });
    addThreadedRow(group, "peer: asio::strand", [](benchmark::State& state) {
        boost::asio::thread_pool pool(threadsOfPools);
        const auto strand = boost::asio::make_strand(pool.get_executor());
        measure(state, [&](Answer answer) { boost::asio::post(strand, answer); });
    });
}

void addGlobal() {
    constexpr auto group = "round trip, global queue";
    addThreadedRow(group, "floor: dispatch_async_f", [](benchmark::State& state) {
        measureBare(state, dispatch_get_global_queue(0x15, 0)); // the default quality of service, as ours
    });
    addThreadedRow(group, "ours: Queue::async", [](benchmark::State& state) {
        const auto& queue = Queue::global();
        measure(state, [&](Answer answer) { queue.async(answer); });
    });
    addThreadedRow(group, "peer: asio::thread_pool", [](benchmark::State& state) {
        boost::asio::thread_pool pool(threadsOfPools);
        measure(state, [&](Answer answer) { boost::asio::post(pool, answer); });
    });
    addThreadedRow(group, "peer: GThreadPool", [](benchmark::State& state) {
        GThreadPoolHandle<Answer> pool(threadsOfPools);
        measure(state, [&](Answer answer) { pool.push(answer); });
    });
    addThreadedRow(group, "peer: Poco::ThreadPool", measurePoco);
}

void addQt() {
    constexpr auto group = "round trip, global queue";
    addThreadedRow(group, "peer: QThreadPool::start", [](benchmark::State& state) {
        QThreadPool pool;
        pool.setMaxThreadCount(threadsOfPools);
        measure(state, [&](Answer answer) { pool.start(answer); });
    });
    addThreadedRow(group, "peer: QtConcurrent::run", [](benchmark::State& state) {
        QThreadPool pool;
        pool.setMaxThreadCount(threadsOfPools);
        measure(state, [&](Answer answer) { static_cast<void>(QtConcurrent::run(&pool, answer)); });
    });
}

} // namespace

void addRoundTripRows() {
    addSerial();
    addGlobal();
    addQt();
}

} // namespace vorlan::benchmarks
