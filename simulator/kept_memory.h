// What a simulated camera keeps while it is switched off, and the file that carries it from one run
// to the next.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zem::simulator {

// Bytes by the name of the memory that holds them.
using KeptMemory = std::map<std::string, std::vector<std::uint8_t>>;

// Gives `bytes` what `memory` has by this name, if it has it. Throws std::invalid_argument when
// that has another size.
void LoadBytes(const KeptMemory& memory, const std::string& name, std::vector<std::uint8_t>& bytes);

// The file's text, JSON: {"flash": {"size": 1048576, "pages": {"0x000000": "5a454d..."}}}. A page
// is 256 bytes in hexadecimal; pages of nothing but 0xFF are left out.
std::string FormatKeptMemory(const KeptMemory& memory);

// Throws std::invalid_argument with a sentence for a person on anything else than such a text.
KeptMemory ParseKeptMemory(const std::string& text);

// Reads the file at `path` (UTF-8). A file that does not exist is empty memory. Throws
// std::invalid_argument for one that cannot be read or holds something else.
KeptMemory ReadStateFile(const std::string& path);

// Replaces the file. Throws std::runtime_error when that fails.
void WriteStateFile(const std::string& path, const KeptMemory& memory);

}  // namespace zem::simulator
