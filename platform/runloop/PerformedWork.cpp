// SPDX-License-Identifier: Apache-2.0
#include "platform/runloop/PerformedWork.h"

#include "platform/dispatch/ThreadSanitizer.h"
#include "platform/values/ExceptionStop.h"

#include <utility>

namespace vorlan {

struct PerformedWork::Source {
    GSource base;
    PerformedWork* work;
};

void PerformedWork::SourceRelease::operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
}

PerformedWork::PerformedWork(GMainContext* context) : context_(context) {
    static GSourceFuncs functions{.prepare = prepare, .check = check, .dispatch = dispatch};
    source_.reset(g_source_new(&functions, sizeof(Source)));
    reinterpret_cast<Source*>(source_.get())->work = this;
    g_source_set_static_name(source_.get(), "VorlanFoundation performed work");
    // The context may be turning on another thread already, and GLib's lock is hidden from the tool.
    sanitizer::release(source_.get());
    g_source_attach(source_.get(), context);
}

PerformedWork::~PerformedWork() = default;

void PerformedWork::add(Work work) {
    {
        const std::lock_guard lock(mutex_);
        if (isClosed_) return;
        waiting_.push_back(std::move(work));
        if (waiting_.size() > 1) return; // The context was woken for the first.
    }
    g_main_context_wakeup(context_);
}

void PerformedWork::close() {
    std::vector<Work> dropped;
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    waiting_.swap(dropped);
}

gboolean PerformedWork::prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    return check(source);
}

gboolean PerformedWork::check(GSource* source) {
    sanitizer::acquire(source);
    return reinterpret_cast<Source*>(source)->work->isWaiting() ? TRUE : FALSE;
}

gboolean PerformedWork::dispatch(GSource* source, GSourceFunc, gpointer) {
    reinterpret_cast<Source*>(source)->work->runWaiting();
    return G_SOURCE_CONTINUE;
}

bool PerformedWork::isWaiting() const {
    const std::lock_guard lock(mutex_);
    return !waiting_.empty();
}

void PerformedWork::runWaiting() {
    std::vector<Work> works;
    {
        const std::lock_guard lock(mutex_);
        works.swap(waiting_);
    }
    try {
        for (auto& work : works) work();
    } catch (...) {
        stopForException("work performed on a run loop", "VorlanFoundation/RunLoop");
    }
}

} // namespace vorlan
