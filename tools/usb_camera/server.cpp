#include "tools/usb_camera/server.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "tools/usb_camera/listening.h"

namespace zem::usb_camera {
namespace {

using simulator::usb::DescribeExport;
using simulator::usb::ExportedDevice;
using simulator::usb::PluggedCamera;
using simulator::usb::UsbDevice;
using simulator::usb::UsbIpConnection;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostClients = 32;

// For a client to import a camera, for one to let go of it, for a port of the kernel to become
// free.
constexpr auto kTimeToImport = std::chrono::seconds(10);
constexpr auto kTimeToLeave = std::chrono::seconds(2);
constexpr auto kTimeToFreePort = std::chrono::seconds(10);
constexpr auto kPortInterval = std::chrono::milliseconds(10);

// One line of standard output, which may be a pipe that somebody waits at.
void Say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

void Complain(const std::string& who, const char* what) {
  std::fprintf(stderr, "zem-usb-camera: %s: %s.\n", who.c_str(), what);
}

template <class Value>
std::optional<Value> At(const std::vector<Value>& values, std::size_t place) {
  return place < values.size() ? std::optional(values[place]) : std::nullopt;
}

std::optional<simulator::BootLoaderOptions> BootLoaderAt(const simulator::Options& options,
                                                         std::size_t place) {
  const auto found = options.bootLoaders.find(place);
  return found != options.bootLoaders.end() ? std::optional(found->second) : std::nullopt;
}

const char* FormText(PluggedCamera::Form form) {
  return form == PluggedCamera::Form::kStorage ? "mass storage" : "camera";
}

}  // namespace

Server::Place::Place(std::size_t ownNumber, const simulator::Options& options)
    : number(ownNumber),
      camera(At(options.cameras, ownNumber - 1), BootLoaderAt(options, ownNumber - 1)),
      told(camera.device()) {}

void Server::Place::Tell(const std::string& event) const {
  Say("camera " + std::to_string(number) + ": " + event);
}

Server::Client::Client(Descriptor itsSocket, std::string itsName, UsbIpConnection itsConnection)
    : socket(std::move(itsSocket)),
      name(std::move(itsName)),
      connection(std::move(itsConnection)),
      since(Clock::now()) {}

// The other side reads what is under way, sees the end and closes.
void Server::Client::TakeLeave() {
  if (!closeBefore) {
    shutdown(socket.number(), SHUT_WR);
    closeBefore = Clock::now() + kTimeToLeave;
  }
}

// Whether all that there is has gone.
bool Server::Client::Flush() {
  while (!connection.output().empty()) {
    const auto output = connection.output();
    const ssize_t count =
        send(socket.number(), output.data(), output.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0) {
      isClosed = errno != EAGAIN && errno != EINTR;
      return false;
    }
    connection.Written(static_cast<std::size_t>(count));
  }
  return true;
}

Server::Server(const simulator::Options& options, TransferLog* log) : log_(log) {
  std::size_t count = options.cameras.size();
  if (!options.bootLoaders.empty()) {
    count = std::max(count, options.bootLoaders.rbegin()->first + 1);
  }
  for (std::size_t number = 1; number <= count; ++number) {
    Observe(*places_.emplace_back(std::make_unique<Place>(number, options)));
  }
}

void Server::Observe(Place& place) {
  place.camera.SetStreamObserver(
      [&place](bool runs) { place.Tell(runs ? "streaming" : "stream ended"); });
  if (log_ != nullptr && place.camera.bootLoader() != nullptr) {
    place.camera.bootLoader()->SetObserver(
        [this, number = place.number](const simulator::ScsiExchange& exchange) {
          log_->Write(CommandLine(number, exchange));
        });
  }
}

void Server::Attach(const Vhci& host) {
  host_ = host;
  std::vector<unsigned> taken;
  for (const auto& place : places_) {
    if (place->camera.device() == nullptr) {
      continue;
    }
    do {
      place->port = host_->FindPort(taken);
      taken.push_back(*place->port);
    } while (!AttachPlace(*place));
  }
  Say("ready: " + std::to_string(clients_.size()) + " attached");
}

bool Server::AttachPlace(Place& place) {
  std::array<int, 2> ends = {};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error(std::string("no sockets: ") + std::strerror(errno));
  }
  const Descriptor theirs(ends[1]);
  Descriptor ours(ends[0]);
  const std::shared_ptr<UsbDevice> device = place.camera.device();
  if (!host_->Attach(*place.port, theirs.number(),
                     DescribeExport(*device, static_cast<std::uint32_t>(place.number)).id())) {
    return false;
  }
  Client& client = clients_.emplace_back(std::move(ours), "the kernel", UsbIpConnection(device));
  Give(client, place);
  place.Tell("attached as " + std::string(FormText(place.camera.form())) + ", port " +
             std::to_string(*place.port));
  return true;
}

