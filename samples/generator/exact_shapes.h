#pragma once

#include <TopoDS_Shape.hxx>

namespace plenvorith::samples {

// All in millimetres.

/// An angle of bent plate with rounded corners, two holes in one leg and one in the other.
TopoDS_Shape makeBracket();

/// A lamp: foot, pole and bulb are solids, the shade is a sheet without thickness.
TopoDS_Shape makeLamp();

/// A flange with a hub, a bore and six bolt holes.
TopoDS_Shape makeFlange();

/// A finger ring around the y axis.
TopoDS_Shape makeRing();

}  // namespace plenvorith::samples
