// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects that each thread has one of.

namespace vorlan {

/// The T of the calling thread: made when the thread first asks for it, destroyed when the thread ends.
///
/// Threads: each has its own.
/// Owns:    the objects.
template <class T>
class PerThread {
public:
    /// Null once it was destroyed: what the thread destroys later may still ask.
    static T* get() {
        if (stage_ == Stage::unused) thread_local Owner owner;
        return object_;
    }

private:
    enum class Stage : unsigned char { unused, inUse, over };

    struct Owner {
        Owner() {
            object_ = &object;
            stage_ = Stage::inUse;
        }
        Owner(const Owner&) = delete;
        Owner& operator=(const Owner&) = delete;
        ~Owner() {
            stage_ = Stage::over;
            object_ = nullptr;
        }

        T object{};
    };

    // Without destructors, so that these two are there until the very end of the thread.
    static inline constinit thread_local Stage stage_ = Stage::unused;
    static inline constinit thread_local T* object_ = nullptr;
};

} // namespace vorlan
