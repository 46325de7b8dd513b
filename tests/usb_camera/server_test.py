#!/usr/bin/env python3
"""zem-usb-camera --listen from end to end: a client takes the camera over a socket, streams, sends it
into ROM boot and gets it back; what the program prints, what it logs, how it ends.

server_test.py PROGRAM
"""
import json
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
from usbip_client import Import, list_devices, receive  # noqa: E402

PROGRAM = sys.argv.pop(1) if len(sys.argv) > 1 else "build/linux/zem-usb-camera"
VENDOR = 3
# The command by which the running firmware goes to the boot loader, on the VCP channel.
ROM_BOOT = [0x16, 0, 0, 0, 0, 0, 0, 0]
FRAME_SIZE = 640 * 480 * 2


def vendor_command(code, *parameters):
    return bytes([0xFA, 0x55, 0x66, code, *parameters]).ljust(16, b"\0")


class Server:
    """The program, listening at a port of its own."""

    def __init__(self, options=None, arguments=()):
        self.program = subprocess.Popen(
            [PROGRAM, "--listen", "127.0.0.1:0",
             *(["--simulator-options", json.dumps(options)] if options else []), *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.ready = self.line()
        host, port = self.ready.rsplit(" ", 1)[-1].rsplit(":", 1)
        self.address = (host, int(port))

    def line(self):
        return self.program.stdout.readline().rstrip("\n")

    def end(self, number=signal.SIGINT):
        """Interrupts it: its exit code, the lines that were left, the complaints."""
        self.program.send_signal(number)
        return self.wait()

    def wait(self):
        output, errors = self.program.communicate(timeout=20)
        return self.program.returncode, output.splitlines(), errors


class ServerTest(unittest.TestCase):
    def serve(self, options=None, arguments=()):
        server = Server(options, arguments)
        self.addCleanup(server.program.communicate)
        self.addCleanup(server.program.kill)
        return server

    def take(self, server, form, bus_id="1-1"):
        taken = Import(server.address, bus_id)
        self.addCleanup(taken.close)
        self.assertIsNotNone(taken.device)
        number = bus_id.split("-")[1]
        name = "%s:%d" % taken.connection.getsockname()
        self.assertEqual(server.line(), f"camera {number}: attached as {form}, by {name}")
        return taken

    def test_a_client_takes_the_camera_and_lets_go(self):
        server = self.serve()
        self.assertEqual(server.ready, "ready: 1 at 127.0.0.1:%d" % server.address[1])
        devices = list_devices(server.address)
        self.assertEqual([(each.bus_id, each.vendor, each.product, each.speed, each.interfaces)
                          for each in devices], [("1-1", 0x5A45, 0x8C00, 3, 2)])
        camera = self.take(server, "camera")
        self.assertEqual(camera.control([0x80, 6, 0, 1, 0, 0, 18, 0], length=18)[1][:8],
                         bytes([18, 1, 0, 2, 0xEF, 2, 1, 64]))
        for other in ("1-1", "1-2"):
            refused = Import(server.address, other)
            self.assertIsNone(refused.device, "taken, or none")
            refused.close()
        camera.close()
        self.assertEqual(server.line(), "camera 1: detached")
        self.take(server, "camera")
        self.assertEqual(server.end(), (0, ["camera 1: detached"], ""))

    def test_a_register_keeps_what_is_written_for_the_next_client(self):
        server = self.serve()
        camera = self.take(server, "camera")
        write = [0x0A, 1, 0x56, 0x34, 0xCD, 0xAB, 0x12, 0]
        self.assertEqual(camera.set(VENDOR, 1, write), (0, b""))
        camera.close()
        self.assertEqual(server.line(), "camera 1: detached")
        camera = self.take(server, "camera")
        camera.set(VENDOR, 1, [0x0A, 0, 0x56, 0x34, 0, 0, 0x12, 0])
        status, reply = camera.get(VENDOR, 2, 8)
        self.assertEqual((status, reply[2:4]), (0, bytes([0xCD, 0xAB])))

    def test_it_streams_in_real_time_and_answers_meanwhile(self):
        server = self.serve()
        camera = self.take(server, "camera")
        status, probe = camera.get(0, 1, 34, interface=1)
        self.assertEqual((status, len(probe)), (0, 34))
        self.assertEqual(camera.set(0, 2, probe, interface=1), (0, b""))
        start = time.monotonic()
        for _ in range(5):
            camera.submit(2, 16384)
        frames, frame, asked = [], b"", 0
        requests = set()
        while len(frames) < 4:
            number, status, data = camera.answer()
            self.assertEqual(status, 0)
            if number in requests:
                requests.remove(number)
                asked += 1
                continue
            camera.submit(2, 16384)
            frame += data[2:]
            if data[1] & 2:
                frames.append(frame)
                frame = b""
            elif len(requests) == 0:
                requests.add(camera.submit(0, 8, setup=bytes([0xA1, 0x81, 0, 2, 0, 3, 8, 0])))
        # The fourth frame comes three frame times behind the first, never before.
        self.assertGreaterEqual(time.monotonic() - start, 0.0999)
        self.assertGreater(asked, 3)
        self.assertEqual(server.line(), "camera 1: streaming")
        for number, each in enumerate(frames):
            self.assertEqual(len(each), FRAME_SIZE)
            bits = "".join("1" if each[8 * bit] == 235 else "0" for bit in range(32))
            self.assertEqual(int(bits, 2), number, "the number in the picture")
            mark = (640 * 240 + 4 * number) * 2
            self.assertEqual(each[mark:mark + 4], bytes([235, 128, 235, 128]), "the mark")
            self.assertEqual(each[FRAME_SIZE - 4:], bytes([16, 128, 16, 128]), "the black bar")
        # What waits is taken back, and the halt cleared, as by a host that stops.
        waiting = [number for number in camera.lengths if number not in requests]
        ended = set()
        for number in waiting:
            camera.unlink(number)
        while len(ended) < len(waiting):
            number, status, _ = camera.answer()
            if number > max(waiting):
                ended.add(number)
        self.assertEqual(camera.control([0x02, 1, 0, 0, 0x82, 0, 0, 0], b""), (0, b""))
        self.assertEqual(server.line(), "camera 1: stream ended")
        # One that lets go without a word ends it too.
        self.assertEqual(camera.set(0, 2, probe, interface=1), (0, b""))
        camera.submit(2, 16384)
        self.assertEqual(server.line(), "camera 1: streaming")
        camera.close()
        self.assertEqual(server.line(), "camera 1: stream ended")
        self.assertEqual(server.line(), "camera 1: detached")

    def test_a_frame_comes_at_its_time_by_itself(self):
        server = self.serve()
        camera = self.take(server, "camera")
        self.assertEqual(camera.set(0, 2, bytes(34), interface=1), (0, b""))
        # All payloads of a frame, and the first of the next one, asked for at once.
        for _ in range(39):
            camera.submit(2, 16384)
        answers = [camera.answer() for _ in range(39)]
        self.assertEqual([answer[0] for answer in answers[37:]], [39, 40])
        self.assertEqual([answer[2][1] & 3 for answer in answers[36:]], [0, 2, 1])

    def test_rom_boot_and_back(self):
        with tempfile.TemporaryDirectory() as folder:
            log = pathlib.Path(folder) / "log"
            storage = pathlib.Path(folder) / "flash"
            storage.write_bytes(b"firmware")
            server = self.serve(
                {"bootLoader": {"start": "camera", "storages": [
                    {"type": "sf", "size": 4096, "file": str(storage)}]}}, ["--log", str(log)])
            camera = self.take(server, "camera")
            self.assertEqual(camera.set(VENDOR, 4, ROM_BOOT), (0, b""))
            self.assertIsNone(camera.answer(), "it leaves")
            self.assertEqual(server.line(), "camera 1: ROM boot")
            self.assertEqual(list_devices(server.address)[0].interfaces, 1)
            camera.close()
            disk = self.take(server, "mass storage")
            identity = disk.command(vendor_command(1), 16)
            self.assertEqual(identity, (b"\xAA\x55\0\0VSN3".ljust(16, b"\0"), 0))
            self.assertEqual(disk.command(vendor_command(0x7E), 4), (b"", 1), "refused")
            self.assertEqual(disk.command(vendor_command(0x21)), (b"", 0), "the status is told")
            self.assertIsNone(disk.answer(), "it leaves")
            self.assertEqual(server.line(), "camera 1: back")
            disk.close()
            self.take(server, "camera")
            self.assertEqual(server.end(signal.SIGTERM), (0, ["camera 1: detached"], ""))
            self.assertEqual(log.read_text().splitlines(), [
                "1 control 2101000400030800 out 3 4 1600000000000000 done -",
                "1 scsi fa556601000000000000000000000000 in done aa55000056534e330000000000000000",
                "1 scsi fa55667e000000000000000000000000 in refused -",
                "1 scsi fa556621000000000000000000000000 out done -",
            ])

    def test_faults(self):
        server = self.serve(None, [part for fault in (
            "fail@1", "short@2=3", "length@3=600", "silent@4", "unplug@6") for part in
            ("--fault", fault)])
        camera = self.take(server, "camera")
        self.assertEqual(camera.get(VENDOR, 2, 8), (-32, b""))
        self.assertEqual(camera.get(0, 2, 1), (0, b"\0"), "why it stalled")
        self.assertEqual(camera.get(VENDOR, 2, 8), (0, bytes(3)))
        self.assertEqual(camera.get(VENDOR, 2, 8), (-75, bytes(8)))
        silent = camera.submit(0, 8, setup=bytes([0xA1, 0x81, 0, 2, 0, VENDOR, 8, 0]))
        self.assertEqual(camera.get(VENDOR, 2, 8), (0, bytes(8)), "the next one is answered")
        taken_back = camera.unlink(silent)
        self.assertEqual(camera.answer(), (taken_back, -104, b""))
        self.assertIsNone(camera.get(VENDOR, 2, 8), "unplugged in the transfer")
        camera.close()
        self.assertEqual(server.line(), "camera 1: unplugged")
        self.assertEqual(server.wait(), (0, [], ""), "no camera is left")

    def test_plugged_in_again(self):
        server = self.serve(None, ["--simulator-fault", "replug@1"])
        camera = self.take(server, "camera")
        self.assertIsNone(camera.get(VENDOR, 2, 8))
        camera.close()
        self.assertEqual(server.line(), "camera 1: back")
        self.assertEqual(self.take(server, "camera").get(VENDOR, 2, 8), (0, bytes(8)))

    def test_several_cameras(self):
        server = self.serve({"cameras": [{}, {"productId": 35841, "vendorUnit": False}]})
        self.assertTrue(server.ready.startswith("ready: 2 at "))
        self.assertEqual([(each.bus_id, each.product) for each in list_devices(server.address)],
                         [("1-1", 0x8C00), ("1-2", 0x8C01)])
        first = self.take(server, "camera", "1-1")
        second = self.take(server, "camera", "1-2")
        self.assertEqual(second.get(VENDOR, 2, 8), (-32, b""), "it has no such unit")
        self.assertEqual(first.get(VENDOR, 2, 8), (0, bytes(8)))

    def test_the_state_file_is_written_at_the_end(self):
        with tempfile.TemporaryDirectory() as folder:
            state = pathlib.Path(folder) / "state.json"
            server = self.serve(None, ["--state", str(state)])
            camera = self.take(server, "camera")
            # Two bytes at address 0x400 of the memory.
            piece = bytes([0x00, 0x04, 2, 0x5A, 0xA5]).ljust(32, b"\0")
            self.assertEqual(camera.set(VENDOR, 16, piece), (0, b""))
            camera.close()
            self.assertEqual(server.line(), "camera 1: detached")
            self.assertNotIn("0x000400", state.read_text())
            self.assertEqual(server.end(), (0, [], ""))
            kept = json.loads(state.read_text())
            self.assertEqual(kept["flash"]["size"], 1 << 20)
            self.assertEqual(kept["nvmem"]["pages"]["0x000400"][:6], "5aa5ff")

    def test_whoever_speaks_something_else_is_cut_off_alone(self):
        server = self.serve()
        camera = self.take(server, "camera")
        with socket.create_connection(server.address, timeout=20) as other:
            other.sendall(b"GET / HTTP/1.1\r\n\r\n")
            self.assertEqual(receive(other, 1), b"")
        with socket.create_connection(server.address, timeout=20):
            self.assertEqual(camera.get(VENDOR, 2, 8), (0, bytes(8)), "while one says nothing")
        camera.connection.sendall(b"\xFF" * 48)
        self.assertIsNone(camera.answer())
        self.assertEqual(server.line(), "camera 1: detached")
        code, lines, errors = server.end()
        self.assertEqual((code, lines), (0, []))
        self.assertRegex(errors, r"\Azem-usb-camera: 127\.0\.0\.1:\d+: another version of the "
                                 r"protocol\.\nzem-usb-camera: 127\.0\.0\.1:\d+: an unknown "
                                 r"command\.\n\Z")

    def test_clients_are_so_many_at_most(self):
        server = self.serve()
        camera = self.take(server, "camera")
        others = [socket.create_connection(server.address, timeout=20) for _ in range(33)]
        for other in others:
            self.addCleanup(other.close)
        # 32 in all; whoever comes behind them is cut off.
        for other in others[31:]:
            self.assertEqual(receive(other, 1), b"")
        others[30].settimeout(0.2)
        self.assertRaises(TimeoutError, others[30].recv, 1)
        self.assertEqual(camera.get(VENDOR, 2, 8), (0, bytes(8)))

    def test_others_than_this_machine_are_pointed_out(self):
        program = subprocess.Popen([PROGRAM, "--listen", "0.0.0.0:0"], stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        self.addCleanup(program.communicate)
        self.addCleanup(program.kill)
        self.assertTrue(program.stdout.readline().startswith("ready: 1 at 0.0.0.0:"))
        program.send_signal(signal.SIGINT)
        errors = program.communicate(timeout=20)[1]
        self.assertRegex(errors, r"\Azem-usb-camera: others than this machine reach 0\.0\.0\.0:\d+; "
                                 r"USB/IP asks for no password, so whoever does can take the "
                                 r"camera\.\n\Z")

    def run_program(self, *arguments):
        done = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True, timeout=20)
        return done.returncode, done.stdout, done.stderr

    def test_the_command_line(self):
        code, output, errors = self.run_program("--version")
        self.assertRegex(output, r"\A\d+\.\d+\.\d+\n\Z")
        self.assertEqual((code, errors), (0, ""))
        code, output, errors = self.run_program("--help")
        self.assertEqual((code, errors), (0, ""))
        for option in ("--attach", "--listen", "--simulator-options", "--fault", "--state", "--log"):
            self.assertIn(option, output)
        for arguments, complaint in (
                ((), None),
                (("--attach", "--listen", "1"), None),
                (("--listen", "x"),
                 '"x" is not [ADDRESS:]PORT, such as 3240 or [::1]:3240'),
                (("--listen", "0", "--fault", "x"), '"x" is not a fault'),
                (("--listen", "0", "--simulator-options", "none"),
                 '"none" is neither JSON nor a file that can be read'),
                (("--listen", "0", "--simulator-options", '{"x": 1}'),
                 'unknown simulator option "x"'),
                (("--listen", "0", "--simulator-options", '{"cameras": []}'),
                 "there is no camera in these options"),
                (("--listen", "0", "--simulator-options", '{"cameras": []}', "--state", "x"),
                 "--fault and --state are for the first camera, and there is none")):
            code, output, errors = self.run_program(*arguments)
            self.assertEqual((code, output), (2, ""), arguments)
            if complaint:
                self.assertEqual(errors, f"zem-usb-camera: {complaint}.\n")
            else:
                self.assertNotEqual(errors, "")
        code, output, errors = self.run_program("--listen", "0", "--log", "/none/log")
        self.assertEqual((code, output, errors),
                         (1, "", 'zem-usb-camera: the file "/none/log" cannot be written.\n'))


if __name__ == "__main__":
    unittest.main()
