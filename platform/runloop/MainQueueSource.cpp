// SPDX-License-Identifier: Apache-2.0
#include "platform/runloop/MainQueueSource.h"

#include <VorlanFoundation/Platform/RunLoop.h>

#include <glib-unix.h>
#include <glib.h>

#include <memory>

namespace vorlan {

namespace {

struct SourceRelease {
    void operator()(GSource* source) const { g_source_unref(source); }
};

gboolean drain(gint, GIOCondition, gpointer) {
    RunLoop::drainMainQueue();
    return G_SOURCE_CONTINUE;
}

} // namespace

void attachMainQueueToDefaultContext() {
    const std::unique_ptr<GSource, SourceRelease> source(
        g_unix_fd_source_new(RunLoop::mainQueueDescriptor(), G_IO_IN));
    g_source_set_static_name(source.get(), "VorlanFoundation main queue");
    g_source_set_callback(source.get(), G_SOURCE_FUNC(drain), nullptr, nullptr);
    g_source_attach(source.get(), nullptr);
}

} // namespace vorlan
