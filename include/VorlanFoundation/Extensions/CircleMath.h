// SPDX-License-Identifier: Apache-2.0
#pragma once

// Angles, arcs and points of a circle, for what is drawn on one.
//
//     CircleMath circle(10);
//     circle.arcLength({.angle = 1.0});
//     Point end = circle.circlePoint({.percentage = 0.25, .center = {50, 50}, .clockwise = true});

#include <VorlanFoundation/Platform/Export.h>

namespace vorlan {

/// A place on a plane.
struct Point {
    double x = {};
    double y = {};

    friend bool operator==(const Point&, const Point&) = default;
};

/// A circle and the relations between its angles, in radians, the lengths of its arcs, and the fractions of it that
/// they are. A percentage is such a fraction: 1 is the whole circle.
///
/// Nothing is checked: a radius may be zero or less. It is computed in the library, so that no option by which a host
/// is compiled changes a bit of it.
///
/// Threads: safe from any thread as long as none changes it (a plain value).
class CircleMath {
public:
    /// An angle in radians.
    struct Angle {
        double angle = {};
    };
    /// A length along the circle.
    struct ArcLength {
        double arcLength = {};
    };
    /// A fraction of the circle.
    struct Percentage {
        double percentage = {};
    };
    /// The same, in the spelling that `arcLength` has it.
    struct Pecentage {
        double pecentage = {};
    };
    /// Where a point is on the circle, and where that is.
    struct Position {
        double percentage = {}; ///< how far around, from the vertical through the centre
        double angleShift = {}; ///< what is added to that angle
        Point center = {};
        bool clockwise = {}; ///< whether the way begins where y is greatest, otherwise where it is least
    };

    VORLAN_EXPORT explicit CircleMath(double radius) noexcept;

    double radius() const noexcept { return radius_; }
    double diameter() const noexcept { return diameter_; }
    double circleLength() const noexcept { return circleLength_; }

    /// How long the arc of an angle, or of a fraction of the circle, is.
    VORLAN_EXPORT double arcLength(Angle arc) const noexcept;
    VORLAN_EXPORT double arcLength(Pecentage arc) const noexcept;

    /// The angle of an arc of that length, or of a fraction of the circle; 0 where the radius is not above zero.
    VORLAN_EXPORT double arcAngle(ArcLength arc) const noexcept;
    VORLAN_EXPORT double arcAngle(Percentage arc) const noexcept;

    /// Which fraction of the circle an angle is; no number where the radius is zero.
    VORLAN_EXPORT double arcPercentage(Angle arc) const noexcept;

    /// A point on the circle. From the vertical on, growing angles lead to greater x.
    VORLAN_EXPORT Point circlePoint(const Position& position) const noexcept;

private:
    double radius_;
    double diameter_;
    double circleLength_;
};

} // namespace vorlan
