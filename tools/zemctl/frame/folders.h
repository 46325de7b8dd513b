// Folders, by their paths in UTF-8.
#pragma once

#include <string>

namespace zemctl {

// The path as it is from every folder.
std::wstring WholePath(const std::string& path);

// Makes a folder the current one; false when there is none of that name.
bool EnterFolder(const std::string& path);

}  // namespace zemctl
