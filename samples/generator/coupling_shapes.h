#pragma once

#include <TopoDS_Shape.hxx>

namespace plenvorith::samples {

// The parts of a flange coupling, in millimetres.

constexpr int kCouplingHoles = 6;
constexpr double kCouplingHoleCircle = 41;  ///< radius on which the holes lie
constexpr double kCouplingFlange = 14;      ///< thickness of a flange

/// A flange that stands on the plane z = 0, with a hub above it, a bore and a keyway.
TopoDS_Shape makeCouplingHalf();

/// A hexagon bolt whose head stands below z = 0; the shank goes up through both flanges.
TopoDS_Shape makeCouplingBolt();

/// A hexagon nut that stands on z = 0.
TopoDS_Shape makeCouplingNut();

}  // namespace plenvorith::samples
