/**
 * @file pipe_client.h
 * The pipe route: threads that open each job's pipe as soon as the library has made it, and answer
 * the frames in it until the library closes it. There is one for every pipe that may exist at once:
 * two jobs of one printer would otherwise wait for each other.
 */
#pragma once

#include "companion.h"

namespace vok::sample {

/// Starts the threads, which run until the program ends.
/// @param companion Must live as long as the program.
/// @return False when one can't be started.
bool startPipeClients(Companion& companion);

}  // namespace vok::sample
