#pragma once

namespace zem {

template <class... Pointers>
bool AnyNull(const Pointers*... pointers) {
  return ((pointers == nullptr) || ...);
}

}  // namespace zem
