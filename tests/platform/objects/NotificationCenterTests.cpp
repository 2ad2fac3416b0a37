// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Platform/NotificationCenter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace vorlan;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const NotificationName saved("com.example.saved");
const NotificationName closed("com.example.closed");

using Log = std::vector<std::string>;

class Document : public virtual Object {};

// Hears of notifications by its members, each of which writes its own line.
class Window : public Object {
public:
    explicit Window(Log& log, std::string title = "window") : log_(log), title_(std::move(title)) {}

    void didSave(const Notification&) { log_.push_back(title_ + " saved"); }
    void didAnything(const Notification& notification) {
        log_.push_back(title_ + " " + notification.name.rawValue());
    }

private:
    Log& log_;
    std::string title_;
};

// Writes the text at each notification.
NotificationCenter::Handler writeInto(Log& log, std::string text) {
    return [&log, text = std::move(text)](const Notification&) { log.push_back(text); };
}

} // namespace

TEST(NotificationName, IsEqualToOneOfTheSameText) {
    EXPECT_EQ(saved.rawValue(), "com.example.saved");
    EXPECT_EQ(saved, NotificationName("com.example.saved"));
    EXPECT_NE(saved, closed);
}

TEST(NotificationCenter, TellsAHandlerOfTheNameThatItAskedForWithAllThatWasPosted) {
    const NotificationCenter center;
    const auto document = std::make_shared<Document>();
    std::vector<Notification> told;
    const auto observation =
        center.addObserver({.name = saved}, [&](const Notification& n) { told.push_back(n); });
    center.post({.name = closed, .object = document});
    center.post({.name = saved, .object = document, .userInfo = {{"bytes", 12}}});
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].name, saved);
    EXPECT_EQ(told[0].object, document);
    EXPECT_EQ(told[0].userInfo, (Value::Dictionary{{"bytes", 12}}));
}

TEST(NotificationCenter, TellsAnObserverByItsMemberFunction) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    center.addObserver(window, &Window::didSave, {.name = saved});
    center.addObserver(window, &Window::didAnything);
    center.post({.name = closed});
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("window com.example.closed", "window saved", "window com.example.saved"));
}

TEST(NotificationCenter, TellsAnObserverByAMemberFunctionOfABase) {
    struct Titled {
        std::string title = "panel";
    };
    struct Panel : Titled, Window {
        using Window::Window;
    };
    const NotificationCenter center;
    Log log;
    const auto panel = std::make_shared<Panel>(log, "panel");
    center.addObserver(panel, &Panel::didSave);
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("panel saved"));
}

TEST(NotificationCenter, FilterWithoutANameIsForAllNamesAndWithoutAnObjectForAllObjectsAndNone) {
    const NotificationCenter center;
    Log log;
    const auto all = center.addObserver({}, writeInto(log, "all"));
    const auto ofName = center.addObserver({.name = saved}, writeInto(log, "saved"));
    center.post({.name = saved});
    center.post({.name = saved, .object = std::make_shared<Document>()});
    center.post({.name = closed});
    EXPECT_THAT(log, ElementsAre("all", "saved", "all", "saved", "all"));
}

TEST(NotificationCenter, FilterWithAnObjectIsForThoseOfThatObjectOnly) {
    const NotificationCenter center;
    const auto mine = std::make_shared<Document>();
    Log log;
    const auto anyName = center.addObserver({.object = mine}, writeInto(log, "mine"));
    const auto both = center.addObserver({.name = saved, .object = mine}, writeInto(log, "mine saved"));
    center.post({.name = saved, .object = std::make_shared<Document>()});
    center.post({.name = saved});
    EXPECT_THAT(log, IsEmpty());
    center.post({.name = closed, .object = mine});
    center.post({.name = saved, .object = mine});
    EXPECT_THAT(log, ElementsAre("mine", "mine", "mine saved"));
}

TEST(NotificationCenter, FilterDoesNotTakeAPartOfAnObjectForTheWhole) {
    struct Book : Document {
        Document index;
    };
    const NotificationCenter center;
    const auto book = std::make_shared<Book>();
    const std::shared_ptr<Document> index(book, &book->index);
    Log log;
    const auto ofIndex = center.addObserver({.object = index}, writeInto(log, "index"));
    center.post({.name = saved, .object = book});
    EXPECT_THAT(log, IsEmpty());
    center.post({.name = saved, .object = index});
    EXPECT_THAT(log, ElementsAre("index"));
}

