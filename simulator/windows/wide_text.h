// UTF-8, in which options, paths and command lines stand, as Windows takes it.
#pragma once

#include <string>

namespace zem::simulator {

std::wstring Widen(const std::string& text);

}  // namespace zem::simulator
