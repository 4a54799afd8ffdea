#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace plenvorith {

/// A host that GNU parallel reaches.
struct Host {
  std::string login;  ///< as GNU parallel takes it, without a number of jobs; ":" is this host
  int jobs = 1;       ///< at once
};

/// What the hosts of a run have to have.
struct HostWish {
  std::string logins;   ///< as the user gave them
  std::string jobs;     ///< at once on each host, as in 4, 50%, +1 or -1; empty: one for each core
  std::string program;  ///< path of this program; hosts without it are asked for the one in PATH
  std::string version;  ///< what it prints when it is asked
  std::string folder;   ///< holds the file "here", by which a host shows that it sees the folder
  bool transfer = false;  ///< hosts need not see the folder
};

struct HostCheck {
  std::vector<Host> hosts;           ///< that can convert
  std::vector<std::string> leftOut;  ///< one line for each other host
  std::string problem;               ///< why no host could be asked; empty if they were
};

/// Asks every host, all at the same time, whether it can convert.
///
/// Takes   `parallel`, the path of GNU parallel.
HostCheck checkHosts(const std::string& parallel, const HostWish& wish);

/// What comes of the answers. `answers` are lines of a login, a tab and a text; `joblog` is the
/// table that GNU parallel writes about the calls.
HostCheck hostsFrom(std::string_view answers, std::string_view joblog, const HostWish& wish);

/// The lines of sh that every command for a host starts with: they set `p` to the program.
extern const char* const kFindProgram;

/// The environment for GNU parallel, with what its commands need.
std::vector<std::string> hostEnvironment(const HostWish& wish);

}  // namespace plenvorith