TEST(NotificationCenter, NewObjectAtTheAddressOfADeadOneIsNotTakenForIt) {
    alignas(Document) std::byte place[sizeof(Document)];
    const auto make = [&] {
        return std::shared_ptr<Document>(new (place) Document,
                                         [](Document* document) { document->~Document(); });
    };
    const NotificationCenter center;
    Log log;
    auto document = make();
    const auto* const address = document.get();
    const auto observation = center.addObserver({.object = document}, writeInto(log, "told"));
    center.post({.name = saved, .object = document});
    document.reset();
    document = make();
    ASSERT_EQ(document.get(), address);
    center.post({.name = saved, .object = document});
    EXPECT_THAT(log, ElementsAre("told"));
}

TEST(NotificationCenter, OnceTheObjectOfAFilterIsGoneTheRegistrationHearsOfNothing) {
    const NotificationCenter center;
    Log log;
    auto document = std::make_shared<Document>();
    const std::weak_ptr<Document> weak = document;
    const auto observation = center.addObserver({.object = document}, writeInto(log, "told"));
    document.reset();
    EXPECT_TRUE(weak.expired()) << "the center keeps it alive";
    center.post({.name = saved});
    center.post({.name = saved, .object = std::make_shared<Document>()});
    EXPECT_THAT(log, IsEmpty());
}

TEST(NotificationCenter, ObserversAreCalledInTheOrderInWhichTheyWereAdded) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    const auto first = center.addObserver({.name = saved}, writeInto(log, "1"));
    auto second = center.addObserver({}, writeInto(log, "2"));
    center.addObserver(window, &Window::didSave, {.name = saved});
    const auto third = center.addObserver({}, writeInto(log, "3"));
    second = center.addObserver({.name = saved}, writeInto(log, "4"));
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("1", "window saved", "3", "4"));
}

TEST(NotificationCenter, ObserversAreCalledOnTheThreadThatPostsBeforePostReturns) {
    const NotificationCenter center;
    std::thread::id calledOn;
    const auto observation =
        center.addObserver({}, [&](const Notification&) { calledOn = std::this_thread::get_id(); });
    std::thread::id postedOn;
    std::thread::id seen;
    std::jthread([&] {
        postedOn = std::this_thread::get_id();
        center.post({.name = saved});
        seen = calledOn;
    }).join();
    EXPECT_EQ(seen, postedOn);
}

TEST(NotificationCenter, HoldsNoLockWhileItCalls) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    const auto observation = center.addObserver({.name = saved}, [&](const Notification&) {
        std::jthread([&] {
            const auto other = center.addObserver({.name = closed}, writeInto(log, "other"));
            center.addObserver(window, &Window::didSave);
            center.post({.name = closed});
            center.removeObserverAndWait(window);
        }).join();
    });
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("other", "window saved"));
}

TEST(NotificationCenter, DestroysHandlersWithoutALock) {
    struct Goodbye {
        ~Goodbye() { center.post({.name = closed}); }
        const NotificationCenter& center;
    };
    const NotificationCenter center;
    Log log;
    const auto observation = center.addObserver({.name = closed}, writeInto(log, "closed"));
    auto first =
        center.addObserver({}, [goodbye = std::make_shared<Goodbye>(center)](const Notification&) {});
    first.invalidate();
    EXPECT_THAT(log, ElementsAre("closed"));
    auto second = std::make_unique<NotificationObservation>();
    *second = center.addObserver({.name = saved}, [goodbye = std::make_shared<Goodbye>(center),
                                                   &second](const Notification&) { second.reset(); });
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("closed", "closed"));
}

TEST(NotificationCenter, WhatIsAddedDuringAPostHearsOfTheNext) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    std::vector<NotificationObservation> added;
    const auto observation = center.addObserver({}, [&](const Notification&) {
        if (!added.empty()) return;
        added.push_back(center.addObserver({}, writeInto(log, "added")));
        center.addObserver(window, &Window::didSave);
    });
    center.post({.name = saved});
    EXPECT_THAT(log, IsEmpty());
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("added", "window saved"));
}

TEST(NotificationCenter, WhatIsRemovedDuringAPostIsNotCalledAnyMore) {
    const NotificationCenter center;
    Log log;
    const auto window = std::make_shared<Window>(log);
    NotificationObservation later;
    const auto observation = center.addObserver({}, [&](const Notification&) {
        later.invalidate();
        center.removeObserver(window);
        log.push_back("first");
    });
    later = center.addObserver({}, writeInto(log, "later"));
    center.addObserver(window, &Window::didSave);
    const auto last = center.addObserver({}, writeInto(log, "last"));
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("first", "last"));
}

