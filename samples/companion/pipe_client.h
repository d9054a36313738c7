/**
 * @file pipe_client.h
 * The pipe route: a thread that opens each job's pipe as soon as the library has made it, and
 * answers the frames in it until the library closes it.
 */
#ifndef VOK_SAMPLES_COMPANION_PIPE_CLIENT_H
#define VOK_SAMPLES_COMPANION_PIPE_CLIENT_H

#include "companion.h"

namespace vok::sample {

/// Starts the thread, which runs until the program ends.
/// @param companion Must live as long as the program.
/// @return False when the thread can't be started.
bool startPipeClient(Companion& companion);

}  // namespace vok::sample

#endif
