#pragma once

#include <random>
#include <string>

namespace plenvorith::test {

/// A STEP file with one to three changes of the kind that writers with errors, editors and broken
/// transfers make: statements gone, doubled or swapped, references and types exchanged, bytes lost
/// or inserted. The same for the same state of `random`.
std::string mutated(std::mt19937& random, std::string content);

}  // namespace plenvorith::test
