/**
 * @file files.h
 * The files of the demo: what goes into which folder.
 */
#pragma once

#include <string>
#include <vector>

namespace vok::sample {

inline constexpr char processor_file[] = VOK_MODEL_PREFIX "proc.dll";
inline constexpr char driver_ui_file[] = VOK_MODEL_PREFIX "ui.dll";

/// Library, configuration library and companions of the model.
std::vector<std::string> modelFiles();

/// Copies a file, over an older one. Says what it did, or why it could not.
bool copyFile(const std::string& name, const std::string& from, const std::string& to);

/// Deletes a file; one that is not there is as good as deleted.
bool deleteFile(const std::string& path);

bool fileExists(const std::string& path);

/// Makes the last folder of a path if it is missing.
void makeFolder(const std::string& path);

}  // namespace vok::sample
