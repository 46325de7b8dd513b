// What happens on the simulated system, in words and in order. Transfers are the test's own to
// write down between these.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace zem::testing {

// "line [MSG] End, Send updater data!\r\n"
std::string LineEvent(std::wstring_view text);
// "sleep 500"
std::string SleepEvent(std::uint32_t milliseconds);
// "close \\.\F:"
std::string CloseEvent(std::wstring_view path);

// Hands every debugger text, sleep and closing of a volume to `write` as it happens, until the
// system is reset.
void ListenToSystem(std::function<void(std::string event)> write);

}  // namespace zem::testing
