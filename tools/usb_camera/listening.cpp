#include "tools/usb_camera/listening.h"

#include <netdb.h>
#include <netinet/in.h>

#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace zem::usb_camera {
namespace {

constexpr const char* kOwnHost = "127.0.0.1";

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

bool IsPort(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

ListenAddress ParseListenAddress(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  ListenAddress address = {kOwnHost, text};
  if (colon != std::string::npos) {
    address = {text.substr(0, colon), text.substr(colon + 1)};
    const bool isBracketed = address.host.starts_with('[') && address.host.ends_with(']');
    if (isBracketed) {
      address.host = address.host.substr(1, address.host.size() - 2);
    } else if (address.host.find(':') != std::string::npos) {
      address.host.clear();
    }
  }
  if (address.host.empty() || !IsPort(address.port)) {
    throw std::invalid_argument("\"" + text +
                                "\" is not [ADDRESS:]PORT, such as 3240 or [::1]:3240");
  }
  return address;
}

Descriptor Listen(const ListenAddress& address) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found);
  if (error != 0) {
    throw std::runtime_error("there is no address \"" + address.host +
                             "\": " + gai_strerror(error));
  }
  const AddressList list(found, &freeaddrinfo);
  Descriptor listening(
      socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, found->ai_protocol));
  const int yes = 1;
  constexpr int kMostUnaccepted = 8;
  if (!listening.isOpen() ||
      setsockopt(listening.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes)) != 0 ||
      bind(listening.number(), found->ai_addr, found->ai_addrlen) != 0 ||
      listen(listening.number(), kMostUnaccepted) != 0) {
    throw std::runtime_error("cannot listen on " + address.host + ", port " + address.port + ": " +
                             std::strerror(errno));
  }
  return listening;
}

std::string AddressText(const sockaddr_storage& address) {
  std::array<char, NI_MAXHOST> host = {};
  std::array<char, NI_MAXSERV> port = {};
  if (getnameinfo(std::bit_cast<const sockaddr*>(&address), sizeof(address), host.data(),
                  host.size(), port.data(), port.size(), NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return "?";
  }
  const bool isIpv6 = address.ss_family == AF_INET6;
  return (isIpv6 ? "[" : "") + std::string(host.data()) + (isIpv6 ? "]:" : ":") + port.data();
}

sockaddr_storage OwnAddress(const Descriptor& socket) {
  sockaddr_storage address = {};
  socklen_t length = sizeof(address);
  getsockname(socket.number(), std::bit_cast<sockaddr*>(&address), &length);
  return address;
}

bool IsLoopback(const sockaddr_storage& address) {
  if (address.ss_family == AF_INET) {
    constexpr unsigned kLoopbackNet = 127;
    sockaddr_in in = {};
    std::memcpy(&in, &address, sizeof(in));
    return ntohl(in.sin_addr.s_addr) >> 24 == kLoopbackNet;
  }
  sockaddr_in6 in6 = {};
  std::memcpy(&in6, &address, sizeof(in6));
  return address.ss_family == AF_INET6 && IN6_IS_ADDR_LOOPBACK(&in6.sin6_addr);
}

}  // namespace zem::usb_camera
