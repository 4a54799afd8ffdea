#include "samples/generator/facets.h"

#include <cmath>
#include <numbers>

#include <gp_Vec.hxx>

namespace plenvorith::samples {

Facets makeKnot() {
  constexpr std::size_t kAlong = 96;
  constexpr std::size_t kAround = 8;
  constexpr double kMajor = 20;  // The knot runs on a torus with these radii ...
  constexpr double kMinor = 9;
  constexpr double kTube = 4;  // ... and this is the radius of the tube.
  Facets knot;
  for (std::size_t i = 0; i < kAlong; ++i) {
    const double t = 2 * std::numbers::pi * static_cast<double>(i) / kAlong;
    const double distance = kMajor + kMinor * std::cos(3 * t);
    const gp_Vec centre(distance * std::cos(2 * t), distance * std::sin(2 * t),
                        kMinor * std::sin(3 * t));
    const gp_Vec tangent(
        -3 * kMinor * std::sin(3 * t) * std::cos(2 * t) - 2 * distance * std::sin(2 * t),
        -3 * kMinor * std::sin(3 * t) * std::sin(2 * t) + 2 * distance * std::cos(2 * t),
        3 * kMinor * std::cos(3 * t));
    // The normal of the torus is at a right angle to the knot everywhere and comes back to itself,
    // so the tube closes without a twist.
    const gp_Vec normal(std::cos(3 * t) * std::cos(2 * t), std::cos(3 * t) * std::sin(2 * t),
                        std::sin(3 * t));
    const gp_Vec side = tangent.Normalized().Crossed(normal);
    for (std::size_t j = 0; j < kAround; ++j) {
      const double u = 2 * std::numbers::pi * static_cast<double>(j) / kAround;
      const gp_Vec p = centre + (normal * std::cos(u) + side * std::sin(u)) * kTube;
      knot.points.push_back({p.X(), p.Y(), p.Z()});
    }
  }
  for (std::size_t i = 0; i < kAlong; ++i) {
    for (std::size_t j = 0; j < kAround; ++j) {
      const std::size_t here = i * kAround + 1;
      const std::size_t next = (i + 1) % kAlong * kAround + 1;
      const std::size_t beside = (j + 1) % kAround;
      knot.triangles.push_back({here + j, here + beside, next + j});
      knot.triangles.push_back({here + beside, next + beside, next + j});
    }
  }
  return knot;
}

Facets makeGem() {
  constexpr std::size_t kSides = 12;
  struct Ring {
    double radius;
    double z;
  };
  // From the table down. Each ring is turned by half a side against the one before.
  constexpr std::array<Ring, 5> kRings = {
      {{2.6, 17.2}, {4.2, 16.3}, {4.8, 15.2}, {4.8, 14.7}, {2.6, 12.6}}};
  Facets gem;
  for (std::size_t ring = 0; ring < kRings.size(); ++ring) {
    for (std::size_t i = 0; i < kSides; ++i) {
      const double turn = static_cast<double>(i) + static_cast<double>(ring % 2) / 2;
      const double angle = 2 * std::numbers::pi * turn / kSides;
      gem.points.push_back({kRings[ring].radius * std::cos(angle),
                            kRings[ring].radius * std::sin(angle), kRings[ring].z});
    }
  }
  gem.points.push_back({0, 0, 10.6});

  for (std::size_t i = 2; i < kSides; ++i) {
    gem.triangles.push_back({1, i, i + 1});
  }
  for (std::size_t ring = 0; ring + 1 < kRings.size(); ++ring) {
    const std::size_t upper = ring * kSides + 1;
    const std::size_t lower = upper + kSides;
    for (std::size_t i = 0; i < kSides; ++i) {
      const std::size_t next = (i + 1) % kSides;
      // Point i of a turned ring stands between the points i and i + 1 of the others.
      const bool lowerIsTurned = ring % 2 == 0;
      gem.triangles.push_back({upper + i, lower + (lowerIsTurned ? i : next), upper + next});
      gem.triangles.push_back({lower + i, lower + next, upper + (lowerIsTurned ? next : i)});
    }
  }
  const std::size_t last = (kRings.size() - 1) * kSides + 1;
  for (std::size_t i = 0; i < kSides; ++i) {
    gem.triangles.push_back({last + i, gem.points.size(), last + (i + 1) % kSides});
  }
  return gem;
}

}  // namespace plenvorith::samples
