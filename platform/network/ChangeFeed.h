// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vorlan::network {

/// Tells that something about the network changed, but not what: whoever hears it evaluates everything again.
///
/// Threads: one thread at a time: that of the queue that it was made for.
class ChangeFeed {
public:
    /// What was heard since the last time.
    enum class News {
        none,    ///< Nothing.
        changed, ///< Something changed, or may have: messages were lost.
        broken,  ///< The feed has come to an end; make another one.
    };

    ChangeFeed() = default;
    ChangeFeed(const ChangeFeed&) = delete;
    ChangeFeed& operator=(const ChangeFeed&) = delete;
    virtual ~ChangeFeed() = default;

    /// Takes in all that has come, without waiting.
    virtual News drain() = 0;
};

} // namespace vorlan::network
