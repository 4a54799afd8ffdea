#pragma once

#include <initializer_list>

#include "batch/system/descriptor.h"

namespace plenvorith {

/// Has signals wait until they are read, instead of ending this process or being lost. Those that are
/// ignored stay ignored.
///
/// Gives   a descriptor that can be polled: it is readable while one of them waits.
Descriptor listenToSignals(std::initializer_list<int> signals);

/// Takes the next signal that waits behind such a descriptor; 0 if none does.
int nextSignal(int listener);

}  // namespace plenvorith
