// Library paths as the host's own, and why the host refuses them.
#pragma once

#include <string>

namespace zebtool {

// The host path behind a library path. Throws JobError when its drive is not mounted.
std::string ToHostPath(const std::string& path);

// What is wrong with a path that could not be opened, in words; `failure` is what the system says.
std::string WhyNotReadable(const std::string& host_path);
std::string WhyNotWritable(const std::string& host_path, const std::string& failure);

// Makes the directory and those above it. Throws JobError.
void MakeDirectories(const std::string& path);

// Throws JobError when both lead to one file.
void RefuseSameFile(const std::string& input, const std::string& output);

}  // namespace zebtool
