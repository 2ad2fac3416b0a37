// SPDX-License-Identifier: Apache-2.0
#include <VorlanFoundation/Extensions/CircleMath.h>

#include <cmath>
#include <numbers>

namespace vorlan {

CircleMath::CircleMath(double radius) noexcept
    : radius_(radius), diameter_(radius + radius), circleLength_(radius * (2 * std::numbers::pi)) {}

double CircleMath::arcLength(Angle arc) const noexcept {
    return arc.angle * radius_;
}

double CircleMath::arcLength(Pecentage arc) const noexcept {
    return arc.pecentage * circleLength_;
}

double CircleMath::arcAngle(ArcLength arc) const noexcept {
    return radius_ > 0 ? arc.arcLength / radius_ : 0;
}

double CircleMath::arcAngle(Percentage arc) const noexcept {
    return radius_ > 0 ? arc.percentage * circleLength_ / radius_ : 0;
}

double CircleMath::arcPercentage(Angle arc) const noexcept {
    return arc.angle * radius_ / circleLength_;
}

Point CircleMath::circlePoint(const Position& position) const noexcept {
    const double angle = arcAngle({.percentage = position.percentage}) + position.angleShift;
    const double factor = position.clockwise ? 1 : -1;
    double sine = 0;
    double cosine = 0;
    ::sincos(angle, &sine, &cosine);
    return {.x = position.center.x + radius_ * sine, .y = position.center.y + factor * radius_ * cosine};
}

} // namespace vorlan
