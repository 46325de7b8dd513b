// What happens on the simulated system, in words and in order. Transfers are the test's own to
// write down between these.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zem::testing {

// "line [MSG] End, Send updater data!\r\n"
std::string LineEvent(std::wstring_view text);

// Hands every debugger text, every sleep ("sleep 500") and every closing of a volume
// ("close \\.\F:") to `write` as it happens, until the system is reset.
void ListenToSystem(const std::function<void(std::string event)>& write);

}  // namespace zem::testing
