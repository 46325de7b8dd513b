// Where the server of simulated cameras listens.
#include "tools/usb_camera/listening.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using zem::usb_camera::AddressText;
using zem::usb_camera::Descriptor;
using zem::usb_camera::IsLoopback;
using zem::usb_camera::Listen;
using zem::usb_camera::ListenAddress;
using zem::usb_camera::OwnAddress;
using zem::usb_camera::ParseListenAddress;

std::string Parsed(const std::string& text) {
  try {
    const ListenAddress address = ParseListenAddress(text);
    return address.host + " " + address.port;
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

TEST(ListeningTest, AddressesAndPorts) {
  EXPECT_EQ(Parsed("3240"), "127.0.0.1 3240") << "this machine alone";
  EXPECT_EQ(Parsed("0.0.0.0:3240"), "0.0.0.0 3240");
  EXPECT_EQ(Parsed("localhost:0"), "localhost 0");
  EXPECT_EQ(Parsed("[::1]:65535"), "::1 65535");
  for (const std::string text : {"", ":", ":1", "x", "1.2.3.4", "host:", "65536", "::1", "1x"}) {
    EXPECT_EQ(Parsed(text), "\"" + text + "\" is not [ADDRESS:]PORT, such as 3240 or [::1]:3240");
  }
}

TEST(ListeningTest, WhoReachesIt) {
  const Descriptor own = Listen({"127.0.0.1", "0"});
  EXPECT_TRUE(IsLoopback(OwnAddress(own)));
  EXPECT_TRUE(AddressText(OwnAddress(own)).starts_with("127.0.0.1:"));
  const Descriptor everybody = Listen({"0.0.0.0", "0"});
  EXPECT_FALSE(IsLoopback(OwnAddress(everybody)));
}

TEST(ListeningTest, WhereItCannot) {
  const Descriptor first = Listen({"127.0.0.1", "0"});
  const std::string address = AddressText(OwnAddress(first));
  const std::string port = address.substr(address.rfind(':') + 1);
  try {
    Listen({"127.0.0.1", port});
    ADD_FAILURE() << "twice";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()),
              "cannot listen on 127.0.0.1, port " + port + ": Address already in use");
  }
  EXPECT_THROW(Listen({"no such host", "1"}), std::runtime_error);
}

}  // namespace
