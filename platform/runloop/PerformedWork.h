// SPDX-License-Identifier: Apache-2.0
#pragma once

// The work that is to be performed on a run loop, as a source of its GLib context.

#include <VorlanFoundation/Platform/Work.h>

#include <glib.h>

#include <memory>
#include <mutex>
#include <vector>

namespace vorlan {

/// Takes work from any thread and runs it where its context is turned, in order.
///
/// Guarded by a mutex of the standard library, whose effect ThreadSanitizer can see, where GLib's own
/// hand-over between threads is hidden from it.
class PerformedWork {
public:
    /// Attaches itself to the context.
    explicit PerformedWork(GMainContext* context);
    PerformedWork(const PerformedWork&) = delete;
    PerformedWork& operator=(const PerformedWork&) = delete;
    ~PerformedWork();

    /// Adds work; drops it when closed.
    void add(Work work);

    /// Drops what waits and what is still to come.
    void close();

private:
    struct Source;
    struct SourceRelease {
        void operator()(GSource* source) const;
    };

    static gboolean prepare(GSource* source, gint* timeout);
    static gboolean check(GSource* source);
    static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data);

    bool isWaiting() const;
    void runWaiting();

    GMainContext* context_; ///< Not owned; the loop that owns it outlives this.
    mutable std::mutex mutex_;
    std::vector<Work> waiting_;
    bool isClosed_ = false;
    std::unique_ptr<GSource, SourceRelease> source_;
};

} // namespace vorlan
