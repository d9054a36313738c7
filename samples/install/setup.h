/**
 * @file setup.h
 * Puts the demo's parts into a machine, through the spooler's own functions, and takes them out
 * again. Each step says on the console what it did; a failed one says why, with the system's error.
 */
#pragma once

#include <string>

namespace vok::sample {

struct Setup {
    std::string source;   ///< Folder that holds what the build made.
    std::string printer;  ///< Friendly name of the printer.
    std::string port;     ///< A local port; the path of a file is one.
    std::string driver;   ///< One that is installed already; none: the demo's own.
};

/// Says whether this user may change the machine, and whether the driver is there. Changes nothing.
bool mayInstall(const Setup& setup);

/// Settings and files, and on NT the spooler's print processor, driver, port, printer and its data.
bool install(const Setup& setup);

/// Ends the companions and removes everything that `install` puts in, with the port that the
/// printer is on if that is a file; a driver that was there already stays.
bool remove(const Setup& setup);

/// Lists what is there and whether the companions run. True when all is installed.
bool showStatus(const Setup& setup);

}  // namespace vok::sample
