// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lets a type have actions by keys of its own choosing, one for each.
//
//     struct Panel : Actionable<Panel, PanelAction> {
//         Actions actions;
//     };
//     panel.on(PanelAction::close, [] { hide(); });
//     if (const auto action = panel.actions.find(key); action != panel.actions.end()) {
//         const auto run = action->second; // a copy, as an action may put another in its own place
//         run();
//     }

#include <concepts>
#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>

namespace vorlan {

namespace detail {

/// What can be a key of a table.
template <class T>
concept Hashable = std::equality_comparable<T> && requires(const T& key) {
    { std::hash<T>()(key) } -> std::convertible_to<std::size_t>;
};

} // namespace detail

/// An interface with a default operation that fills a table of actions. `Self` has the table as a member `actions` of the
/// type `Actions`, and runs what is in it. A type that is `Callbackable` too names both operations as its own:
/// `using Actionable<Panel, PanelAction>::on; using Callbackable<Panel, PanelEvent>::on;`
///
/// Threads:     one thread at a time; there is no lock.
/// Owns:        nothing; the table is the type's own.
/// Re-entrancy: an action that is run from a copy of its own may replace itself; one that is run inside the table may
///              not.
template <class Self, detail::Hashable ActionType>
class Actionable {
public:
    using Actions = std::unordered_map<ActionType, std::function<void()>>;

    /// Has the action of a key be this one, in place of the one that it had.
    void on(ActionType key, std::function<void()> handler) {
        static_cast<Self&>(*this).actions.insert_or_assign(std::move(key), std::move(handler));
    }
};

} // namespace vorlan
