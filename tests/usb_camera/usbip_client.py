"""A client of USB/IP, as much of one as the tests of zem-usb-camera need."""
import socket
import struct

VERSION = 0x0111
LIST, IMPORT = 0x8005, 0x8003


def receive(connection, count):
    """So many bytes; fewer where the other side closes before."""
    data = b""
    while len(data) < count:
        piece = connection.recv(count - len(data))
        if not piece:
            break
        data += piece
    return data


class Device:
    """The fields of a device as the server tells them."""

    def __init__(self, fields):
        self.bus_id = fields[256:288].rstrip(b"\0").decode()
        (self.bus, self.number, self.speed, self.vendor, self.product, self.release,
         self.device_class) = struct.unpack(">IIIHHHB", fields[288:307])
        self.interfaces = fields[311]


def list_devices(address):
    with socket.create_connection(address, timeout=20) as connection:
        connection.sendall(struct.pack(">HHI", VERSION, LIST, 0))
        version, code, status, count = struct.unpack(">HHII", receive(connection, 12))
        assert (version, code, status) == (VERSION, 5, 0)
        devices = []
        for _ in range(count):
            devices.append(Device(receive(connection, 312)))
            receive(connection, 4 * devices[-1].interfaces)
        return devices


class Import:
    """A device that this client has taken; `device` is None where the server refused."""

    def __init__(self, address, bus_id):
        self.connection = socket.create_connection(address, timeout=20)
        self.connection.sendall(struct.pack(">HHI32s", VERSION, IMPORT, 0, bus_id.encode()))
        version, code, status = struct.unpack(">HHI", receive(self.connection, 8))
        assert (version, code) == (VERSION, 3)
        self.device = Device(receive(self.connection, 312)) if status == 0 else None
        self.sequence = 0
        self.lengths = {}

    def close(self):
        self.connection.close()

    def submit(self, endpoint, length=0, data=None, setup=bytes(8)):
        """Begins a transfer: out with data, in without; its number."""
        self.sequence += 1
        is_in = data is None
        self.lengths[self.sequence] = is_in
        self.connection.sendall(
            struct.pack(">IIIIIIIIII8s", 1, self.sequence, 0x10001, is_in, endpoint, 0,
                        length if is_in else len(data), 0, 0, 0, setup) + (data or b""))
        return self.sequence

    def unlink(self, target):
        self.sequence += 1
        self.connection.sendall(
            struct.pack(">IIIIII24x", 2, self.sequence, 0x10001, 0, 0, target))
        return self.sequence

    def answer(self):
        """The next answer: number, status, bytes; None behind the last."""
        header = receive(self.connection, 48)
        if len(header) < 48:
            return None
        code, number, status, moved = struct.unpack(">II12xiI", header[:28])
        is_in = code == 3 and self.lengths.pop(number)
        return number, status, receive(self.connection, moved) if is_in else b""

    def control(self, setup, data=None, length=0):
        """One request by itself: its status and what came."""
        number = self.submit(0, length, data, bytes(setup))
        answer = self.answer()
        if answer is None:
            return None
        assert answer[0] == number, answer
        return answer[1:]

    def get(self, entity, selector, length, request=0x81, interface=0):
        return self.control([0xA1, request, 0, selector, interface, entity, length & 255,
                             length >> 8], length=length)

    def set(self, entity, selector, data, interface=0):
        return self.control([0x21, 1, 0, selector, interface, entity, len(data), 0], bytes(data))

    def command(self, cdb, length=0, data=None):
        """A SCSI command by bulk-only transport: the bytes that came and how it ended."""
        size = len(data) if data is not None else length
        block = struct.pack("<4sIIBBB16s", b"USBC", 7, size, 0x80 if length else 0, 0, len(cdb),
                            bytes(cdb))
        transfers = [self.submit(2, data=block)]
        if data is not None:
            transfers.append(self.submit(2, data=bytes(data)))
        if length:
            transfers.append(self.submit(1, length))
        transfers.append(self.submit(1, 13))
        answers = {}
        for _ in transfers:
            answer = self.answer()
            if answer is None:
                return None
            answers[answer[0]] = answer[2]
        status = answers[transfers[-1]]
        assert status[:8] == b"USBS\7\0\0\0", status
        return (answers[transfers[-2]] if length else b""), status[12]
