// SPDX-License-Identifier: Apache-2.0
#pragma once

// Time lines: what happens when, written as in "0:a 10:b 500.4:c", in milliseconds.

#include <VorlanFoundation/Testing/ManualQueue.h>

#include <chrono>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace timeline {

using Time = std::chrono::microseconds;

struct Event {
    Time time;
    std::string name;

    friend bool operator==(const Event&, const Event&) = default;
};

using TimeLine = std::vector<Event>;

inline TimeLine parse(const std::string& text) {
    TimeLine line;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const auto colon = word.find(':');
        const auto milliseconds = std::stod(word.substr(0, colon));
        line.push_back({std::chrono::round<Time>(std::chrono::duration<double, std::milli>(milliseconds)),
                        word.substr(colon + 1)});
    }
    return line;
}

inline std::string text(const TimeLine& line) {
    std::ostringstream text;
    for (const auto& [time, name] : line)
        text << std::chrono::duration<double, std::milli>(time).count() << ":" << name << " ";
    return text.str();
}

/// A clock turned by hand, and what ran when on it.
class Stage {
public:
    /// Makes the calls at their times, and then lets an hour go by. What is due when a call is made has run
    /// before, unless the call before came at the same time.
    void play(const TimeLine& calls, const std::function<void(const std::string&)>& call) {
        for (const auto& [time, name] : calls) {
            if (time > now()) queue_.advance(time - now());
            call(name);
        }
        queue_.advance(std::chrono::seconds(3600));
    }

    /// Writes down that something ran.
    void note(const std::string& name) { runs_.push_back({now(), name}); }

    const TimeLine& runs() const { return runs_; }
    const vorlan::testing::ManualQueue& queue() const { return queue_; }

private:
    Time now() const {
        return std::chrono::duration_cast<Time>(
            std::chrono::nanoseconds((queue_.now() - start_).nanoseconds()));
    }

    vorlan::testing::ManualQueue queue_;
    const vorlan::DispatchTime start_ = queue_.now();
    TimeLine runs_;
};

} // namespace timeline