TEST(NotificationCenter, HandlerMayPost) {
    const NotificationCenter center;
    Log log;
    const auto first = center.addObserver({.name = saved}, [&](const Notification&) {
        log.push_back("saved");
        center.post({.name = closed});
    });
    const auto second =
        center.addObserver({}, [&](const Notification& n) { log.push_back(n.name.rawValue()); });
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("saved", "com.example.closed", "com.example.saved"));
}

TEST(NotificationCenter, HandlerMayDropTheCenter) {
    auto center = std::make_unique<NotificationCenter>();
    Log log;
    const auto first = center->addObserver({}, [&](const Notification&) { center.reset(); });
    const auto second = center->addObserver({}, writeInto(log, "second"));
    center->post({.name = saved});
    EXPECT_EQ(center, nullptr);
    EXPECT_THAT(log, ElementsAre("second"));
}

TEST(NotificationCenter, HoldsAnObserverOnlyWhileItIsBeingCalled) {
    struct Counting {
        void hear(const Notification&) { owners = self.use_count(); }
        std::weak_ptr<Counting> self;
        long owners = 0;
    };
    const NotificationCenter center;
    const auto observer = std::make_shared<Counting>();
    observer->self = observer;
    center.addObserver(observer, &Counting::hear);
    EXPECT_EQ(observer.use_count(), 1);
    center.post({.name = saved});
    EXPECT_EQ(observer->owners, 2);
    EXPECT_EQ(observer.use_count(), 1);
}

TEST(NotificationCenter, ObserverMayDropTheLastReferenceToItself) {
    struct Leaving {
        explicit Leaving(Log& theLog) : log(theLog) {}
        ~Leaving() { log.push_back("gone"); }
        void hear(const Notification&) {
            self.reset();
            log.push_back("heard");
        }
        Log& log;
        std::shared_ptr<Leaving> self;
    };
    const NotificationCenter center;
    Log log;
    auto leaving = std::make_shared<Leaving>(log);
    center.addObserver(leaving, &Leaving::hear);
    leaving->self = std::move(leaving);
    const auto later = center.addObserver({}, writeInto(log, "later"));
    center.post({.name = saved});
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("heard", "gone", "later", "later"));
}

TEST(NotificationCenter, ObserverThatIsGoneIsNotCalled) {
    const NotificationCenter center;
    Log log;
    auto first = std::make_shared<Window>(log, "first");
    const auto second = std::make_shared<Window>(log, "second");
    center.addObserver(first, &Window::didSave);
    center.addObserver(second, &Window::didSave);
    first.reset();
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("second saved"));
}

TEST(NotificationCenter, ExceptionOfAHandlerLeavesPostAndLaterObserversAreNotTold) {
    const NotificationCenter center;
    Log log;
    const auto first = center.addObserver({}, writeInto(log, "first"));
    auto angry = center.addObserver({}, [](const Notification&) { throw std::runtime_error("no"); });
    const auto last = center.addObserver({}, writeInto(log, "last"));
    EXPECT_THROW(center.post({.name = saved}), std::runtime_error);
    EXPECT_THAT(log, ElementsAre("first"));
    angry.invalidateAndWait();
    center.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("first", "first", "last"));
}

TEST(NotificationCenter, CopiesAreHandlesOfTheSameCenter) {
    const NotificationCenter center;
    const NotificationCenter copy = center;
    Log log;
    const auto observation = center.addObserver({}, writeInto(log, "told"));
    copy.post({.name = saved});
    EXPECT_THAT(log, ElementsAre("told"));
    EXPECT_EQ(center, copy);
    EXPECT_NE(center, NotificationCenter());
}

TEST(NotificationCenter, DefaultCenterIsTheSameEverywhere) {
    Log log;
    const auto observation = NotificationCenter::default_().addObserver({}, writeInto(log, "told"));
    std::jthread([] { NotificationCenter::default_().post({.name = saved}); }).join();
    EXPECT_THAT(log, ElementsAre("told"));
    EXPECT_EQ(NotificationCenter::default_(), NotificationCenter::default_());
    EXPECT_NE(NotificationCenter::default_(), NotificationCenter());
}
