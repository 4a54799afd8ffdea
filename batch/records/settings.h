#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace plenvorith {

/// One of the parts that several processes, each on its own, convert into one output folder.
struct Shard {
  int number = 1;  ///< from 1 to count
  int count = 1;
};

/// What decides, for all files of a run alike, what is made of them and with how much.
struct ConversionSettings {
  std::string to = "stl";          ///< extension of the output: "stl" or "stp"
  std::string deflection = "0.1";  ///< as given; a number above 0, in millimetres
  bool split = false;              ///< one file for each shape
  bool parts = false;              ///< with split: a list of these, which the built-in one makes
  bool prepare = false;            ///< rewrite the input for the converter first
  std::string program;             ///< what to run for each file; empty: the converter in here
  std::chrono::seconds timeLimit = std::chrono::hours(1);  ///< for each file; 0: none
  std::int64_t memoryLimit = 0;  ///< bytes of address space for each file; 0: none

  bool operator==(const ConversionSettings&) const = default;
};

}  // namespace plenvorith
