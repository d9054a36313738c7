/**
 * @file trace.h
 * The account that print processor and companions give of what they do: one file for all of them,
 * one line for each step, in the order in which the steps happened.
 */
#pragma once

#include <string>

namespace vok::sample {

/// Appends "12:34:56.789 who[process] text" to the file that the setting "TraceFile" names. The
/// line is written in one piece, so that several programs may write at once. Without the setting,
/// or when the file can't be written, nothing happens: an account must not stop a job.
void trace(const std::string& who, const std::string& text);

}  // namespace vok::sample
