// SPDX-License-Identifier: Apache-2.0
#pragma once

// Waiting for what GLib tells by callbacks, on threads that run no loop.

#include "platform/security/secretservice/GLibOwners.h"

#include <VorlanFoundation/Platform/FunctionRef.h>

namespace vorlan::security::secretservice {

/// A main context of its own, in which the calling thread gets its callbacks while this is there: those of
/// the host's contexts wait meanwhile, and none of ours end up there.
///
/// Threads: the thread that made it.
/// Owns:    the context, together with those that `context` was given to.
class PrivateContext {
public:
    PrivateContext();
    PrivateContext(const PrivateContext&) = delete;
    PrivateContext& operator=(const PrivateContext&) = delete;
    ~PrivateContext();

    /// Runs callbacks until the condition is true; false when so many milliseconds went by before.
    bool turnUntil(FunctionRef<bool()> condition, int milliseconds) const;

    /// Runs callbacks until the condition is true.
    void turnUntil(FunctionRef<bool()> condition) const;

    /// Another reference of the context.
    ContextOwner context() const { return ContextOwner(g_main_context_ref(context_.get())); }

private:
    ContextOwner context_;
};

/// Runs what waits in a context, without waiting for more; nothing when another thread is at it.
void settle(GMainContext* context);

} // namespace vorlan::security::secretservice
