/**
 * @file spooler.h
 * What the installer asks of the spooler. Every function says what it did, or why it could not, and
 * takes what is there already for done.
 */
#pragma once

#include <optional>
#include <string>

namespace vok::sample {

bool addPrintProcessor(const std::string& source);
bool addPort(const std::string& port);
bool addDriver(const std::string& source);

/// @param driver Its name; empty for the demo's own.
bool addPrinter(const std::string& printer, const std::string& port, const std::string& driver);

bool deletePrinter(const std::string& printer);
bool deleteDriver();

/// Of a file; any other port stays.
bool deletePort(const std::string& port);
bool deletePrintProcessor();

/// Looks for a driver that is installed already, in whatever case its name is written.
bool findDriver(const std::string& driver);

/// Nothing when there is no such printer.
std::optional<std::string> portOfPrinter(const std::string& printer);

}  // namespace vok::sample
