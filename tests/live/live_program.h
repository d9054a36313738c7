/**
 * @file live_program.h
 * What one program of live tests is: the Windows version it runs as, and the model it tests with.
 * Every program has a model of its own, so that several may run at once.
 */
#pragma once

#include <string>
#include <vector>

namespace vok::test {

/// "win98", "nt40", …: what the program's name stands for in the registry of the tests' system.
std::string liveVersion();

/// The four characters that begin the names of the library, the companions and all else.
std::string livePrefix();

enum class Route { Message, Pipe };

std::string toText(Route route);

/// The routes by which the library reaches companions on this version.
std::vector<Route> liveRoutes();

/// Empty when the program really sees the version it is named after, else what it sees.
std::string wrongVersion();

}  // namespace vok::test