void Server::Listen(Descriptor socket) {
  listening_ = std::move(socket);
  Say("ready: " + std::to_string(List().size()) + " at " + AddressText(OwnAddress(listening_)));
}

std::vector<ExportedDevice> Server::List() {
  std::vector<ExportedDevice> devices;
  for (const auto& place : places_) {
    if (const auto device = place->camera.device()) {
      devices.push_back(DescribeExport(*device, static_cast<std::uint32_t>(place->number)));
    }
  }
  return devices;
}

std::shared_ptr<UsbDevice> Server::Take(const std::string& busId) {
  for (const auto& place : places_) {
    auto device = place->camera.device();
    if (device == nullptr ||
        DescribeExport(*device, static_cast<std::uint32_t>(place->number)).busId != busId) {
      continue;
    }
    if (place->client != nullptr) {
      return nullptr;
    }
    Give(*asking_, *place);
    place->Tell("attached as " + std::string(FormText(place->camera.form())) + ", by " +
                asking_->name);
    return device;
  }
  return nullptr;
}

void Server::Give(Client& client, Place& place) {
  client.place = &place;
  place.client = &client;
  if (log_ != nullptr) {
    client.connection.SetObserver(
        [this, number = place.number](const simulator::usb::SetupPacket& setup,
                                      std::span<const std::uint8_t> sent,
                                      const simulator::usb::Answer& answer) {
          log_->Write(ControlLine(number, setup, sent, answer));
        });
  }
}

void Server::Run(const Descriptor& signals) {
  while (HasWork()) {
    std::vector<bool> readable;
    Wait(signals, readable);
    auto isReadable = readable.begin();
    for (Client& client : clients_) {
      Serve(client, isReadable != readable.end() && *isReadable++);
    }
    Reap();
    AttachWaiting();
    if (isStopping_) {
      for (Client& client : clients_) {
        client.TakeLeave();
      }
    } else if (listening_.isOpen()) {
      Accept();
    }
  }
  for (const auto& place : places_) {
    place->camera.Save();
  }
}

bool Server::HasWork() const {
  const bool isAnyThere = std::ranges::any_of(places_, [this](const auto& place) {
    return place->attachBefore.has_value() ||
           (listening_.isOpen() && place->camera.device() != nullptr);
  });
  return !clients_.empty() || (isAnyThere && !isStopping_);
}

