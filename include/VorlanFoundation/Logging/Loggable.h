// SPDX-License-Identifier: Apache-2.0
#pragma once

// Types whose log lines begin with their name.
//
//     struct Importer : Loggable<Importer> {
//         void run() { log("read 5 files"); } // [Importer]: read 5 files
//     };

#include <VorlanFoundation/Logging/Logger.h>

#include <typeinfo>

namespace vorlan {

/// Lets a type log under its own name, without the namespaces and classes that it is declared in.
///
/// Threads: as `Logger`.
template <class Self>
class Loggable {
public:
    /// Logs "[" + name of the type + "]: " + the description of `value`; for the type as for its objects.
    template <class T>
    static void log(const T& value) {
        if (!detail::mayLog() || !detail::isLogging()) return;
        detail::writeLog("[" + detail::unqualifiedTypeName(typeid(Self)) + "]: " + describe(value));
    }

private:
    friend Self;
    Loggable() = default;
};

} // namespace vorlan
