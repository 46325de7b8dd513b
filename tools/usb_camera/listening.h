// Where a server listens.
#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <string>

#include "tools/usb_camera/descriptor.h"

namespace zem::usb_camera {

struct ListenAddress {
  std::string host;
  std::string port;
};

// "[ADDRESS:]PORT", an IPv6 address in brackets; without an address this machine alone. Throws
// std::invalid_argument for other text.
ListenAddress ParseListenAddress(const std::string& text);

// A socket that listens there. Throws std::runtime_error with a sentence for a person.
Descriptor Listen(const ListenAddress& address);

// An end of a connection, such as 127.0.0.1:3240 or [::1]:3240.
std::string AddressText(const sockaddr_storage& address);

// Where a socket listens, and who is at a connection's other end.
sockaddr_storage OwnAddress(const Descriptor& socket);

// Whether only this machine's programs reach it.
bool IsLoopback(const sockaddr_storage& address);

}  // namespace zem::usb_camera
