// SPDX-License-Identifier: Apache-2.0
#pragma once

// A host name on the machine on paper.

#include "platform/network/NameReachability.h"

#include "tests/platform/network/NetworkOnPaper.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vorlan::network::fake {

/// Look-ups are answered by the case.
class NameOnPaper : public NetworkOnPaper {
protected:
    using Told = std::vector<std::string>;

    /// Answers the look-up of that number, counted from 0.
    void answer(std::size_t number, std::initializer_list<const char*> texts) {
        std::vector<Destination> addresses;
        for (const char* text : texts) addresses.push_back(to(text));
        lookUps.at(number).answer(std::move(addresses));
        queue.runPending();
    }
    void answerLast(std::initializer_list<const char*> texts) { answer(lookUps.size() - 1, texts); }

    std::shared_ptr<NameReachability> name = std::make_shared<NameReachability>(network, "host.test");
    Told told;
    Told others;
};

} // namespace vorlan::network::fake