// Sleeps until something is to be done; `readable` becomes that of each client.
void Server::Wait(const Descriptor& signals, std::vector<bool>& readable) {
  std::vector<pollfd> files = {{isStopping_ ? -1 : signals.number(), POLLIN, 0},
                               {listening_.number(), POLLIN, 0}};
  const std::size_t first = files.size();
  for (const Client& client : clients_) {
    const bool isReading = client.closeBefore || client.connection.isReading();
    const bool isWriting = !client.closeBefore && !client.connection.output().empty();
    files.push_back({client.socket.number(),
                     static_cast<short>((isReading ? POLLIN : 0) | (isWriting ? POLLOUT : 0)), 0});
  }
  const auto left = std::max(NextWake() - Clock::now(), Clock::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec timeout = {seconds.count(), (left - seconds).count()};
  ppoll(files.data(), files.size(), &timeout, nullptr);
  isStopping_ = isStopping_ || files[0].revents != 0;
  for (std::size_t file = first; file < files.size(); ++file) {
    readable.push_back((files[file].revents & (POLLIN | POLLHUP | POLLERR)) != 0);
  }
}

Server::Time Server::NextWake() const {
  Time wake = Clock::now() + std::chrono::hours(1);
  for (const Client& client : clients_) {
    if (client.closeBefore) {
      wake = std::min(wake, *client.closeBefore);
    } else if (client.place == nullptr) {
      wake = std::min(wake, client.since + kTimeToImport);
    } else if (const auto due = client.connection.NextDue()) {
      wake = std::min(wake, *due);
    }
  }
  const bool isAnyWaiting = std::ranges::any_of(
      places_, [](const auto& place) { return place->attachBefore.has_value(); });
  return isAnyWaiting ? std::min(wake, Clock::now() + kPortInterval) : wake;
}

void Server::Accept() {
  sockaddr_storage address = {};
  socklen_t length = sizeof(address);
  Descriptor socket(
      accept4(listening_.number(), std::bit_cast<sockaddr*>(&address), &length, SOCK_CLOEXEC));
  if (!socket.isOpen() || clients_.size() == kMostClients) {
    return;
  }
  const int yes = 1;
  setsockopt(socket.number(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
  setsockopt(socket.number(), SOL_SOCKET, SO_KEEPALIVE, &yes, sizeof(yes));
  clients_.emplace_back(std::move(socket), AddressText(address), UsbIpConnection(*this));
}

void Server::Serve(Client& client, bool isReadable) {
  try {
    asking_ = &client;
    Converse(client, isReadable);
  } catch (const std::exception& error) {
    Complain(client.name, error.what());
    client.isClosed = true;
  }
  if (Place* const place = client.place) {
    if (client.connection.isOver() && place->client == &client) {
      place->client = nullptr;  // what has come in place of its device is for whoever asks first
    }
    TellChange(*place);
  }
}

void Server::Converse(Client& client, bool isReadable) {
  UsbIpConnection& connection = client.connection;
  const Time now = Clock::now();
  if (isReadable) {
    static std::array<std::uint8_t, 65536> buffer;
    const ssize_t count = recv(client.socket.number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    client.isClosed = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    if (count > 0 && !client.closeBefore) {
      connection.Feed({buffer.data(), static_cast<std::size_t>(count)});
    }
  }
  if (client.closeBefore) {
    client.isClosed = client.isClosed || now >= *client.closeBefore;
    return;
  }
  if (client.isClosed) {
    return;
  }
  do {
    connection.Run(now);
  } while (!connection.output().empty() && client.Flush());
  const bool isTooLate = client.place == nullptr && now >= client.since + kTimeToImport;
  if (isTooLate || (connection.isOver() && connection.output().empty())) {
    client.TakeLeave();
  }
}

// What has come in place of the device that was there.
void Server::TellChange(Place& place) {
  const std::shared_ptr<UsbDevice> device = place.camera.device();
  if (device == place.told) {
    return;
  }
  place.told = device;
  switch (place.camera.form()) {
    case Form::kStorage:
      place.Tell("ROM boot");
      break;
    case Form::kCamera:
      place.Tell("back");
      break;
    case Form::kAway:
      place.Tell("unplugged");
      break;
  }
}

// Forgets the clients that are gone.
void Server::Reap() {
  for (auto client = clients_.begin(); client != clients_.end();) {
    if (!client->isClosed) {
      ++client;
      continue;
    }
    if (Place* const place = client->place) {
      if (place->client == &*client) {
        place->client = nullptr;
        client->connection.device()->Release();
        place->Tell("detached");
      } else if (host_ && place->camera.device() != nullptr) {
        place->attachBefore = Clock::now() + kTimeToFreePort;
      }
    }
    client = clients_.erase(client);
  }
}

void Server::AttachWaiting() {
  for (const auto& place : places_) {
    if (!place->attachBefore || isStopping_) {
      continue;
    }
    try {
      if (host_->IsFree(*place->port) && AttachPlace(*place)) {
        place->attachBefore.reset();
      } else if (Clock::now() >= *place->attachBefore) {
        throw std::runtime_error("the kernel does not let go of port " +
                                 std::to_string(*place->port));
      }
    } catch (const std::runtime_error& error) {
      Complain("camera " + std::to_string(place->number), error.what());
      place->attachBefore.reset();
    }
  }
}

}  // namespace zem::usb_camera
