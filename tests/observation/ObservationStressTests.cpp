// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Observation.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using namespace std::chrono_literals;

namespace {

struct Observer {
    virtual ~Observer() = default;
    virtual void changed() = 0;
};

struct Touching : Observer {
    void changed() override { ++calls; }
    std::atomic<int> calls = 0;
};

class Subject : public Observable<Observer> {
public:
    void tell() {
        notifyObservers([](Observer& observer) { observer.changed(); });
    }
};

// A place that several threads take objects from and put new ones into.
template <class Object>
class Place {
public:
    std::shared_ptr<Object> get() const {
        const std::lock_guard lock(mutex_);
        return object_;
    }
    std::shared_ptr<Object> exchange(std::shared_ptr<Object> object) {
        const std::lock_guard lock(mutex_);
        return std::exchange(object_, std::move(object));
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<Object> object_ = std::make_shared<Object>();
};

// Eight threads that do what `step` does, each with random numbers of its own, for two seconds.
void stress(const std::function<void(std::mt19937&)>& step) {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    const auto end = std::chrono::steady_clock::now() + 2s;
    std::vector<std::jthread> threads;
    for (unsigned t = 0; t < 8; ++t)
        threads.emplace_back([&step, end, random = std::mt19937(seed + t)]() mutable {
            while (std::chrono::steady_clock::now() < end)
                for (int i = 0; i < 32; ++i) step(random);
        });
}

} // namespace

TEST(ObservationStress, EightThreadsChangeWalkAndPurgeAWeakSet) {
    WeakSet<Observer> set;
    std::array<Place<Touching>, 32> places;
    std::atomic<std::size_t> seen = 0;
    stress([&](std::mt19937& random) {
        auto& place = places[random() % places.size()];
        switch (random() % 8) {
        case 0: set.insert(place.get()); break;
        case 1: set.remove(place.get()); break;
        case 2: place.exchange(std::make_shared<Touching>()); break;
        case 3: set.cleanup(); break;
        case 4: seen += set.allObjects().size(); break;
        case 5: seen += set.contains(place.get()) ? 1 : set.count(); break;
        case 6: set.forEachObject([](Observer& observer) { observer.changed(); }); break;
        default:
            for (const auto& observer : set) observer->changed();
        }
    });
    for (auto& place : places) set.insert(place.get());
    const auto alive = set.allObjects().size(); // which leaves no others in the set
    EXPECT_EQ(set.count(), alive);
    EXPECT_GT(seen, 0U);
}

TEST(ObservationStress, EightThreadsAddRemoveNotifyPurgeAndDestroyObserversAndTheirObject) {
    std::array<Place<Subject>, 2> subjects;
    std::array<Place<Touching>, 16> observers;
    std::array<Place<std::vector<Subject::Token>>, 8> tokens;
    std::atomic<std::size_t> seen = 0;
    stress([&](std::mt19937& random) {
        const auto subject = subjects[random() % subjects.size()].get();
        auto& observer = observers[random() % observers.size()];
        switch (random() % 12) {
        case 0:
        case 1:
        case 2: {
            auto kept =
                std::make_shared<std::vector<Subject::Token>>(1, subject->addObserver(observer.get()));
            const auto former = tokens[random() % tokens.size()].exchange(std::move(kept));
            for (const auto& token : *former) random() % 2 == 0 ? token->cancelAndWait() : token->cancel();
            break;
        }
        case 3: subject->removeObserver(observer.get()); break;
        case 4: observer.exchange(std::make_shared<Touching>()); break;
        case 5: subject->observerSet()->cleanup(); break;
        case 6: seen += subject->observerSet()->allObjects().size(); break;
        case 7: subject->notifyObservers<Touching>([](Touching& touching) { touching.changed(); }); break;
        case 8:
            if (random() % 64 == 0) subject->removeAllObservers();
            break;
        case 9:
            if (random() % 64 == 0)
                subjects[random() % subjects.size()].exchange(std::make_shared<Subject>());
            break;
        default: subject->tell();
        }
    });
    EXPECT_GT(seen, 0U);
}

TEST(ObservationStress, CallbacksDropTheObjectThatNotifiesThem) {
    struct Dropping : Observer {
        explicit Dropping(Place<Subject>& thePlace) : place(thePlace) {}
        void changed() override { place.exchange(std::make_shared<Subject>()); }
        Place<Subject>& place;
    };
    Place<Subject> place;
    const auto dropping = std::make_shared<Dropping>(place);
    stress([&](std::mt19937&) {
        const auto token = place.get()->addObserver(dropping);
        place.get()->tell();
    });
    EXPECT_NE(place.get(), nullptr);
}
