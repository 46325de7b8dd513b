// Simulated cameras behind sockets: one thread that serves the kernel's USB/IP host or clients of
// the network, and says on standard output what happens.
#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/options.h"
#include "simulator/usb/plugged_camera.h"
#include "simulator/usb/usbip_connection.h"
#include "tools/usb_camera/descriptor.h"
#include "tools/usb_camera/transfer_log.h"
#include "tools/usb_camera/vhci.h"

namespace zem::usb_camera {

class Server : private simulator::usb::UsbIpExports {
 public:
  // `log` may be null and must outlive the server. Throws as MakeCamera and BootLoader do.
  Server(const simulator::Options& options, TransferLog* log);

  // Puts all cameras into the kernel. Throws std::runtime_error with a sentence for a person.
  void Attach(const Vhci& host);

  // Offers them to the clients of a listening socket.
  void Listen(Descriptor socket);

  // Serves until `signals` (of signalfd) has one or nothing is left to serve, and takes leave of
  // whoever has a camera. Throws std::runtime_error when a state file cannot be written at the end.
  void Run(const Descriptor& signals);

 private:
  using Form = simulator::usb::PluggedCamera::Form;
  using Time = simulator::usb::Time;

  struct Client;

  // One of the cameras, and who has it.
  struct Place {
    std::size_t number;
    simulator::usb::PluggedCamera camera;
    std::shared_ptr<simulator::usb::UsbDevice> told;  // the device whose coming has been told
    Client* client = nullptr;
    std::optional<unsigned> port;      // of the kernel, where it is put into it
    std::optional<Time> attachBefore;  // it waits for its port to become free

    Place(std::size_t ownNumber, const simulator::Options& options);
    void Tell(const std::string& event) const;
  };

  struct Client {
    Descriptor socket;
    std::string name;
    simulator::usb::UsbIpConnection connection;
    Time since;
    Place* place = nullptr;
    std::optional<Time> closeBefore;  // leave has been taken; what still comes is thrown away
    bool isClosed = false;

    Client(Descriptor itsSocket, std::string itsName,
           simulator::usb::UsbIpConnection itsConnection);
    void TakeLeave();
    bool Flush();
  };

  // Of the exports.
  std::vector<simulator::usb::ExportedDevice> List() override;
  std::shared_ptr<simulator::usb::UsbDevice> Take(const std::string& busId) override;

  void Observe(Place& place);
  // At its port; false when somebody else has that.
  bool AttachPlace(Place& place);
  void AttachWaiting();
  void Accept();
  void Wait(const Descriptor& signals, std::vector<bool>& readable);
  Time NextWake() const;
  void Serve(Client& client, bool isReadable);
  void Converse(Client& client, bool isReadable);
  void Give(Client& client, Place& place);
  void TellChange(Place& place);
  void Reap();
  bool HasWork() const;

  std::vector<std::unique_ptr<Place>> places_;
  std::list<Client> clients_;
  std::optional<Vhci> host_;
  Descriptor listening_;
  TransferLog* log_;
  Client* asking_ = nullptr;  // whose request is being answered
  bool isStopping_ = false;
};

}  // namespace zem::usb_camera
