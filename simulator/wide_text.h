// Between UTF-8, in which options, paths and command lines stand, and the wide text of the system.
#pragma once

#include <string>

namespace zem::simulator {

std::wstring Widen(const std::string& text);
std::string Narrow(const std::wstring& text);

}  // namespace zem::simulator
