// SPDX-License-Identifier: Apache-2.0
#include "platform/network/Survey.h"

#include <array>
#include <cerrno>
#include <type_traits>
#include <utility>

namespace vorlan::network {

namespace {

Progress examineOnce(Kernel& kernel, const Sysfs& sysfs, std::optional<Survey>& survey,
                     FunctionRef<Progress(const Survey&)> work) {
    if (!survey) {
        auto snapshot = kernel.snapshot();
        if (!snapshot) return Progress::ofError(snapshot.error());
        survey.emplace(kernel, sysfs, std::move(*snapshot));
    }
    const Progress progress = work(*survey);
    if (!progress.isSettled()) survey.reset();
    return progress;
}

} // namespace

Progress Progress::ofError(int error) noexcept {
    return {error == EAGAIN ? Outcome::unsettled : Outcome::failed, error};
}

std::span<const IPAddress> probeDestinations() {
    // Nothing that is destroyed at the end: queues may still look for a way then.
    static_assert(std::is_trivially_destructible_v<IPAddress>);
    static const std::array destinations{
        *IPAddress::fromText("8.8.8.8"),
        *IPAddress::fromText("198.41.0.4"),
        *IPAddress::fromText("2001:503:ba3e::2:30"),
        *IPAddress::fromText("3000::1"),
    };
    return destinations;
}

Survey::Survey(Kernel& kernel, const Sysfs& sysfs, Snapshot snapshot)
    : kernel_(kernel), snapshot_(std::move(snapshot)), classifier_(snapshot_, sysfs) {}

Verdict Survey::judge(const IPAddress& destination, LinkIndex outLink) const {
    return network::judge(kernel_, snapshot_, destination, outLink);
}

const std::vector<Verdict>& Survey::probes() const {
    if (probes_.empty())
        for (const IPAddress& destination : probeDestinations()) probes_.push_back(judge(destination));
    return probes_;
}

Progress progressOf(const Verdict& verdict) noexcept {
    if (verdict.kind == Verdict::Kind::failed) return Progress::ofError(verdict.error);
    if (verdict.kind == Verdict::Kind::stale) return Progress::ofError(EAGAIN);
    return {};
}

Progress examine(Kernel& kernel, const Sysfs& sysfs, std::optional<Survey>& survey,
                 FunctionRef<Progress(const Survey&)> work) {
    const Progress progress = examineOnce(kernel, sysfs, survey, work);
    // A link that came up between the snapshot and the look-up is in the next snapshot.
    if (progress.outcome != Outcome::unsettled) return progress;
    return examineOnce(kernel, sysfs, survey, work);
}

} // namespace vorlan::network
