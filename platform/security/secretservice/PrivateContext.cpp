// SPDX-License-Identifier: Apache-2.0
#include "platform/security/secretservice/PrivateContext.h"

namespace vorlan::security::secretservice {

namespace {

gboolean markAsOver(gpointer isOver) {
    *static_cast<bool*>(isOver) = true;
    return G_SOURCE_REMOVE;
}

/// Sets a flag after some time.
class Alarm {
public:
    Alarm(GMainContext* context, int milliseconds)
        : source_(g_timeout_source_new(static_cast<guint>(milliseconds))) {
        g_source_set_callback(source_, markAsOver, &isOver_, nullptr);
        g_source_attach(source_, context);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm() {
        g_source_destroy(source_);
        g_source_unref(source_);
    }

    bool isOver() const noexcept { return isOver_; }

private:
    GSource* source_;
    bool isOver_ = false;
};

} // namespace

PrivateContext::PrivateContext() : context_(g_main_context_new()) {
    g_main_context_push_thread_default(context_.get());
}

PrivateContext::~PrivateContext() {
    // Ends of subscriptions are told here too; untold, they would keep the context.
    settle(context_.get());
    g_main_context_pop_thread_default(context_.get());
}

bool PrivateContext::turnUntil(FunctionRef<bool()> condition, int milliseconds) const {
    const Alarm alarm(context_.get(), milliseconds);
    turnUntil([&] { return alarm.isOver() || condition(); });
    return condition();
}

void PrivateContext::turnUntil(FunctionRef<bool()> condition) const {
    while (!condition()) g_main_context_iteration(context_.get(), TRUE);
}

void settle(GMainContext* context) {
    while (g_main_context_iteration(context, FALSE) != FALSE) {}
}

} // namespace vorlan::security::secretservice
