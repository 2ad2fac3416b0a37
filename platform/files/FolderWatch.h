// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tells when something in a folder has changed.

#include <VorlanFoundation/Platform/Queue.h>

#include <filesystem>
#include <functional>
#include <memory>

namespace vorlan {

class FolderWatcher;

/// Calls a handler after files were made, replaced, closed after writing or removed in a folder, from the start
/// until it is destroyed. The folder need not be there: it may come, go and come again.
///
/// Changes in one moment are told in one call. Some calls have no reason that the handler could find.
///
/// Threads: made and destroyed by one thread at a time; the handler runs on a serial queue that all watches share, and
///          may be called once more after the watch was destroyed.
/// Owns:    the handler.
/// Errors:  where the kernel refuses to watch (it limits how many may), the handler is called twice a second from then
///          on. That a folder above the watched one was renamed is not noticed.
class FolderWatch {
public:
    FolderWatch(std::filesystem::path folder, std::function<void()> handler);
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    ~FolderWatch();

private:
    struct Watched;
    friend class FolderWatcher;

    std::shared_ptr<Watched> watched_;
};

} // namespace vorlan
